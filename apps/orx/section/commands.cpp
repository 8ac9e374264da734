#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>

#include "commands.h"
#include "failure.h"
#include "numbers.h"
#include "options.h"
#include "progress.h"
#include "section/section.h"
#include "section/svg.h"
#include "section/triangle_surface.h"
#include "suite_file.h"
#include "whole_file.h"

namespace orx::cli {
namespace {

double number_of(const std::string& option, const std::string& text) {
  double number = 0;
  if (!read_number(text, number) || !(std::fabs(number) <= BBOX_EMPTY_MIN)) {
    throw UsageError(option + ": '" + text + "' is not a number between -1e15 and 1e15");
  }
  return number;
}

Seeds seeds_of(const std::string& plane) {
  std::vector<double> numbers;
  std::istringstream parts(plane);
  for (std::string part; std::getline(parts, part, ',');) numbers.push_back(number_of("--plane", part));
  if (numbers.size() != 9 || plane.ends_with(','))
    throw UsageError("--plane: three points need nine numbers");
  Seeds seeds;
  for (std::size_t i = 0; i < 3; ++i) seeds[i] = {numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]};
  if (!are_spread(seeds)) throw UsageError("--plane: the three points are on one line");
  return seeds;
}

std::optional<double> tolerance_of(const std::optional<std::string>& text) {
  if (!text) return {};
  const double tolerance = number_of("--tolerance", *text);
  if (tolerance < 0) throw UsageError("--tolerance: it is less than 0");
  return tolerance;
}

// By hand: there may be millions of points.
void write_json(std::ostream& out, const Section& section) {
  out << "{\n  \"Length\": " << shortest(section.length) << ",\n  \"Polylines\": [";
  const char* line_end = "\n";
  for (const Polyline& polyline : section.polylines) {
    out << line_end << "    {\"Closed\": " << (polyline.is_closed() ? "true" : "false")
        << ", \"Length\": " << shortest(polyline.length) << ", \"Points\": ";
    const char* separator = "[";
    for (const auto& [x, y, z] : polyline.points) {
      out << separator << '[' << shortest(x) << ", " << shortest(y) << ", " << shortest(z) << ']';
      separator = ", ";
    }
    out << "]}";
    line_end = ",\n";
  }
  out << "\n  ]\n}\n";
}

void keep_surface(const SectionArguments& arguments) {
  if (!arguments.svg) return;
  std::error_code unknown;  // the drawing need not exist
  if (std::filesystem::equivalent(native_path(arguments.file), native_path(*arguments.svg), unknown)) {
    throw Failure(arguments.file, "--svg would overwrite it");
  }
}

struct Cut {
  Section section;
  std::string length;  // with the decimals that the tolerance leaves it
};

Cut cut_file(const SectionArguments& arguments) {
  const Seeds seeds = seeds_of(arguments.plane);
  const std::optional<double> wanted = tolerance_of(arguments.tolerance);
  Progress progress;
  const TriangleSurface surface = read_surface(arguments.file, progress);
  const double tolerance = wanted.value_or(usual_tolerance(surface));
  Section section = cut_surface(surface, seeds, tolerance, progress);
  if (section.polylines.empty()) throw Failure(arguments.file, "the plane does not cut it");
  std::string length = fixed(section.length, decimals_of(10 * std::max(tolerance, usual_tolerance(surface))));
  return {std::move(section), std::move(length)};
}

std::string title_of(const SectionArguments& arguments, const Cut& cut) {
  const std::size_t count = cut.section.polylines.size();
  return std::filesystem::path(native_path(arguments.file)).filename().string() + ": " +
         std::to_string(count) + (count == 1 ? " polyline" : " polylines") + ", length " + cut.length;
}

}  // namespace

void section(const SectionArguments& arguments, std::ostream& out) {
  keep_surface(arguments);
  const Cut cut = cut_file(arguments);
  if (arguments.svg) replace_file(*arguments.svg, draw(cut.section, title_of(arguments, cut)));
  if (arguments.format == Format::kJson) return write_json(out, cut.section);
  const auto& polylines = cut.section.polylines;
  const Record shown{{"Polylines", static_cast<std::int64_t>(polylines.size())},
                     {"Closed", std::int64_t{std::ranges::count_if(polylines, &Polyline::is_closed)}},
                     {"Length", cut.length}};
  write(out, shown, Format::kText);
}

}  // namespace orx::cli
