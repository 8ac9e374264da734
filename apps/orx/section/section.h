// The section of a surface: the lines where a plane cuts it.
//
// A face that the plane crosses contributes the segment between two points on its edges. Two neighbours
// compute the same point on their common edge, so their segments join into polylines. A face that only
// touches the plane with one corner contributes nothing. A face in the plane contributes nothing either; its
// neighbours contribute its border.
#pragma once

#include <orx/geometry/cutting_plane.h>

#include <array>
#include <vector>

#include "progress.h"
#include "section/polylines.h"
#include "section/triangle_surface.h"

namespace orx::cli {

// A coordinate system in the plane. `origin` is the point of the plane that is closest to the surface's
// origin. `across` and `up` are perpendicular unit vectors: `across` is horizontal and points from the first
// seed towards the other two, and `up` points upwards. In a horizontal plane they point east and north.
struct Frame {
  Point origin;
  Point across;
  Point up;
  bool is_horizontal;
};

struct Section {
  Frame frame;
  std::vector<Point> outline;  // the corners of the plane within the surface's box, unordered, some twice
  std::vector<Polyline> polylines;
  double length;  // of all polylines
};

// Three points that define the plane.
using Seeds = std::array<Point, 3>;

// True if the points define a plane. False if they are on one line.
bool is_plane_defined_by(const Seeds& seeds);

// A millionth of the diagonal of the surface's box, in the unit of the file.
double default_tolerance(const TriangleSurface& surface);

// Returns a section without polylines when the plane crosses no face, or when joining leaves no segment.
Section cut_surface(const TriangleSurface& surface, Seeds seeds, double tolerance, Progress& progress);

}  // namespace orx::cli
