#include <orx/compat/string_a.h>

#include <orx/base/ascii.h>
#include <orx/base/text_format.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <new>
#include <string_view>

constinit CStringA::NilBlock CStringA::nil_{{{0}, 0, 0}, {}};

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::string_view view(const CStringA& text) {
  return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

std::string_view view(const char* text) { return text != nullptr ? text : std::string_view(); }

// The index of a position in a string_view; npos becomes -1.
int index_of(std::size_t position) { return static_cast<int>(position); }

int checked_length(std::size_t length) {
  if (length > INT_MAX) AtlThrow(E_OUTOFMEMORY);
  return static_cast<int>(length);
}

std::size_t checked_count(const char* chars, int length) {
  if (length < 0 || (chars == nullptr && length > 0)) AtlThrow(E_INVALIDARG);
  return static_cast<std::size_t>(length);
}

// Protects an argument that points into `text` while `text` changes: returns a second owner of the block, so
// that the change goes into a new block and the argument keeps its characters. For any other argument returns
// the empty string.
CStringA pin(const CStringA& text, const char* argument) {
  const std::less_equal<> not_after;  // defined for pointers into different blocks too
  const char* begin = text.GetString();
  const char* end = begin + text.GetLength();
  const bool is_inside = not_after(begin, argument) && not_after(argument, end);
  return is_inside ? text : CStringA();
}

// The capacity of a new block for `wanted` characters: exactly as many if the old block had space for them,
// otherwise at least twice the old capacity, so that appending takes linear time in total.
std::size_t next_capacity(int capacity, int wanted) {
  constexpr int kSmallestStep = 64;
  if (wanted <= capacity) return static_cast<std::size_t>(wanted);
  const std::int64_t doubled = std::int64_t{capacity} + std::max(capacity, kSmallestStep);
  return static_cast<std::size_t>(std::clamp<std::int64_t>(doubled, wanted, INT_MAX));
}

CStringA& change_each(CStringA& text, char (*change)(char)) {
  char* chars = text.GetBuffer();
  std::transform(chars, chars + text.GetLength(), chars, change);
  return text;
}

CStringA& trim_left(CStringA& text, std::string_view set) {
  const std::size_t kept = view(text).find_first_not_of(set);
  text.Delete(0, kept == std::string_view::npos ? text.GetLength() : static_cast<int>(kept));
  return text;
}

CStringA& trim_right(CStringA& text, std::string_view set) {
  const int last = index_of(view(text).find_last_not_of(set));
  text.Delete(last + 1, text.GetLength());
  return text;
}

int insert(CStringA& text, int index, std::string_view added) {
  if (added.empty()) return text.GetLength();
  const auto length = static_cast<std::size_t>(text.GetLength());
  const int new_length = checked_length(length + added.size());
  const CStringA pinned = pin(text, added.data());
  const auto at = static_cast<std::size_t>(std::clamp(index, 0, text.GetLength()));
  char* chars = text.GetBuffer(new_length);
  std::memmove(chars + at + added.size(), chars + at, length - at);
  std::memcpy(chars + at, added.data(), added.size());
  text.ReleaseBufferSetLength(new_length);
  return new_length;
}

void append(CStringA& text, std::string_view added) {
  text.Append(added.data(), checked_length(added.size()));
}

// Formats the whole addition before `text` changes, because arguments may point into `text`. Failures are
// results, so that the callers reach their va_end.
ORX_PRINTF(2, 0)
HRESULT append_formatted(CStringA& text, const char* format, std::va_list arguments) try {
  if (format == nullptr) return E_INVALIDARG;
  char small[256];
  std::va_list first;
  va_copy(first, arguments);
  const int length = orx::format_text(small, sizeof small, format, first);
  va_end(first);
  if (length < 0) return E_INVALIDARG;
  if (static_cast<std::size_t>(length) < sizeof small) {
    text.Append(small, length);
    return S_OK;
  }
  CStringA added;
  char* chars = added.GetBuffer(length);
  orx::format_text(chars, static_cast<std::size_t>(length) + 1, format, arguments);
  added.ReleaseBufferSetLength(length);
  text.Append(added);
  return S_OK;
} catch (const CAtlException& failure) {
  return failure;
}

void require(HRESULT result) {
  if (result != S_OK) AtlThrow(result);
}

}  // namespace

// Returns the characters of a block with space for at least `capacity` of them. Without `moved` the block is
// new and has one owner; the caller sets text and length. Otherwise the block at `moved`, which has one
// owner, is enlarged and keeps its text.
char* CStringA::Allocate(std::size_t capacity, Header* moved) {
  if (capacity > INT_MAX) AtlThrow(E_OUTOFMEMORY);
  constexpr std::size_t kGranule = 16;  // malloc rounds up to it anyway
  const std::size_t size = (sizeof(Header) + capacity + kGranule) / kGranule * kGranule;
  void* block = moved == nullptr ? std::malloc(size) : std::realloc(static_cast<void*>(moved), size);
  if (block == nullptr) AtlThrow(E_OUTOFMEMORY);
  Header* header = moved == nullptr ? new (block) Header{1, 0, 0} : static_cast<Header*>(block);
  header->capacity = static_cast<int>(std::min<std::size_t>(size - sizeof(Header) - 1, INT_MAX));
  return reinterpret_cast<char*>(header + 1);
}

void CStringA::Free(char* chars) noexcept { std::free(static_cast<void*>(HeaderOf(chars))); }

char* CStringA::Made(const char* chars, std::size_t length) {
  if (length == 0) return Nil();
  char* made = Allocate(length);
  std::memcpy(made, chars, length);
  made[length] = '\0';
  HeaderOf(made)->length = static_cast<int>(length);
  return made;
}

CStringA::CStringA(const char* chars, int length) : chars_(Made(chars, checked_count(chars, length))) {}

CStringA::CStringA(char c, int repeat) : CStringA() {
  if (repeat < 0) AtlThrow(E_INVALIDARG);
  if (repeat == 0) return;
  const auto count = static_cast<std::size_t>(repeat);
  chars_ = Allocate(count, nullptr);
  std::memset(chars_, static_cast<unsigned char>(c), count);
  SetLength(repeat);
}

CStringA& CStringA::operator=(const char* text) {
  SetString(text, checked_length(LengthOf(text)));
  return *this;
}

CStringA& CStringA::operator=(char c) {
  SetString(&c, 1);
  return *this;
}

void CStringA::SetAt(int index, char c) {
  if (index < 0 || index >= GetLength()) AtlThrow(E_INVALIDARG);
  GetBuffer()[index] = c;
}

void CStringA::SetString(const char* chars, int length) {
  const std::size_t count = checked_count(chars, length);
  if (count == 0) return Empty();
  if (!IsSoleOwner(chars_) || length > HeaderOf(chars_)->capacity) {
    // The old block is dropped last, because `chars` may point into it.
    char* copy = Made(chars, count);
    Drop(std::exchange(chars_, copy));
  } else {
    std::memmove(chars_, chars, count);
    SetLength(length);
  }
}

char* CStringA::GetBuffer(int length) {
  if (length < 0) AtlThrow(E_INVALIDARG);
  Header* header = HeaderOf(chars_);
  const int wanted = std::max(length, header->length);
  const std::size_t capacity = next_capacity(header->capacity, wanted);
  if (!IsSoleOwner(chars_)) {
    char* fresh = Allocate(capacity);
    std::memcpy(fresh, chars_, static_cast<std::size_t>(header->length) + 1);
    HeaderOf(fresh)->length = header->length;
    Drop(std::exchange(chars_, fresh));
  } else if (wanted > header->capacity) {
    chars_ = Allocate(capacity, header);
  }
  return chars_;
}

void CStringA::ReleaseBuffer(int length) {
  const auto capacity = static_cast<std::size_t>(HeaderOf(chars_)->capacity);
  if (length == -1) length = static_cast<int>(strnlen(chars_, capacity));
  ReleaseBufferSetLength(length);
}

void CStringA::ReleaseBufferSetLength(int length) {
  if (length < 0 || length > HeaderOf(chars_)->capacity) AtlThrow(E_INVALIDARG);
  if (!IsSoleOwner(chars_)) return SetString(chars_, length);  // no buffer was taken
  SetLength(length);
}

void CStringA::Append(const char* chars, int length) { Add(chars, checked_count(chars, length)); }

void CStringA::AddInNewBlock(const char* chars, std::size_t length) {
  if (length == 0) return;
  const auto old_length = static_cast<std::size_t>(GetLength());
  const int new_length = checked_length(old_length + length);
  const CStringA pinned = pin(*this, chars);
  char* buffer = GetBuffer(new_length);
  std::memcpy(buffer + old_length, chars, length);
  SetLength(new_length);
}

void CStringA::Format(const char* format, ...) {
  CStringA text;
  std::va_list arguments;
  va_start(arguments, format);
  const HRESULT result = append_formatted(text, format, arguments);
  va_end(arguments);
  require(result);
  *this = std::move(text);
}

void CStringA::FormatV(const char* format, va_list arguments) {
  CStringA text;
  require(append_formatted(text, format, arguments));
  *this = std::move(text);
}

void CStringA::AppendFormat(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const HRESULT result = append_formatted(*this, format, arguments);
  va_end(arguments);
  require(result);
}

void CStringA::AppendFormatV(const char* format, va_list arguments) {
  require(append_formatted(*this, format, arguments));
}

int CStringA::CompareNoCase(const char* other) const noexcept {
  const char* left = chars_;
  const char* right = other != nullptr ? other : "";
  for (;; ++left, ++right) {
    const int difference =
        static_cast<unsigned char>(orx::to_lower(*left)) - static_cast<unsigned char>(orx::to_lower(*right));
    if (difference != 0 || *left == '\0') return difference;
  }
}

int CStringA::Find(char c, int start) const noexcept {
  if (start < 0) return -1;
  return index_of(view(*this).find(c, static_cast<std::size_t>(start)));
}

int CStringA::Find(const char* text, int start) const noexcept {
  if (text == nullptr || start < 0) return -1;
  return index_of(view(*this).find(text, static_cast<std::size_t>(start)));
}

int CStringA::ReverseFind(char c) const noexcept { return index_of(view(*this).rfind(c)); }

int CStringA::FindOneOf(const char* set) const noexcept {
  return index_of(view(*this).find_first_of(view(set)));
}

CStringA CStringA::Left(int count) const { return Mid(0, count); }

CStringA CStringA::Mid(int first) const { return Mid(first, GetLength()); }

CStringA CStringA::Mid(int first, int count) const {
  first = std::clamp(first, 0, GetLength());
  count = std::clamp(count, 0, GetLength() - first);
  return count == GetLength() ? *this : CStringA(chars_ + first, count);
}

CStringA CStringA::Right(int count) const { return Mid(GetLength() - std::clamp(count, 0, GetLength())); }

CStringA& CStringA::Trim(const char* set) {
  const CStringA pinned = pin(*this, set);
  return TrimRight(set).TrimLeft(set);
}

CStringA& CStringA::TrimLeft() { return trim_left(*this, kWhiteSpace); }
CStringA& CStringA::TrimLeft(char c) { return trim_left(*this, {&c, 1}); }
CStringA& CStringA::TrimLeft(const char* set) { return trim_left(*this, view(set)); }
CStringA& CStringA::TrimRight() { return trim_right(*this, kWhiteSpace); }
CStringA& CStringA::TrimRight(char c) { return trim_right(*this, {&c, 1}); }
CStringA& CStringA::TrimRight(const char* set) { return trim_right(*this, view(set)); }

CStringA& CStringA::MakeUpper() { return change_each(*this, orx::to_upper); }
CStringA& CStringA::MakeLower() { return change_each(*this, orx::to_lower); }

int CStringA::Replace(char old_char, char new_char) {
  const auto replaced = std::count(chars_, chars_ + GetLength(), old_char);
  if (replaced == 0) return 0;
  char* chars = GetBuffer();
  std::replace(chars, chars + GetLength(), old_char, new_char);
  return static_cast<int>(replaced);
}

int CStringA::Replace(const char* old_text, const char* new_text) {
  const std::string_view text = view(*this);
  const std::string_view wanted = view(old_text);
  const std::string_view substitute = view(new_text);
  if (wanted.empty()) return 0;
  CStringA result;
  int replaced = 0;
  std::size_t done = 0;
  std::size_t match = text.find(wanted);
  while (match != std::string_view::npos) {
    append(result, text.substr(done, match - done));
    append(result, substitute);
    done = match + wanted.size();
    match = text.find(wanted, done);
    ++replaced;
  }
  if (replaced == 0) return 0;
  append(result, text.substr(done));
  *this = std::move(result);
  return replaced;
}

int CStringA::Remove(char c) {
  const auto removed = static_cast<int>(std::count(chars_, chars_ + GetLength(), c));
  if (removed == 0) return 0;
  char* chars = GetBuffer();
  const char* end = std::remove(chars, chars + GetLength(), c);
  SetLength(static_cast<int>(end - chars));
  return removed;
}

int CStringA::Insert(int index, char c) { return insert(*this, index, {&c, 1}); }

int CStringA::Insert(int index, const char* text) { return insert(*this, index, view(text)); }

int CStringA::Delete(int index, int count) {
  const int length = GetLength();
  index = std::clamp(index, 0, length);
  count = std::clamp(count, 0, length - index);
  if (count == 0) return length;
  char* at = GetBuffer() + index;
  std::memmove(at, at + count, static_cast<std::size_t>(length - index - count));
  SetLength(length - count);
  return length - count;
}

CStringA CStringA::Tokenize(const char* set, int& start) const {
  if (start < 0) AtlThrow(E_INVALIDARG);
  const std::string_view text = view(*this);
  const std::size_t first = text.find_first_not_of(view(set), static_cast<std::size_t>(start));
  if (first == std::string_view::npos) {
    start = -1;
    return {};
  }
  const std::size_t end = std::min(text.find_first_of(view(set), first), text.size());
  start = static_cast<int>(end) + 1;
  return {chars_ + first, static_cast<int>(end - first)};
}
