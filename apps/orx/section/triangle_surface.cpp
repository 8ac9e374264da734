#include "section/triangle_surface.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

#include "failure.h"
#include "whole_file.h"

namespace orx::cli {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr double kFarthest = BBOX_EMPTY_MIN;  // where boxes end
constexpr std::size_t kLinesAtOnce = 1 << 16;
constexpr std::size_t kLongestWord = 40;
constexpr int kLeastExponent = -100;  // of the unit; the seeds of a plane are in it too, and then multiplied

// One pass over a text that ends with a NUL, as that of a string does.
class Reader {
 public:
  Reader(const std::string& file, const std::string& text)
      : file_(file), begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {
    if (text.starts_with(kByteOrderMark)) at_ += kByteOrderMark.size();
  }

  TriangleSurface read(Progress& progress) {
    while (at_ != end_) {
      read_statement();
      skip_line();
      if (line_ % kLinesAtOnce == 0) {
        progress.tell("reading", static_cast<std::size_t>(at_ - begin_),
                      static_cast<std::size_t>(end_ - begin_));
      }
    }
    line_ = highest_line_;
    if (highest_ > static_cast<std::int64_t>(surface_.points.size())) fail_vertex(highest_);
    if (surface_.triangles.empty()) throw Failure(file_, "it has no faces");
    return std::move(surface_);
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    throw Failure(file_, "line " + std::to_string(line_) + ": " + reason);
  }
  [[noreturn]] void fail_vertex(std::int64_t number) const {
    fail("there is no vertex " + std::to_string(number));
  }
  [[noreturn]] void fail_word(const char* what) const {
    const char* last = at_ + 1;
    while (!ends_word(last) && static_cast<std::size_t>(last - at_) < kLongestWord) ++last;
    std::string word(at_, last);
    std::ranges::replace(word, '\0', '?');
    fail("'" + word + "' is " + what);
  }

  bool ends_word(const char* at) const {
    const char c = *at;
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '#' || c == '\\' || at == end_;
  }

  bool ends_line(const char* at) const { return at == end_ || *at == '\n'; }

  // Whether there is another word in the statement; it is the next to be read then.
  bool has_word() {
    while (true) {
      while (*at_ == ' ' || *at_ == '\t' || *at_ == '\r') ++at_;
      if (*at_ != '\\') return !ends_line(at_) && *at_ != '#';
      const char* const next = at_ + (at_[1] == '\r' ? 2 : 1);
      if (*next != '\n') return true;
      at_ = next + 1;
      ++line_;
    }
  }

  // Not to the end of the statement: comments and the names of files may end with a backslash. What comes
  // after one is no statement that counts.
  void skip_line() {
    const void* const found = std::memchr(at_, '\n', static_cast<std::size_t>(end_ - at_));
    at_ = found != nullptr ? static_cast<const char*>(found) + 1 : end_;
    ++line_;
  }

  void read_statement() {
    if (!has_word() || !ends_word(at_ + 1)) return;
    const char keyword = *at_++;
    if (keyword == 'v') read_vertex();
    if (keyword == 'f') read_face();
  }

  void read_vertex() {
    const double x = read_coordinate();
    const double y = read_coordinate();
    const double z = read_coordinate();
    surface_.points.push_back({x, y, z});
  }

  double read_coordinate() {
    if (!has_word()) fail("a vertex needs three coordinates");
    double value = 0;
    const bool has_plus = *at_ == '+' && at_[1] != '-';
    const auto [rest, error] = std::from_chars(at_ + (has_plus ? 1 : 0), end_, value);
    if (error != std::errc{} || !ends_word(rest) || !(std::fabs(value) <= kFarthest)) {
      fail_word("not a number between -1e15 and 1e15");
    }
    at_ = rest;
    return value;
  }

  void read_face() {
    const std::uint32_t first = read_corner();
    std::uint32_t last = read_corner();
    do {
      const std::uint32_t next = read_corner();
      surface_.triangles.push_back({first, last, next});
      last = next;
    } while (has_word());
  }

  std::uint32_t read_corner() {
    if (!has_word()) fail("a face needs three corners or more");
    std::int64_t number = 0;
    const auto [rest, error] = std::from_chars(at_, end_, number);
    if (error != std::errc{} || !(*rest == '/' || ends_word(rest))) fail_word("not the number of a vertex");
    const auto count = static_cast<std::int64_t>(surface_.points.size());
    const std::int64_t index = number < 0 ? count + number : number - 1;
    if (index < 0 || index >= std::numeric_limits<std::uint32_t>::max()) fail_vertex(number);
    if (index >= count) expect(number);
    at_ = rest;
    while (!ends_word(at_)) ++at_;
    return static_cast<std::uint32_t>(index);
  }

  // A face may come before its vertices. The highest of their numbers stands for all.
  void expect(std::int64_t number) {
    if (number <= highest_) return;
    highest_ = number;
    highest_line_ = line_;
  }

  const std::string& file_;
  const char* begin_;
  const char* at_;
  const char* end_;
  std::size_t line_ = 1;
  std::int64_t highest_ = 0;
  std::size_t highest_line_ = 0;
  TriangleSurface surface_{};
};

void enclose(TriangleSurface& surface) {
  bbox_init(&surface.box);
  for (const Point& point : surface.points) bbox_update_from_xyz(&surface.box, point.x, point.y, point.z);
}

// Whole numbers keep the decimals of the coordinates as they are.
void normalize(TriangleSurface& surface) {
  enclose(surface);
  const auto& [min, max] = surface.box;
  surface.origin = {std::round((min[0] + max[0]) / 2), std::round((min[1] + max[1]) / 2),
                    std::round((min[2] + max[2]) / 2)};
  int exponent = 0;
  std::frexp(diagonal_of(surface.box), &exponent);
  surface.unit = std::ldexp(1, std::max(exponent, kLeastExponent));
  for (Point& point : surface.points) point = 1 / surface.unit * (point - surface.origin);
  enclose(surface);
}

}  // namespace

TriangleSurface read_surface(const std::string& file, Progress& progress) {
  const std::string text = read_file(file);
  TriangleSurface surface = Reader(file, text).read(progress);
  normalize(surface);
  return surface;
}

}  // namespace orx::cli
