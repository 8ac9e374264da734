#include <orx/text/unique_key.h>

#include <orx/datetime/date_defaults.h>
#include <orx/datetime/date_time_format.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string_view>
#include <thread>

namespace {

constexpr std::ptrdiff_t kNumberWidth = 6;
constexpr int kDefaultOrder = -1;  // an unknown order means the default

// A stamp, or a whole key. Not NUL-terminated.
struct Key {
  char text[ORX_KEY_STAMP_SIZE];
  std::size_t length = 0;

  std::string_view View() const { return {text, length}; }
  bool Equals(const char* other) const {
    return std::strncmp(other, text, length) == 0 && other[length] == '\0';
  }
};

// Reads the clock once for date and time. With two readings midnight could pass in between.
Key current_stamp() {
  orxDateTime now{0, 0, orxDateTimeFull, 0};
  orxDateTime_SetYMDFormat(&now, kDefaultOrder);
  orxDateTime_SetToCurrent(&now);
  char text[ORX_DATE_TEXT_SIZE] = "";
  orxDateTime_FormatString(&now, text, sizeof text);
  Key stamp;
  for (const char* c = text; *c != '\0'; ++c) {
    const bool is_separator = *c == '/' || *c == ' ' || *c == ':';
    if (is_separator) continue;
    stamp.text[stamp.length] = *c;
    ++stamp.length;
  }
  return stamp;
}

// Appends the number as "%06d" prints it, many times faster.
void append_number(Key& key, int number) {
  char digits[16];
  const char* const first = number < 0 ? digits + 1 : digits;
  const char* const last = std::to_chars(digits, std::end(digits), number).ptr;
  const std::ptrdiff_t padding = std::max<std::ptrdiff_t>(0, kNumberWidth - (last - digits));
  char* end = key.text + key.length;
  if (number < 0) {
    *end = '-';
    ++end;
  }
  end = std::fill_n(end, padding, '0');
  end = std::copy(first, last, end);
  key.length = static_cast<std::size_t>(end - key.text);
}

void put(std::string_view text, char* out, std::size_t size) {
  const std::size_t length = std::min(text.size(), size - 1);
  std::memcpy(out, text.data(), length);
  out[length] = '\0';
}

}  // namespace

void GenerateKey(char* out, int outSize, char* lastStamp, int* counter) {
  if (out == nullptr || outSize < 1) return;
  *out = '\0';
  if (lastStamp == nullptr || counter == nullptr) return;

  Key key = current_stamp();
  if (*counter >= ORX_KEY_COUNTER_MAX) {
    while (key.Equals(lastStamp)) {
      std::this_thread::yield();
      key = current_stamp();
    }
    *counter = 0;
  }
  ++*counter;
  put(key.View(), lastStamp, sizeof key.text);
  append_number(key, *counter);
  put(key.View(), out, static_cast<std::size_t>(outSize));
}
