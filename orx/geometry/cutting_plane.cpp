#include <orx/geometry/cutting_plane.h>

#include <orx/base/errno_guard.h>
#include <orx/geometry/any_null.h>
#include <orx/geometry/box_corners.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <new>

namespace {

using orx::geometry::any_null;

constexpr double kTolerance = CUTPLANE_TOLERANCE;

constexpr int kEdgeCount = 12;

// Each edge of a box: the corners where it begins and ends, and its direction. Directions are numbered as
// twice the role of the axis that the edge is parallel to, plus one if the edge leads down.
constexpr struct {
  int from, to, direction;
} kEdges[kEdgeCount] = {{0, 1, 4}, {1, 2, 2}, {2, 3, 5}, {3, 0, 3}, {4, 5, 4}, {5, 6, 2},
                        {6, 7, 5}, {7, 4, 3}, {0, 4, 0}, {1, 5, 0}, {2, 6, 0}, {3, 7, 0}};
constexpr int kDirectionCount = 6;

using orx::geometry::kCornerCount;
using orx::geometry::kFacesAcrossX;
using orx::geometry::kFacesAcrossY;
using orx::geometry::Point;
using orx::geometry::Roles;

// The length of a segment and its direction, a vector of length 1.
struct Extent {
  double length;
  Point direction;
};

using Coefficients = double[4];

// A*x + B*y + C*z + D, which is 0 on the plane and positive on the side of its normal.
double value_at(const Coefficients& plane, double x, double y, double z) {
  return plane[0] * x + plane[1] * y + plane[2] * z + plane[3];
}

// The dividend and the divisor of an intersection: how far the start of a segment is below the plane, and by
// how much the segment rises per unit of its length. Both are multiplied by the length of the plane's normal.
// The sums have a fixed order so that all systems compute the same bits; the first one begins with D.
double depth_of(const Coefficients& plane, const Point& start) {
  return -(plane[3] + plane[0] * start.x + plane[1] * start.y + plane[2] * start.z);
}

double slope_of(const Coefficients& plane, const Point& direction) {
  return plane[0] * direction.x + plane[1] * direction.y + plane[2] * direction.z;
}

// Where a segment meets the plane. Without a hit, t is 0 and the point is undefined.
struct Hit {
  bool is_hit;
  double t;
  double x, y, z;  // not a Point: the copy of a Point waits for its last coordinate
};

// A NaN slope counts as parallel. Hits are unpredictable, so the common case is branch-free: it computes the
// point in any case and clears t with a mask. The cases behind the branch are rare.
inline Hit intersect(const Point& start, const Point& end, const Extent& extent, double depth, double slope) {
  const double t = depth / slope;
  const bool is_parallel = !(std::fabs(slope) > kTolerance);
  const bool is_start = std::fabs(t) <= kTolerance;
  const bool is_end = std::fabs(t - extent.length) <= kTolerance;
  if (is_parallel | is_start | is_end) {
    const bool is_in_plane = std::fabs(depth) <= kTolerance;
    if (is_parallel) return {is_in_plane, 0.0, start.x, start.y, start.z};
    if (is_start) return {true, 0.0, start.x, start.y, start.z};
    return {true, extent.length, end.x, end.y, end.z};
  }
  const bool is_hit = (t + kTolerance >= 0.0) & (extent.length >= t - kTolerance);
  const std::uint64_t mask = std::uint64_t{0} - static_cast<std::uint64_t>(is_hit);
  const auto masked_t = std::bit_cast<double>(std::bit_cast<std::uint64_t>(t) & mask);
  return {is_hit, masked_t, start.x + t * extent.direction.x, start.y + t * extent.direction.y,
          start.z + t * extent.direction.z};
}

// The extent of edges that are parallel to an axis, with the bits that cutplane_seed_line_segment computes
// for them: `step` along the axis and 0 along the others, or not a number if a length of 0 gives no finite
// step.
Extent extent_along(int axis, double length, double step) {
  const double rest = step - step;
  Extent extent{length, {rest, rest, rest}};
  if (axis == 0) extent.direction.x = step;
  if (axis == 1) extent.direction.y = step;
  if (axis == 2) extent.direction.z = step;
  return extent;
}

// The points where the plane meets the edges of a box. Each edge writes its point before it is known to be a
// hit.
struct Section {
  int count;
  double xs[kEdgeCount], ys[kEdgeCount], zs[kEdgeCount];
};

// Intersects the plane with all edges of the box. Edges share their starts and directions, whose depths and
// slopes are computed once, but the result has the same bits as twelve separate segments. This also holds for
// coordinates that are infinite or not a number: separate segments would have no direction there, shared ones
// have no depth, and in both cases nothing is hit. As hosts expect, the last edge becomes the segment of the
// record, and last_t its result.
template <const Roles& roles>
Section section_of(cutplane* cut, const bbox& box) {
  Point corners[kCornerCount];
  double depths[kCornerCount];
  for (int k = 0; k < kCornerCount; ++k) {
    corners[k] = orx::geometry::corner(box, k, roles);
    depths[k] = depth_of(cut->plane, corners[k]);
  }
  Extent extents[kDirectionCount];
  double slopes[kDirectionCount];
  for (int i = 0; i < 3; ++i) {
    const double size = box.max[roles[i]] - box.min[roles[i]];
    const double length = std::sqrt(size * size);
    const double step = size / length;
    const int up = 2 * i;
    const int down = up + 1;
    extents[up] = extent_along(roles[i], length, step);
    extents[down] = extent_along(roles[i], length, -step);
    slopes[up] = slope_of(cut->plane, extents[up].direction);
    slopes[down] = slope_of(cut->plane, extents[down].direction);
  }
  Section section;
  int count = 0;
  double t = 0.0;
  for (const auto& [from, to, direction] : kEdges) {
    const Hit hit =
        intersect(corners[from], corners[to], extents[direction], depths[from], slopes[direction]);
    // Every edge writes its point, and only a hit advances the count: no branch.
    section.xs[count] = hit.x;
    section.ys[count] = hit.y;
    section.zs[count] = hit.z;
    count += hit.is_hit ? 1 : 0;
    t = hit.t;
  }
  section.count = count;
  const Point& from = corners[kEdges[kEdgeCount - 1].from];
  const Point& to = corners[kEdges[kEdgeCount - 1].to];
  cutplane_seed_line_segment(cut, from.x, from.y, from.z, to.x, to.y, to.z);
  cut->last_t = t;
  return section;
}

Extent extent_of(const cutplane& cut) {
  return {cut.seg_len, {cut.seg_dir[0], cut.seg_dir[1], cut.seg_dir[2]}};
}

// The start (0) or the end (1) of the record's segment.
Point end_of(const cutplane& cut, int end) { return {cut.seg_x[end], cut.seg_y[end], cut.seg_z[end]}; }

// Stores the value without a branch: an unwanted value goes into a local variable.
void store_if(bool is_wanted, double value, double* target) {
  double discarded;
  double* const targets[] = {&discarded, target};
  *targets[is_wanted ? 1 : 0] = value;
}

}  // namespace

cutplane* cutplane_new() {
  const orx::ErrnoGuard errno_guard;
  return new (std::nothrow) cutplane{};
}

int cutplane_init(cutplane* cut) {
  if (cut != nullptr) *cut = {};
  return 0;
}

cutplane* cutplane_seed_plane(cutplane* cut, double x1, double y1, double z1, double x2, double y2, double z2,
                              double x3, double y3, double z3) {
  if (cut == nullptr) return nullptr;
  const double a = (y2 - y1) * (z3 - z1) - (z2 - z1) * (y3 - y1);
  const double b = (z2 - z1) * (x3 - x1) - (x2 - x1) * (z3 - z1);
  const double c = (x2 - x1) * (y3 - y1) - (y2 - y1) * (x3 - x1);
  const double d = -(a * x1) - b * y1 - c * z1;
  const double seeds[3][3] = {{x1, y1, z1}, {x2, y2, z2}, {x3, y3, z3}};
  for (int i = 0; i < 3; ++i) {
    cut->seed_x[i] = seeds[i][0];
    cut->seed_y[i] = seeds[i][1];
    cut->seed_z[i] = seeds[i][2];
  }
  cut->plane[0] = a;
  cut->plane[1] = b;
  cut->plane[2] = c;
  cut->plane[3] = d;
  cut->normal_len = std::sqrt(a * a + b * b + c * c);
  return cut;
}

int cutplane_normalize(cutplane* cut) {
  if (cut == nullptr || cut->normal_len == 0.0) return 1;
  for (double& coefficient : cut->plane) coefficient /= cut->normal_len;
  cut->normal_len = 1.0;
  return 0;
}

int cutplane_seed_line_segment(cutplane* cut, double x1, double y1, double z1, double x2, double y2,
                               double z2) {
  if (cut == nullptr) return -1;
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  const double dz = z2 - z1;
  const double length = std::sqrt(dx * dx + dy * dy + dz * dz);
  cut->seg_x[0] = x1;
  cut->seg_x[1] = x2;
  cut->seg_y[0] = y1;
  cut->seg_y[1] = y2;
  cut->seg_z[0] = z1;
  cut->seg_z[1] = z2;
  cut->seg_vec[0] = dx;
  cut->seg_vec[1] = dy;
  cut->seg_vec[2] = dz;
  cut->seg_len = length;
  cut->seg_dir[0] = dx / length;
  cut->seg_dir[1] = dy / length;
  cut->seg_dir[2] = dz / length;
  return 0;
}

int cutplane_get_plane_points(const cutplane* cut, double* x1, double* y1, double* z1, double* x2, double* y2,
                              double* z2, double* x3, double* y3, double* z3) {
  if (any_null(cut, x1, y1, z1, x2, y2, z2, x3, y3, z3)) return 1;
  double* const outputs[3][3] = {{x1, y1, z1}, {x2, y2, z2}, {x3, y3, z3}};
  for (int i = 0; i < 3; ++i) {
    *outputs[i][0] = cut->seed_x[i];
    *outputs[i][1] = cut->seed_y[i];
    *outputs[i][2] = cut->seed_z[i];
  }
  return 0;
}

double cutplane_distance_to_point(const cutplane* cut, double x, double y, double z) {
  return cut == nullptr ? 0.0 : value_at(cut->plane, x, y, z) / cut->normal_len;
}

int cutplane_intersect_line(cutplane* cut, double* x, double* y, double* z) {
  if (any_null(cut, x, y, z)) return 0;
  const double slope = slope_of(cut->plane, extent_of(*cut).direction);
  const bool is_hit = std::fabs(slope) > kTolerance;
  cut->last_t = 0.0;
  if (!is_hit) return 0;
  cut->last_t = depth_of(cut->plane, end_of(*cut, 0)) / slope;
  double t;
  cutplane_get_last_t_xyz(cut, &t, x, y, z);
  return 1;
}

int cutplane_intersect_segment(cutplane* cut, double* x, double* y, double* z) {
  if (any_null(cut, x, y, z)) return 0;
  const Point start = end_of(*cut, 0);
  const Point end = end_of(*cut, 1);
  const Extent extent = extent_of(*cut);
  const double depth = depth_of(cut->plane, start);
  const double slope = slope_of(cut->plane, extent.direction);
  const Hit hit = intersect(start, end, extent, depth, slope);
  cut->last_t = hit.t;
  store_if(hit.is_hit, hit.x, x);
  store_if(hit.is_hit, hit.y, y);
  store_if(hit.is_hit, hit.z, z);
  return hit.is_hit ? 1 : 0;
}

int cutplane_get_last_t_xyz(const cutplane* cut, double* t, double* x, double* y, double* z) {
  if (any_null(cut, t, x, y, z)) return -1;
  *t = cut->last_t;
  *x = cut->seg_x[0] + cut->last_t * cut->seg_dir[0];
  *y = cut->seg_y[0] + cut->last_t * cut->seg_dir[1];
  *z = cut->seg_z[0] + cut->last_t * cut->seg_dir[2];
  return 0;
}

int cutplane_intersects_bbox(const cutplane* cut, const bbox* box) {
  if (any_null(cut, box)) return 0;
  // Without a normal all corners are on one side. The signs of the zeros would say otherwise.
  if (cut->plane[0] == 0.0 && cut->plane[1] == 0.0 && cut->plane[2] == 0.0) return 0;
  double xs[kCornerCount], ys[kCornerCount], zs[kCornerCount];
  bbox_get_corner_points(box, xs, ys, zs);
  int count_below = 0;
  for (int k = 0; k < kCornerCount; ++k) {
    const double value = value_at(cut->plane, xs[k], ys[k], zs[k]);
    count_below += std::signbit(value) ? 1 : 0;
  }
  const bool is_on_one_side = count_below == 0 || count_below == kCornerCount;
  return is_on_one_side ? 0 : 1;
}

int cutplane_set_plane_bbox(cutplane* cut, const bbox* box) {
  if (any_null(cut, box)) return 1;
  const Section section = section_of<kFacesAcrossY>(cut, *box);
  bbox_init(&cut->plane_bbox);
  for (int i = 0; i < section.count; ++i) {
    bbox_update_from_xyz(&cut->plane_bbox, section.xs[i], section.ys[i], section.zs[i]);
  }
  return section.count > 0 ? 0 : 1;
}

int cutplane_intersect_bbox_lines(cutplane* cut, const bbox* box, double* xs, double* ys, double* zs) {
  if (any_null(cut, box, xs, ys, zs)) return 0;
  const Section section = section_of<kFacesAcrossX>(cut, *box);
  std::copy_n(section.xs, section.count, xs);
  std::copy_n(section.ys, section.count, ys);
  std::copy_n(section.zs, section.count, zs);
  return section.count;
}

void cutplane_copy(cutplane* to, const cutplane* from) { *to = *from; }

int cutplane_free(cutplane* cut) {
  delete cut;
  return 0;
}
