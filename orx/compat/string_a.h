// CStringA: a narrow string that is cheap to copy.
//
// A string is one pointer to its characters; copies share them, counted atomically, until one of them is
// changed. The text is NUL-terminated and may hold NULs; its length counts bytes. A null `const char*` is the
// empty string. Letter case and white space are those of ASCII, whatever the locale; comparison is by
// unsigned bytes. Arguments may be part of the string that is changed.
//
// An index out of range raises CAtlException with E_INVALIDARG, exhausted memory (or a text longer than
// INT_MAX) with E_OUTOFMEMORY; the string is then unchanged. Two threads may use two copies of one text, but
// not one string.
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

class ORX_API CStringA {
 public:
  CStringA() noexcept : chars_(Nil()) {}
  CStringA(const char* text) : chars_(Made(text, LengthOf(text))) {}
  CStringA(const char* chars, int length);
  explicit CStringA(char c, int repeat = 1);
  CStringA(const CStringA& other) noexcept : chars_(Shared(other.chars_)) {}
  CStringA(CStringA&& other) noexcept : chars_(std::exchange(other.chars_, Nil())) {}
  ~CStringA() { Drop(chars_); }

  CStringA& operator=(const CStringA& other) noexcept {
    char* old = std::exchange(chars_, Shared(other.chars_));
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

  // Valid until the string is next changed.
  const char* GetString() const noexcept { return chars_; }
  operator const char*() const noexcept { return chars_; }

  // An index up to and including the length, where the NUL stands.
  char GetAt(int index) const {
    if (index < 0 || index > GetLength()) AtlThrow(E_INVALIDARG);
    return chars_[index];
  }
  char operator[](int index) const { return GetAt(index); }
  // An index below the length.
  void SetAt(int index, char c);

  void SetString(const char* text) { *this = text; }
  void SetString(const char* chars, int length);

  // A block that is this string's alone and has room for at least `length` characters and a NUL; it begins
  // with the text. Writing into it ends with ReleaseBuffer, which takes the new length (-1: up to the first
  // NUL).
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
  CStringA& operator+=(const CStringA& other) { return Append(other), *this; }
  CStringA& operator+=(const char* text) { return Append(text), *this; }
  CStringA& operator+=(char c) { return AppendChar(c), *this; }

  // The printf conventions of the C runtime; numbers are written alike in every locale. Text may come from
  // the string itself. A format that cannot be carried out raises E_INVALIDARG.
  void Format(const char* format, ...) ORX_PRINTF(2, 3);
  void FormatV(const char* format, va_list arguments) ORX_PRINTF(2, 0);
  void AppendFormat(const char* format, ...) ORX_PRINTF(2, 3);
  void AppendFormatV(const char* format, va_list arguments) ORX_PRINTF(2, 0);

  // Below, at or above 0: this text sorts before, with or after the other (null: the empty text), up to its
  // first NUL.
  int Compare(const char* other) const noexcept { return std::strcmp(chars_, other != nullptr ? other : ""); }
  int CompareNoCase(const char* other) const noexcept;

  // An index, or -1. A search starts at `start`; one outside the string finds nothing.
  int Find(char c, int start = 0) const noexcept;
  int Find(const char* text, int start = 0) const noexcept;
  int ReverseFind(char c) const noexcept;
  int FindOneOf(const char* set) const noexcept;

  // Positions and counts are clipped to the string.
  CStringA Left(int count) const;
  CStringA Mid(int first) const;
  CStringA Mid(int first, int count) const;
  CStringA Right(int count) const;

  // White space (space, tab, line feed, vertical tab, form feed, carriage return), one character, or any of a
  // set.
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

  // How many were replaced or removed.
  int Replace(char old_char, char new_char);
  int Replace(const char* old_text, const char* new_text);
  int Remove(char c);

  // The new length. Positions are clipped to the string.
  int Insert(int index, char c);
  int Insert(int index, const char* text);
  int Delete(int index, int count = 1);

  // The next token from `start` on between characters of the set, skipping empty ones; `start` moves behind
  // it. At the end the result is empty and `start` is -1. A null or empty set gives the rest as one token.
  CStringA Tokenize(const char* set, int& start) const;

 private:
  struct alignas(16) Header {     // so the characters are aligned for the fast paths of the C runtime
    std::atomic<int> references;  // 0: the block of the empty string, which is never counted
    int length;
    int capacity;  // characters, without the NUL
  };
  struct NilBlock {
    Header header;
    char terminator[4];
  };
  static NilBlock nil_;

  static char* Nil() noexcept { return nil_.terminator; }
  static Header* HeaderOf(char* chars) noexcept { return reinterpret_cast<Header*>(chars) - 1; }
  static std::atomic<int>& ReferencesTo(char* chars) noexcept { return HeaderOf(chars)->references; }
  static int Count(char* chars, int change) noexcept {
    std::atomic<int>& references = ReferencesTo(chars);
#if defined(__GLIBC__)
    // A fraction of the cost of an atomic addition, while the process has one thread.
    if (__libc_single_threaded != 0) {
      const int count = references.load(std::memory_order_relaxed) + change;
      references.store(count, std::memory_order_relaxed);
      return count;
    }
#endif
    return references.fetch_add(change, std::memory_order_acq_rel) + change;
  }
  static char* Shared(char* chars) noexcept {
    if (ReferencesTo(chars).load(std::memory_order_relaxed) != 0) Count(chars, 1);
    return chars;
  }
  static void Drop(char* chars) noexcept {
    // Nobody else can take a reference from a sole owner, who is spared the subtraction.
    const int references = ReferencesTo(chars).load(std::memory_order_acquire);
    if (references == 1 || (references != 0 && Count(chars, -1) == 0)) Free(chars);
  }
  static void Free(char* chars) noexcept;
  static char* Allocate(std::size_t capacity, Header* moved = nullptr);
  static char* Made(const char* chars, std::size_t length);

  static std::size_t LengthOf(const char* text) noexcept { return text != nullptr ? std::strlen(text) : 0; }
  static bool IsSoleOwner(char* chars) noexcept {
    return ReferencesTo(chars).load(std::memory_order_acquire) == 1;
  }
  void Add(const char* chars, std::size_t length) {
    char* end = chars_ + GetLength();
    const auto room = static_cast<std::size_t>(HeaderOf(chars_)->capacity - GetLength());
    if (length == 0 || length > room || !IsSoleOwner(chars_)) return AddInNewBlock(chars, length);
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
