// Joins segments into polylines. A polyline ends where it meets no other segment, or more than one.
#pragma once

#include <array>
#include <vector>

#include "progress.h"
#include "section/triangle_surface.h"

namespace orx::cli {

using Segment = std::array<Point, 2>;

struct Polyline {
  std::vector<Point> points;  // in a closed polyline, the last point equals the first
  double length;
  bool IsClosed() const { return points.front() == points.back(); }
};

// The segments lie in one plane; `across` and `up` are perpendicular unit vectors in it. Ends that are within
// the tolerance of an earlier end move to it. Segments that then have length 0 or occur twice are removed.
std::vector<Polyline> join_segments(const std::vector<Segment>& segments, const Point& across,
                                    const Point& up, double tolerance, Progress& progress);

}  // namespace orx::cli
