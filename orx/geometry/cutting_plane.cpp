#include <orx/geometry/cutting_plane.h>

#include <orx/geometry/any_null.h>
#include <orx/platform/kept_errno.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace {

using orx::geometry::any_null;

constexpr double kTolerance = CUTPLANE_TOLERANCE;

// The corners that each edge of a box leads from and to.
constexpr int kEdges[12][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                               {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};

// The axes that play x, y and z when the corners are numbered.
using Roles = int[3];
constexpr Roles kFacesAcrossX = {0, 1, 2};
constexpr Roles kFacesAcrossY = {1, 0, 2};

double value_at(const double (&plane)[4], double x, double y, double z) {
  return plane[0] * x + plane[1] * y + plane[2] * z + plane[3];
}

// How far below the plane the segment starts, and how much it rises towards it along its direction; both in
// lengths of the plane's normal. The sum begins with D here.
double depth_of(const cutplane& cut) {
  const double(&plane)[4] = cut.plane;
  return -(plane[3] + plane[0] * cut.seg_x[0] + plane[1] * cut.seg_y[0] + plane[2] * cut.seg_z[0]);
}

double rise_of(const cutplane& cut) {
  const double(&plane)[4] = cut.plane;
  return plane[0] * cut.seg_dir[0] + plane[1] * cut.seg_dir[1] + plane[2] * cut.seg_dir[2];
}

enum class Place { kNowhere, kStart, kBetween, kEnd };

struct Meeting {
  Place place;
  double t;
};

// Where the segment meets the plane. A rise that is not a number is none.
Meeting meeting_of(const cutplane& cut) {
  const double depth = depth_of(cut);
  const double rise = rise_of(cut);
  if (!(std::fabs(rise) > kTolerance)) {
    return {std::fabs(depth) <= kTolerance ? Place::kStart : Place::kNowhere, 0.0};
  }
  const double t = depth / rise;
  if (std::fabs(t) <= kTolerance) return {Place::kStart, 0.0};
  if (std::fabs(t - cut.seg_len) <= kTolerance) return {Place::kEnd, cut.seg_len};
  if (t + kTolerance >= 0.0 && cut.seg_len >= t - kTolerance) return {Place::kBetween, t};
  return {Place::kNowhere, 0.0};
}

// Calls found(x, y, z) for each edge of the box that meets the plane.
template <class Found>
void cut_edges(cutplane* cut, const bbox& box, const Roles& roles, Found found) {
  bbox turned;
  for (int i = 0; i < 3; ++i) {
    turned.min[i] = box.min[roles[i]];
    turned.max[i] = box.max[roles[i]];
  }
  double corners[3][8];
  bbox_get_corner_points(&turned, corners[roles[0]], corners[roles[1]], corners[roles[2]]);
  const auto& [xs, ys, zs] = corners;
  for (const auto& [from, to] : kEdges) {
    cutplane_seed_line_segment(cut, xs[from], ys[from], zs[from], xs[to], ys[to], zs[to]);
    double x, y, z;
    if (cutplane_intersect_segment(cut, &x, &y, &z) == 1) found(x, y, z);
  }
}

}  // namespace

cutplane* cutplane_new() {
  const orx::platform::KeptErrno kept;
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
  std::copy_n(std::begin({x1, x2, x3}), 3, cut->seed_x);
  std::copy_n(std::begin({y1, y2, y3}), 3, cut->seed_y);
  std::copy_n(std::begin({z1, z2, z3}), 3, cut->seed_z);
  std::copy_n(std::begin({a, b, c, d}), 4, cut->plane);
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
  const double rise = rise_of(*cut);
  if (!(std::fabs(rise) > kTolerance)) {
    cut->last_t = 0.0;
    return 0;
  }
  cut->last_t = depth_of(*cut) / rise;
  return cutplane_get_last_t_xyz(cut, &cut->last_t, x, y, z) + 1;
}

int cutplane_intersect_segment(cutplane* cut, double* x, double* y, double* z) {
  if (any_null(cut, x, y, z)) return 0;
  const Meeting meeting = meeting_of(*cut);
  cut->last_t = meeting.t;
  switch (meeting.place) {
    case Place::kNowhere:
      return 0;
    case Place::kStart:
    case Place::kEnd: {
      const int end = meeting.place == Place::kEnd ? 1 : 0;
      *x = cut->seg_x[end];
      *y = cut->seg_y[end];
      *z = cut->seg_z[end];
      return 1;
    }
    case Place::kBetween:
      *x = cut->seg_x[0] + meeting.t * cut->seg_dir[0];
      *y = cut->seg_y[0] + meeting.t * cut->seg_dir[1];
      *z = cut->seg_z[0] + meeting.t * cut->seg_dir[2];
  }
  return 1;
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
  double xs[8], ys[8], zs[8];
  bbox_get_corner_points(box, xs, ys, zs);
  int below = 0;
  for (int k = 0; k < 8; ++k) below += std::signbit(value_at(cut->plane, xs[k], ys[k], zs[k])) ? 1 : 0;
  return below % 8 == 0 ? 0 : 1;
}

int cutplane_set_plane_bbox(cutplane* cut, const bbox* box) {
  if (any_null(cut, box)) return 1;
  const bbox whole = *box;
  int count = 0;
  bbox_init(&cut->plane_bbox);
  cut_edges(cut, whole, kFacesAcrossY, [&](double x, double y, double z) {
    bbox_update_from_xyz(&cut->plane_bbox, x, y, z);
    ++count;
  });
  return count > 0 ? 0 : 1;
}

int cutplane_intersect_bbox_lines(cutplane* cut, const bbox* box, double* xs, double* ys, double* zs) {
  if (any_null(cut, box, xs, ys, zs)) return 0;
  int count = 0;
  cut_edges(cut, *box, kFacesAcrossX, [&](double x, double y, double z) {
    xs[count] = x;
    ys[count] = y;
    zs[count] = z;
    ++count;
  });
  return count;
}

void cutplane_copy(cutplane* to, const cutplane* from) { *to = *from; }

int cutplane_free(cutplane* cut) {
  delete cut;
  return 0;
}
