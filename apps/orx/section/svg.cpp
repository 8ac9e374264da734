#include "section/svg.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "numbers.h"
#include "report.h"

namespace orx::cli {
namespace {

struct Position {
  double x, y;
};

struct Range {
  double low = std::numeric_limits<double>::max();
  double high = std::numeric_limits<double>::lowest();
  void Include(double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
  double Size() const { return high - low; }
  double Middle() const { return (low + high) / 2; }
};

// Sizes in pixels.
constexpr Position kLargestSection = {960, 600};  // of the section without its padding
constexpr Position kSmallestPlot = {460, 120};    // of the plot, so that the texts around it have space
constexpr double kPadding = 14;                   // between the section and the frame of the plot
constexpr double kTop = 64, kBottom = 92;
constexpr double kSmallestLeft = 100, kSmallestRight = 32;
constexpr double kBesideUp = 44;  // for the name of the vertical axis and the gaps beside its numbers
constexpr double kLetterWidth = 7.7, kTitleLetterWidth = 10;
constexpr Position kBetweenTicks = {90, 28};
constexpr double kBetweenNumbers = 14;
constexpr double kLongestBar = 180;
constexpr double kSmallestStep = 0.2;  // a point that is closer to the last point is left out

constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr double kVertical = 1 - 1e-9;

constexpr const char* kStyle = R"(<style>
text { font: 12px "DejaVu Sans", Verdana, Arial, sans-serif; fill: #444 }
.title { font-size: 17px; fill: #111 }
.middle { text-anchor: middle }
.end { text-anchor: end }
.grid { stroke: #e6e6e6 }
.frame { fill: none; stroke: #aaa }
.box { fill: none; stroke: #999; stroke-dasharray: 5 4 }
.bar { fill: none; stroke: #444 }
.section { fill: none; stroke: #0b4f8a; stroke-width: 1.6; stroke-linejoin: round; stroke-linecap: round }
</style>
<rect width="100%" height="100%" fill="white"/>
)";

std::string pixels(double x, double y) { return fixed_text(x, 2) + ' ' + fixed_text(y, 2); }
std::string pixels(const Position& at) { return pixels(at.x, at.y); }

// The largest value up to `length` that is 1, 2 or 5 times a power of 10.
double round_length(double length) {
  const double power = std::pow(10, std::floor(std::log10(length)));
  const double times = length / power;
  if (times < 2) return power;
  return (times < 5 ? 2 : 5) * power;
}

std::string escape_xml(const std::string& text) {
  std::string xml;
  for (const char c : one_line(text)) {
    if (c == '&') {
      xml += "&amp;";
    } else if (c == '<') {
      xml += "&lt;";
    } else {
      xml += c;
    }
  }
  if (is_utf8(xml)) return xml;
  std::ranges::replace_if(
      xml, [](char c) { return c < 0 || c > '~'; }, '?');
  return xml;
}

// The numbers along an axis: start + rate * distance in the plane.
struct Axis {
  const char* name;
  double start;
  double rate;
};

// A round value on an axis.
struct Tick {
  double at;  // pixels from the start of the axis
  std::string value;
};

double width_of_text(const std::string& text, double letter) {
  return letter * static_cast<double>(width_of(text));
}

double widest_value(const std::vector<Tick>& ticks) {
  double widest = 0;
  for (const Tick& tick : ticks) widest = std::max(widest, width_of_text(tick.value, kLetterWidth));
  return widest;
}

class Drawing {
 public:
  explicit Drawing(const Section& section) : section_(section), frame_(section.frame) {
    for (const Point& corner : section.outline) {
      const Position at = InPlane(corner);
      across_.Include(at.x);
      up_.Include(at.y);
    }
    scale_ = std::min(kLargestSection.x / across_.Size(), kLargestSection.y / up_.Size());
    width_ = std::max(kSmallestPlot.x, across_.Size() * scale_ + 2 * kPadding);
    height_ = std::max(kSmallestPlot.y, up_.Size() * scale_ + 2 * kPadding);
    across_axis_ = frame_.is_horizontal ? Axis{"x", frame_.origin.x, 1} : Axis{"distance", -across_.low, 1};
    up_axis_ = frame_.is_horizontal ? Axis{"y", frame_.origin.y, 1}
                                    : Axis{"elevation", frame_.origin.z, frame_.up.z};
    const auto divide_across = [&](double between) {
      across_ticks_ = Divide(across_axis_, across_.Middle(), width_, between);
      return widest_value(across_ticks_);
    };
    // The width of the values depends on the distance of the ticks, which depends on that width.
    const double widest = divide_across(kBetweenTicks.x);
    divide_across(std::max(kBetweenTicks.x, widest + kBetweenNumbers));
    up_ticks_ = Divide(up_axis_, up_.Middle(), height_, kBetweenTicks.y);
    left_ = std::max(kSmallestLeft, std::ceil(kBesideUp + widest_value(up_ticks_)));
    right_ = std::max(kSmallestRight, widest / 2);
  }

  std::string Draw(const std::string& title) {
    const std::string subtitle = DescribePlane();
    const double right = std::max(
        {width_ + right_, width_of_text(title, kTitleLetterWidth), width_of_text(subtitle, kLetterWidth)});
    svg_ = R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" + fixed_text(left_ + right, 0) +
           R"(" height=")" + fixed_text(kTop + height_ + kBottom, 0) + "\">\n" + kStyle;
    AddText("title", left_, 28, title);
    AddText("", left_, 48, subtitle);
    DrawAcross();
    DrawUp();
    svg_ += "<rect class=\"frame\" x=\"" + fixed_text(left_, 0) + "\" y=\"" + fixed_text(kTop, 0) +
            "\" width=\"" + fixed_text(width_, 2) + "\" height=\"" + fixed_text(height_, 2) + "\"/>\n";
    DrawOutline();
    DrawPolylines();
    DrawBar();
    return svg_ + "</svg>\n";
  }

 private:
  Position InPlane(const Point& point) const {
    const Point relative = point - frame_.origin;
    return {dot(relative, frame_.across), dot(relative, frame_.up)};
  }

  Position OnPage(const Point& point) const {
    const Position at = InPlane(point);
    return {left_ + width_ / 2 + (at.x - across_.Middle()) * scale_,
            kTop + height_ / 2 - (at.y - up_.Middle()) * scale_};
  }

  // With enough decimals for a tenth of a pixel.
  std::string FormatDistance(double value) const { return fixed_text(value, decimals_for(0.1 / scale_)); }

  std::string DescribePlane() const {
    if (frame_.is_horizontal) return "Horizontal, elevation " + FormatDistance(frame_.origin.z);
    const double degrees = std::atan2(frame_.across.x, frame_.across.y) * kDegreesPerRadian;
    const double dip = std::asin(std::min(frame_.up.z, 1.0)) * kDegreesPerRadian;
    const bool is_vertical = frame_.up.z > kVertical;
    const std::string plane = is_vertical ? "Vertical" : "Dip " + fixed_text(dip, 1) + "°";
    return plane + ", left to right towards " + fixed_text(degrees < 0 ? degrees + 360 : degrees, 1) + "°" +
           (is_vertical ? DescribeEnds() : "");
  }

  // The map coordinates of both ends of the section.
  std::string DescribeEnds() const {
    const auto distance = [this](const Point& point) { return InPlane(point).x; };
    const auto [left, right] = std::ranges::minmax(section_.outline, {}, distance);
    return ", from " + FormatDistance(left.x) + ", " + FormatDistance(left.y) + " to " +
           FormatDistance(right.x) + ", " + FormatDistance(right.y);
  }

  void AddText(const std::string& style, double x, double y, const std::string& words) {
    svg_ += "<text class=\"" + style + "\" x=\"" + fixed_text(x, 1) + "\" y=\"" + fixed_text(y, 1) + "\">" +
            escape_xml(words) + "</text>\n";
  }

  void AddPath(const char* style, const std::string& commands) {
    svg_ += std::string("<path class=\"") + style + "\" d=\"" + commands + "\"/>\n";
  }

  // Ticks at round values, at least `between` pixels apart. The axis is `length` pixels long around `middle`.
  std::vector<Tick> Divide(const Axis& axis, double middle, double length, double between) const {
    const double rate = axis.rate / scale_;
    const double low = axis.start + axis.rate * middle - rate * length / 2;
    double step = round_length(rate * between);
    if (step < rate * between) step = round_length(2.5 * step);
    const double first = std::ceil(low / step);
    const int count = static_cast<int>(std::floor(low / step + rate * length / step - first)) + 1;
    std::vector<Tick> ticks;
    for (int i = 0; i < count; ++i) {
      const double value = (first + i) * step;
      ticks.push_back({(value - low) / rate, fixed_text(value, decimals_for(step))});
    }
    return ticks;
  }

  void DrawAcross() {
    const double bottom = kTop + height_;
    for (const auto& [x, value] : across_ticks_) {
      AddPath("grid", "M" + pixels(left_ + x, kTop) + "V" + fixed_text(bottom, 2));
      AddText("middle", left_ + x, bottom + 17, value);
    }
    AddText("middle", left_ + width_ / 2, bottom + 38, across_axis_.name);
  }

  void DrawUp() {
    const double bottom = kTop + height_;
    for (const auto& [y, value] : up_ticks_) {
      AddPath("grid", "M" + pixels(left_, bottom - y) + "H" + fixed_text(left_ + width_, 2));
      AddText("end", left_ - 8, bottom - y + 4, value);
    }
    svg_ += "<text class=\"middle\" transform=\"translate(26 " + fixed_text(kTop + height_ / 2, 1) +
            ") rotate(-90)\">" + up_axis_.name + "</text>\n";
  }

  // The corners are unordered. The outline is convex, so their directions from its centre order them.
  void DrawOutline() {
    std::vector<Position> corners;
    Position inside = {0, 0};
    for (const Point& corner : section_.outline) {
      corners.push_back(OnPage(corner));
      inside.x += corners.back().x / static_cast<double>(section_.outline.size());
      inside.y += corners.back().y / static_cast<double>(section_.outline.size());
    }
    const auto direction = [&](const Position& at) { return std::atan2(at.y - inside.y, at.x - inside.x); };
    std::ranges::sort(corners, {}, direction);
    std::string commands;
    for (const Position& corner : corners) commands += (commands.empty() ? "M" : "L") + pixels(corner);
    AddPath("box", commands + "Z");
  }

  void DrawPolylines() {
    std::string commands;
    for (const Polyline& polyline : section_.polylines) {
      Position last = OnPage(polyline.points.front());
      commands += "M" + pixels(last);
      for (std::size_t i = 1; i < polyline.points.size(); ++i) {
        const Position next = OnPage(polyline.points[i]);
        const bool is_near = std::fabs(next.x - last.x) + std::fabs(next.y - last.y) < kSmallestStep;
        if (is_near && i + 1 < polyline.points.size()) continue;
        commands += "L" + pixels(next);
        last = next;
      }
      if (polyline.IsClosed()) commands += "Z";
      commands += '\n';
    }
    AddPath("section", commands);
  }

  void DrawBar() {
    const double length = round_length(kLongestBar / scale_);
    const double right = left_ + length * scale_;
    const double y = kTop + height_ + 70;
    AddPath("bar", "M" + pixels(left_, y - 5) + "v5H" + fixed_text(right, 2) + "v-5");
    AddText("", right + 8, y + 1, fixed_text(length, decimals_for(length)));
  }

  const Section& section_;
  const Frame& frame_;
  Range across_;
  Range up_;
  double scale_;  // pixels per unit of length
  double width_;  // of the plot, as height_
  double height_;
  double left_, right_;  // margins
  Axis across_axis_, up_axis_;
  std::vector<Tick> across_ticks_, up_ticks_;
  std::string svg_;
};

}  // namespace

std::string draw_section(const Section& section, const std::string& title) {
  return Drawing(section).Draw(title);
}

}  // namespace orx::cli
