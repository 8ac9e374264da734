// The section of a surface: the lines in which a plane cuts it.
//
// A face that the plane crosses gives the segment between the points on its edges. Neighbours come to the
// same point on the edge that they share, and so their segments join into polylines. A face that the plane
// only touches in a corner gives nothing; nor does one that lies in the plane, whose border its neighbours
// give.
#pragma once

#include <orx/geometry/cutting_plane.h>

#include <array>
#include <vector>

#include "progress.h"
#include "section/polylines.h"
#include "section/triangle_surface.h"

namespace orx::cli {

// Directions in a plane, one unit long, and the point in it that is closest to the surface's origin. `across`
// is horizontal and leads from the first seed of the plane towards its others, `up` rises; in a horizontal
// plane they lead to the east and to the north.
struct Frame {
  Point origin;
  Point across;
  Point up;
  bool is_horizontal;
};

struct Section {
  Frame frame;
  std::vector<Point> outline;  // of the plane in the surface's box: its corners, some twice, in no order
  std::vector<Polyline> polylines;
  double length;  // of all
};

using Seeds = std::array<Point, 3>;

// Whether the points give a plane: not when they lie in a line.
bool are_spread(const Seeds& seeds);

// A millionth of the diagonal of the surface's box.
double usual_tolerance(const TriangleSurface& surface);

// Without polylines when the plane crosses no face, and when nothing of the section is longer than the
// tolerance.
Section cut_surface(const TriangleSurface& surface, Seeds seeds, double tolerance, Progress& progress);

}  // namespace orx::cli
