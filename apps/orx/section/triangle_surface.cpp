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
constexpr double kMaxCoordinate = BBOX_EMPTY_MIN;  // the limit of boxes
constexpr std::size_t kLinesPerReport = 1 << 16;
constexpr std::size_t kLongestWord = 40;  // in a message
// The smallest exponent of the unit. The seeds of a plane are divided by the unit and then multiplied with
// each other, which must not overflow.
constexpr int kMinExponent = -100;

// Reads the file in one pass. The text ends with a NUL, as in a std::string, so that the reader may test
// the character at `end_`. A NUL within the file is an ordinary character.
class ObjReader {
 public:
  ObjReader(const std::string& file, const std::string& text)
      : file_(file), begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {
    if (text.starts_with(kByteOrderMark)) at_ += kByteOrderMark.size();
  }

  TriangleSurface Read(Progress& progress) {
    while (at_ != end_) {
      ReadStatement();
      SkipLine();
      if (line_ % kLinesPerReport == 0) {
        progress.Report("reading", static_cast<std::size_t>(at_ - begin_),
                        static_cast<std::size_t>(end_ - begin_));
      }
    }
    line_ = highest_line_;
    if (highest_ > static_cast<std::int64_t>(surface_.points.size())) FailVertex(highest_);
    if (surface_.triangles.empty()) throw Failure(file_, "it has no faces");
    return std::move(surface_);
  }

 private:
  [[noreturn]] void Fail(const std::string& reason) const {
    throw Failure(file_, "line " + std::to_string(line_) + ": " + reason);
  }
  [[noreturn]] void FailVertex(std::int64_t number) const {
    Fail("there is no vertex " + std::to_string(number));
  }
  [[noreturn]] void FailWord(const char* what) const {
    const char* last = at_ + 1;
    while (!EndsWord(last) && static_cast<std::size_t>(last - at_) < kLongestWord) ++last;
    std::string word(at_, last);
    std::ranges::replace(word, '\0', '?');
    Fail("'" + word + "' is " + what);
  }

  bool EndsWord(const char* at) const {
    const char c = *at;
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '#' || c == '\\' || at == end_;
  }

  bool EndsLine(const char* at) const { return at == end_ || *at == '\n'; }

  // Moves to the next word of the statement, across continued lines. False at the end of the statement.
  bool HasWord() {
    while (true) {
      while (*at_ == ' ' || *at_ == '\t' || *at_ == '\r') ++at_;
      if (*at_ != '\\') return !EndsLine(at_) && *at_ != '#';
      const char* const next = at_ + (at_[1] == '\r' ? 2 : 1);
      if (*next != '\n') return true;
      at_ = next + 1;
      ++line_;
    }
  }

  // Skips the rest of the line, not of the statement: comments and names of files may end with a backslash,
  // which does not continue them.
  void SkipLine() {
    const void* const found = std::memchr(at_, '\n', static_cast<std::size_t>(end_ - at_));
    at_ = found != nullptr ? static_cast<const char*>(found) + 1 : end_;
    ++line_;
  }

  void ReadStatement() {
    if (!HasWord() || !EndsWord(at_ + 1)) return;
    const char keyword = *at_;
    ++at_;
    if (keyword == 'v') ReadVertex();
    if (keyword == 'f') ReadFace();
  }

  void ReadVertex() {
    const double x = ReadCoordinate();
    const double y = ReadCoordinate();
    const double z = ReadCoordinate();
    surface_.points.push_back({x, y, z});
  }

  double ReadCoordinate() {
    if (!HasWord()) Fail("a vertex needs three coordinates");
    double value = 0;
    const bool has_plus = *at_ == '+' && at_[1] != '-';
    const auto [rest, error] = std::from_chars(at_ + (has_plus ? 1 : 0), end_, value);
    if (error != std::errc{} || !EndsWord(rest) || !(std::fabs(value) <= kMaxCoordinate)) {
      FailWord("not a number between -1e15 and 1e15");
    }
    at_ = rest;
    return value;
  }

  void ReadFace() {
    const std::uint32_t first = ReadCorner();
    std::uint32_t last = ReadCorner();
    do {
      const std::uint32_t next = ReadCorner();
      surface_.triangles.push_back({first, last, next});
      last = next;
    } while (HasWord());
  }

  std::uint32_t ReadCorner() {
    if (!HasWord()) Fail("a face needs three corners or more");
    std::int64_t number = 0;
    const auto [rest, error] = std::from_chars(at_, end_, number);
    if (error != std::errc{} || !(*rest == '/' || EndsWord(rest))) FailWord("not the number of a vertex");
    const auto count = static_cast<std::int64_t>(surface_.points.size());
    const std::int64_t index = number < 0 ? count + number : number - 1;
    if (index < 0 || index >= std::numeric_limits<std::uint32_t>::max()) FailVertex(number);
    if (index >= count) NoteVertexNumber(number);
    at_ = rest;
    while (!EndsWord(at_)) ++at_;
    return static_cast<std::uint32_t>(index);
  }

  // A face may come before its vertices, so the highest number is checked at the end of the file.
  void NoteVertexNumber(std::int64_t number) {
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

void update_box(TriangleSurface& surface) {
  bbox_init(&surface.box);
  for (const Point& point : surface.points) bbox_update_from_xyz(&surface.box, point.x, point.y, point.z);
}

// Moves the points to the origin and scales them to the unit. The origin has whole coordinates, which keeps
// the decimals of the points.
void normalize(TriangleSurface& surface) {
  update_box(surface);
  const auto& [min, max] = surface.box;
  surface.origin = {std::round((min[0] + max[0]) / 2), std::round((min[1] + max[1]) / 2),
                    std::round((min[2] + max[2]) / 2)};
  int exponent = 0;
  std::frexp(diagonal_of(surface.box), &exponent);
  surface.unit = std::ldexp(1, std::max(exponent, kMinExponent));
  for (Point& point : surface.points) point = 1 / surface.unit * (point - surface.origin);
  update_box(surface);
}

}  // namespace

TriangleSurface read_surface(const std::string& file, Progress& progress) {
  const std::string text = read_file(file);
  TriangleSurface surface = ObjReader(file, text).Read(progress);
  normalize(surface);
  return surface;
}

}  // namespace orx::cli
