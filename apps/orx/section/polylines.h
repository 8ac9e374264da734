// Segments joined into polylines, which end where no segment goes on, or more than one.
#pragma once

#include <array>
#include <vector>

#include "progress.h"
#include "section/triangle_surface.h"

namespace orx::cli {

using Segment = std::array<Point, 2>;

struct Polyline {
  std::vector<Point> points;  // of a closed one, the first is also the last
  double length;
  bool is_closed() const { return points.front() == points.back(); }
};

// Ends within the tolerance of each other become the first of them, and segments that are then of length 0 or
// twice the same are taken out. The segments lie in a plane, in which `across` and `up` are at right angles.
std::vector<Polyline> join(const std::vector<Segment>& segments, const Point& across, const Point& up,
                           double tolerance, Progress& progress);

}  // namespace orx::cli
