#include "section/svg.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "numbers.h"
#include "report.h"

namespace orx::cli {
namespace {

struct Pair {
  double x, y;
};

struct Range {
  double low = std::numeric_limits<double>::max();
  double high = std::numeric_limits<double>::lowest();
  void take(double value) { low = std::min(low, value), high = std::max(high, value); }
  double size() const { return high - low; }
  double middle() const { return (low + high) / 2; }
};

// In pixels.
constexpr Pair kMost = {960, 600};   // of the section
constexpr Pair kLeast = {460, 120};  // of the plot, so that there is room for the texts around it
constexpr double kPad = 14;          // from the section to the frame of the plot
constexpr double kTop = 64, kBottom = 92;
constexpr double kLeastLeft = 100, kLeastRight = 32;
constexpr double kBesideUp = 44;  // for the name of the axis and the gaps beside its numbers
constexpr double kLetter = 7.7, kTitleLetter = 10;
constexpr Pair kBetweenTicks = {90, 28};
constexpr double kBetweenNumbers = 14;
constexpr double kLongestBar = 180;
constexpr double kDetail = 0.2;  // what is nearer to what is drawn is not drawn

constexpr double kDegrees = 57.29577951308232;
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

std::string pixels(double x, double y) { return fixed(x, 2) + ' ' + fixed(y, 2); }
std::string pixels(const Pair& at) { return pixels(at.x, at.y); }

// The longest length up to this one that is 1, 2 or 5 times a power of 10.
double round_length(double length) {
  const double power = std::pow(10, std::floor(std::log10(length)));
  const double times = length / power;
  return (times < 2 ? 1 : times < 5 ? 2 : 5) * power;
}

std::string escaped(const std::string& text) {
  std::string xml;
  for (const char c : one_line(text)) {
    xml += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
  }
  if (is_utf8(xml)) return xml;
  std::ranges::replace_if(
      xml, [](char c) { return c < 0 || c > '~'; }, '?');
  return xml;
}

// What is written along an axis: start + rate * the distance in the plane.
struct Axis {
  const char* name;
  double start;
  double rate;
};

// Where along the plot a round value lies.
struct Tick {
  double at;
  std::string value;
};

double room_for(const std::string& text, double letter) {
  return letter * static_cast<double>(width_of(text));
}

double room_for(const std::vector<Tick>& ticks) {
  double most = 0;
  for (const Tick& tick : ticks) most = std::max(most, room_for(tick.value, kLetter));
  return most;
}

class Drawing {
 public:
  explicit Drawing(const Section& section) : section_(section), frame_(section.frame) {
    for (const Point& corner : section.outline) {
      const Pair at = in_plane(corner);
      across_.take(at.x);
      up_.take(at.y);
    }
    scale_ = std::min(kMost.x / across_.size(), kMost.y / up_.size());
    width_ = std::max(kLeast.x, across_.size() * scale_ + 2 * kPad);
    height_ = std::max(kLeast.y, up_.size() * scale_ + 2 * kPad);
    across_axis_ = frame_.is_horizontal ? Axis{"x", frame_.origin.x, 1} : Axis{"distance", -across_.low, 1};
    up_axis_ = frame_.is_horizontal ? Axis{"y", frame_.origin.y, 1}
                                    : Axis{"elevation", frame_.origin.z, frame_.up.z};
    const auto divide_across = [&](double between) {
      across_ticks_ = divide(across_axis_, across_.middle(), width_, between);
      return room_for(across_ticks_);
    };
    const double widest = divide_across(kBetweenTicks.x);
    divide_across(std::max(kBetweenTicks.x, widest + kBetweenNumbers));
    up_ticks_ = divide(up_axis_, up_.middle(), height_, kBetweenTicks.y);
    left_ = std::max(kLeastLeft, std::ceil(kBesideUp + room_for(up_ticks_)));
    right_ = std::max(kLeastRight, widest / 2);
  }

  std::string draw(const std::string& title) {
    const std::string subtitle = about_plane();
    const double right =
        std::max({width_ + right_, room_for(title, kTitleLetter), room_for(subtitle, kLetter)});
    svg_ = R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" + fixed(left_ + right, 0) + R"(" height=")" +
           fixed(kTop + height_ + kBottom, 0) + "\">\n" + kStyle;
    text("title", left_, 28, title);
    text("", left_, 48, subtitle);
    draw_across();
    draw_up();
    svg_ += "<rect class=\"frame\" x=\"" + fixed(left_, 0) + "\" y=\"" + fixed(kTop, 0) + "\" width=\"" +
            fixed(width_, 2) + "\" height=\"" + fixed(height_, 2) + "\"/>\n";
    draw_outline();
    draw_polylines();
    draw_bar();
    return svg_ + "</svg>\n";
  }

 private:
  Pair in_plane(const Point& point) const {
    const Point relative = point - frame_.origin;
    return {dot(relative, frame_.across), dot(relative, frame_.up)};
  }

  Pair on_page(const Point& point) const {
    const Pair at = in_plane(point);
    return {left_ + width_ / 2 + (at.x - across_.middle()) * scale_,
            kTop + height_ / 2 - (at.y - up_.middle()) * scale_};
  }

  // To a tenth of a pixel.
  std::string shown(double value) const { return fixed(value, decimals_of(0.1 / scale_)); }

  std::string about_plane() const {
    if (frame_.is_horizontal) return "Horizontal, elevation " + shown(frame_.origin.z);
    const double degrees = std::atan2(frame_.across.x, frame_.across.y) * kDegrees;
    const double dip = std::asin(std::min(frame_.up.z, 1.0)) * kDegrees;
    const bool is_vertical = frame_.up.z > kVertical;
    const std::string plane = is_vertical ? "Vertical" : "Dip " + fixed(dip, 1) + "°";
    return plane + ", left to right towards " + fixed(degrees < 0 ? degrees + 360 : degrees, 1) + "°" +
           (is_vertical ? about_ends() : "");
  }

  // Where the section begins and ends on the map.
  std::string about_ends() const {
    const auto distance = [this](const Point& point) { return in_plane(point).x; };
    const auto [left, right] = std::ranges::minmax(section_.outline, {}, distance);
    return ", from " + shown(left.x) + ", " + shown(left.y) + " to " + shown(right.x) + ", " + shown(right.y);
  }

  void text(const std::string& style, double x, double y, const std::string& words) {
    svg_ += "<text class=\"" + style + "\" x=\"" + fixed(x, 1) + "\" y=\"" + fixed(y, 1) + "\">" +
            escaped(words) + "</text>\n";
  }

  void path(const char* style, const std::string& commands) {
    svg_ += std::string("<path class=\"") + style + "\" d=\"" + commands + "\"/>\n";
  }

  std::vector<Tick> divide(const Axis& axis, double middle, double length, double between) const {
    const double rate = axis.rate / scale_;
    const double low = axis.start + axis.rate * middle - rate * length / 2;
    double step = round_length(rate * between);
    if (step < rate * between) step = round_length(2.5 * step);
    const double first = std::ceil(low / step);
    const int count = static_cast<int>(std::floor(low / step + rate * length / step - first)) + 1;
    std::vector<Tick> ticks;
    for (int i = 0; i < count; ++i) {
      const double value = (first + i) * step;
      ticks.push_back({(value - low) / rate, fixed(value, decimals_of(step))});
    }
    return ticks;
  }

  void draw_across() {
    const double bottom = kTop + height_;
    for (const auto& [x, value] : across_ticks_) {
      path("grid", "M" + pixels(left_ + x, kTop) + "V" + fixed(bottom, 2));
      text("middle", left_ + x, bottom + 17, value);
    }
    text("middle", left_ + width_ / 2, bottom + 38, across_axis_.name);
  }

  void draw_up() {
    const double bottom = kTop + height_;
    for (const auto& [y, value] : up_ticks_) {
      path("grid", "M" + pixels(left_, bottom - y) + "H" + fixed(left_ + width_, 2));
      text("end", left_ - 8, bottom - y + 4, value);
    }
    svg_ += "<text class=\"middle\" transform=\"translate(26 " + fixed(kTop + height_ / 2, 1) +
            ") rotate(-90)\">" + up_axis_.name + "</text>\n";
  }

  void draw_outline() {
    std::vector<Pair> corners;
    Pair inside = {0, 0};
    for (const Point& corner : section_.outline) {
      corners.push_back(on_page(corner));
      inside.x += corners.back().x / static_cast<double>(section_.outline.size());
      inside.y += corners.back().y / static_cast<double>(section_.outline.size());
    }
    const auto direction = [&](const Pair& at) { return std::atan2(at.y - inside.y, at.x - inside.x); };
    std::ranges::sort(corners, {}, direction);
    std::string commands;
    for (const Pair& corner : corners) commands += (commands.empty() ? "M" : "L") + pixels(corner);
    path("box", commands + "Z");
  }

  void draw_polylines() {
    std::string commands;
    for (const Polyline& polyline : section_.polylines) {
      Pair last = on_page(polyline.points.front());
      commands += "M" + pixels(last);
      for (std::size_t i = 1; i < polyline.points.size(); ++i) {
        const Pair next = on_page(polyline.points[i]);
        const bool is_near = std::fabs(next.x - last.x) + std::fabs(next.y - last.y) < kDetail;
        if (is_near && i + 1 < polyline.points.size()) continue;
        commands += "L" + pixels(next);
        last = next;
      }
      if (polyline.is_closed()) commands += "Z";
      commands += '\n';
    }
    path("section", commands);
  }

  void draw_bar() {
    const double length = round_length(kLongestBar / scale_);
    const double right = left_ + length * scale_;
    const double y = kTop + height_ + 70;
    path("bar", "M" + pixels(left_, y - 5) + "v5H" + fixed(right, 2) + "v-5");
    text("", right + 8, y + 1, fixed(length, decimals_of(length)));
  }

  const Section& section_;
  const Frame& frame_;
  Range across_;
  Range up_;
  double scale_;  // pixels for a length of 1
  double width_;  // of the plot
  double height_;
  double left_, right_;  // the margins
  Axis across_axis_, up_axis_;
  std::vector<Tick> across_ticks_, up_ticks_;
  std::string svg_;
};

}  // namespace

std::string draw(const Section& section, const std::string& title) { return Drawing(section).draw(title); }

}  // namespace orx::cli
