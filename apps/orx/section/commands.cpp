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
  if (!is_plane_defined_by(seeds)) throw UsageError("--plane: the three points are on one line");
  return seeds;
}

std::optional<double> tolerance_of(const std::optional<std::string>& text) {
  if (!text) return {};
  const double tolerance = number_of("--tolerance", *text);
  if (tolerance < 0) throw UsageError("--tolerance: it is less than 0");
  return tolerance;
}

// Writes directly, without a JSON document in memory: there may be millions of points.
void write_json(std::ostream& out, const Section& section) {
  out << "{\n  \"Length\": " << shortest_text(section.length) << ",\n  \"Polylines\": [";
  const char* line_end = "\n";
  for (const Polyline& polyline : section.polylines) {
    out << line_end << "    {\"Closed\": " << (polyline.IsClosed() ? "true" : "false")
        << ", \"Length\": " << shortest_text(polyline.length) << ", \"Points\": ";
    const char* separator = "[";
    for (const auto& [x, y, z] : polyline.points) {
      out << separator << '[' << shortest_text(x) << ", " << shortest_text(y) << ", " << shortest_text(z)
          << ']';
      separator = ", ";
    }
    out << "]}";
    line_end = ",\n";
  }
  out << "\n  ]\n}\n";
}

// Refuses to overwrite the surface with its drawing.
void protect_surface(const SectionArguments& arguments) {
  if (!arguments.svg) return;
  std::error_code ignored;  // the drawing may be missing
  if (std::filesystem::equivalent(native_path(arguments.file), native_path(*arguments.svg), ignored)) {
    throw Failure(arguments.file, "--svg would overwrite the surface");
  }
}

struct Cut {
  Section section;
  std::string length;  // with as many decimals as the tolerance justifies
};

Cut cut_file(const SectionArguments& arguments) {
  const Seeds seeds = seeds_of(arguments.plane);
  const std::optional<double> given_tolerance = tolerance_of(arguments.tolerance);
  Progress progress;
  const TriangleSurface surface = read_surface(arguments.file, progress);
  const double tolerance = given_tolerance.value_or(default_tolerance(surface));
  Section section = cut_surface(surface, seeds, tolerance, progress);
  if (section.polylines.empty()) throw Failure(arguments.file, "the plane does not cut the surface");
  const double precision = 10 * std::max(tolerance, default_tolerance(surface));
  std::string length = fixed_text(section.length, decimals_for(precision));
  return {std::move(section), std::move(length)};
}

std::string title_of(const SectionArguments& arguments, const Cut& cut) {
  const std::size_t count = cut.section.polylines.size();
  const std::filesystem::path path = native_path(arguments.file);
  return path.filename().string() + ": " + std::to_string(count) + (count == 1 ? " polyline" : " polylines") +
         ", length " + cut.length;
}

}  // namespace

void section_show(const SectionArguments& arguments, std::ostream& out) {
  protect_surface(arguments);
  const Cut cut = cut_file(arguments);
  if (arguments.svg) replace_file(*arguments.svg, draw_section(cut.section, title_of(arguments, cut)));
  if (arguments.format == Format::kJson) return write_json(out, cut.section);
  const auto& polylines = cut.section.polylines;
  const Record shown{{"Polylines", static_cast<std::int64_t>(polylines.size())},
                     {"Closed", std::int64_t{std::ranges::count_if(polylines, &Polyline::IsClosed)}},
                     {"Length", cut.length}};
  write_record(out, shown, Format::kText);
}

}  // namespace orx::cli
