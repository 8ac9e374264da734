// CStringA: a narrow string that is cheap to copy.
//
// A string is one pointer to its characters. Copies share the characters until one of the copies changes. The
// text ends with a NUL and may contain NULs; lengths and indices count bytes. A null `const char*` is the
// empty string. Letter case and white space are those of ASCII in every locale, and texts are compared as
// unsigned bytes. Arguments may point into the string that they change.
//
// An index out of range or an invalid argument raises CAtlException with E_INVALIDARG. Out of memory and a
// text longer than INT_MAX raise it with E_OUTOFMEMORY. The string is then unchanged. Two threads may use two
// copies of a text, but not the same string.
#pragma once

#if defined(_MSC_VER)
#include <atlstr.h>
#else

#include <orx/compat/atl_exception.h>
#include <orx/compat/export.h>

#include <atomic>
#include <compare>
#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <utility>

#if defined(__GLIBC__)
#include <sys/single_threaded.h>
#endif

// chars_ points to the characters of a block, directly after its header. It is never null: the empty string
// usually points into nil_, a static block that has no owners and is never written. Every change of the text
// first makes the string the only owner of its block.
class ORX_API CStringA {
 public:
  CStringA() noexcept : chars_(Nil()) {}
  CStringA(const char* text) : chars_(Made(text, LengthOf(text))) {}
  CStringA(const char* chars, int length);
  explicit CStringA(char c, int repeat = 1);
  CStringA(const CStringA& other) noexcept : chars_(Share(other.chars_)) {}
  CStringA(CStringA&& other) noexcept : chars_(std::exchange(other.chars_, Nil())) {}
  ~CStringA() { Drop(chars_); }

  CStringA& operator=(const CStringA& other) noexcept {
    char* old = std::exchange(chars_, Share(other.chars_));
    Drop(old);
    return *this;
  }
  CStringA& operator=(CStringA&& other) noexcept {
    std::swap(chars_, other.chars_);
    return *this;
  }
  CStringA& operator=(const char* text);
  CStringA& operator=(char c);

  int GetLength() const noexcept { return HeaderOf(chars_)->length; }
  bool IsEmpty() const noexcept { return GetLength() == 0; }
  void Empty() noexcept { *this = CStringA(); }

  // The pointer is valid until the string changes.
  const char* GetString() const noexcept { return chars_; }
  operator const char*() const noexcept { return chars_; }

  // The index may be the length, which is the index of the NUL.
  char GetAt(int index) const {
    if (index < 0 || index > GetLength()) AtlThrow(E_INVALIDARG);
    return chars_[index];
  }
  char operator[](int index) const { return GetAt(index); }
  // The index must be below the length.
  void SetAt(int index, char c);

  void SetString(const char* text) { *this = text; }
  void SetString(const char* chars, int length);

  // Returns a writable buffer with space for at least `length` characters and a NUL, which begins with the
  // current text. No other string shares it. Call ReleaseBuffer after writing, with the new length, or with
  // -1 for the length up to the first NUL; the pointer is then invalid.
  char* GetBuffer(int length = 0);
  void ReleaseBuffer(int length = -1);
  void ReleaseBufferSetLength(int length);

  void Append(const char* text) { Add(text, LengthOf(text)); }
  void Append(const char* chars, int length);
  void Append(const CStringA& other) { Append(other.chars_, other.GetLength()); }
  void AppendChar(char c) {
    const int length = GetLength();
    if (length == HeaderOf(chars_)->capacity || !IsSoleOwner(chars_)) return AddInNewBlock(&c, 1);
    chars_[length] = c;
    SetLength(length + 1);
  }
  CStringA& operator+=(const CStringA& other) {
    Append(other);
    return *this;
  }
  CStringA& operator+=(const char* text) {
    Append(text);
    return *this;
  }
  CStringA& operator+=(char c) {
    AppendChar(c);
    return *this;
  }

  // The formats are those of printf. Numbers have a decimal point in every locale. Arguments may point into
  // the string. A null format, and wide text that cannot be converted, raise E_INVALIDARG.
  void Format(const char* format, ...) ORX_PRINTF(2, 3);
  void FormatV(const char* format, va_list arguments) ORX_PRINTF(2, 0);
  void AppendFormat(const char* format, ...) ORX_PRINTF(2, 3);
  void AppendFormatV(const char* format, va_list arguments) ORX_PRINTF(2, 0);

  // Returns a negative number, 0 or a positive number as this text sorts before, with or after `other`. Texts
  // are compared up to their first NUL. CompareNoCase compares letters as lower-case letters.
  int Compare(const char* other) const noexcept { return std::strcmp(chars_, other != nullptr ? other : ""); }
  int CompareNoCase(const char* other) const noexcept;

  // Return the index of the first match from `start` on, or -1. A `start` outside the string finds nothing.
  // ReverseFind returns the last match, FindOneOf the first character that belongs to `set`.
  int Find(char c, int start = 0) const noexcept;
  int Find(const char* text, int start = 0) const noexcept;
  int ReverseFind(char c) const noexcept;
  int FindOneOf(const char* set) const noexcept;

  // Return a part of the text. Positions and counts are clipped to the string.
  CStringA Left(int count) const;
  CStringA Mid(int first) const;
  CStringA Mid(int first, int count) const;
  CStringA Right(int count) const;

  // Remove white space (space, tab, line feed, vertical tab, form feed, carriage return), the character `c`,
  // or the characters of `set`, at one end or at both.
  CStringA& Trim() { return TrimRight().TrimLeft(); }
  CStringA& Trim(char c) { return TrimRight(c).TrimLeft(c); }
  CStringA& Trim(const char* set);
  CStringA& TrimLeft();
  CStringA& TrimLeft(char c);
  CStringA& TrimLeft(const char* set);
  CStringA& TrimRight();
  CStringA& TrimRight(char c);
  CStringA& TrimRight(const char* set);

  CStringA& MakeUpper();
  CStringA& MakeLower();

  // Replace or remove every match and return the number of matches.
  int Replace(char old_char, char new_char);
  int Replace(const char* old_text, const char* new_text);
  int Remove(char c);

  // Return the new length. Positions and counts are clipped to the string.
  int Insert(int index, char c);
  int Insert(int index, const char* text);
  int Delete(int index, int count = 1);

  // Returns the next token, the text between characters of `set`, and skips empty tokens. The search begins
  // at `start`, which then moves to the character after the token's delimiter. After the last token the
  // result is empty and `start` is -1. With a null or empty set the rest of the text is one token.
  CStringA Tokenize(const char* set, int& start) const;

 private:
  // The alignment also aligns the characters, for the fast paths of the C library.
  struct alignas(16) Header {
    std::atomic<int> references;  // the number of owners; always 0 in nil_
    int length;
    int capacity;  // in characters, without the NUL
  };
  struct NilBlock {
    Header header;
    char terminator[4];
  };
  static NilBlock nil_;

  static char* Nil() noexcept { return nil_.terminator; }
  static Header* HeaderOf(char* chars) noexcept { return reinterpret_cast<Header*>(chars) - 1; }
  static std::atomic<int>& ReferencesTo(char* chars) noexcept { return HeaderOf(chars)->references; }
  // Adds `change` to the number of owners and returns the new number.
  static int ChangeOwners(char* chars, int change) noexcept {
    std::atomic<int>& references = ReferencesTo(chars);
#if defined(__GLIBC__)
    // While the process has one thread, a plain addition does, at a fraction of the cost of an atomic one.
    if (__libc_single_threaded != 0) {
      const int count = references.load(std::memory_order_relaxed) + change;
      references.store(count, std::memory_order_relaxed);
      return count;
    }
#endif
    return references.fetch_add(change, std::memory_order_acq_rel) + change;
  }
  // Adds an owner to the block.
  static char* Share(char* chars) noexcept {
    const bool is_nil = ReferencesTo(chars).load(std::memory_order_relaxed) == 0;
    if (!is_nil) ChangeOwners(chars, 1);
    return chars;
  }
  // Removes an owner, and frees the block with its last owner. The only owner needs no subtraction: at
  // that moment no other string can become an owner.
  static void Drop(char* chars) noexcept {
    const int owners = ReferencesTo(chars).load(std::memory_order_acquire);
    const bool is_nil = owners == 0;
    if (owners == 1 || (!is_nil && ChangeOwners(chars, -1) == 0)) Free(chars);
  }
  static void Free(char* chars) noexcept;
  static char* Allocate(std::size_t capacity, Header* moved = nullptr);
  static char* Made(const char* chars, std::size_t length);

  static std::size_t LengthOf(const char* text) noexcept { return text != nullptr ? std::strlen(text) : 0; }
  static bool IsSoleOwner(char* chars) noexcept {
    return ReferencesTo(chars).load(std::memory_order_acquire) == 1;
  }
  // Appends in place where the block permits it. memmove, since the characters may be those of this string.
  void Add(const char* chars, std::size_t length) {
    char* end = chars_ + GetLength();
    const auto space = static_cast<std::size_t>(HeaderOf(chars_)->capacity - GetLength());
    if (length == 0 || length > space || !IsSoleOwner(chars_)) return AddInNewBlock(chars, length);
    SetLength(GetLength() + static_cast<int>(length));
    std::memmove(end, chars, length);
  }
  void AddInNewBlock(const char* chars, std::size_t length);
  void SetLength(int length) noexcept {
    HeaderOf(chars_)->length = length;
    chars_[length] = '\0';
  }

  char* chars_;
};

inline CStringA operator+(CStringA left, const CStringA& right) {
  left += right;
  return left;
}
inline CStringA operator+(CStringA left, const char* right) {
  left += right;
  return left;
}
inline CStringA operator+(CStringA left, char right) {
  left += right;
  return left;
}
inline CStringA operator+(const char* left, const CStringA& right) { return CStringA(left) + right; }
inline CStringA operator+(char left, const CStringA& right) { return CStringA(left) + right; }

inline bool operator==(const CStringA& left, const CStringA& right) noexcept {
  return left.Compare(right) == 0;
}
inline bool operator==(const CStringA& left, const char* right) noexcept { return left.Compare(right) == 0; }
inline auto operator<=>(const CStringA& left, const CStringA& right) noexcept {
  return left.Compare(right) <=> 0;
}
inline auto operator<=>(const CStringA& left, const char* right) noexcept {
  return left.Compare(right) <=> 0;
}

static_assert(sizeof(CStringA) == sizeof(char*));

#endif
