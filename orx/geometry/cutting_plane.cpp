#include <orx/geometry/cutting_plane.h>

#include <orx/base/errno_guard.h>
#include <orx/geometry/any_null.h>
#include <orx/geometry/box_corners.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <new>

namespace {

using orx::geometry::any_null;

constexpr double kTolerance = CUTPLANE_TOLERANCE;

constexpr int kEdgeCount = 12;

// The edges of a box by the corners that they lead from and to, and by their course: twice the role of the
// axis that they follow, and one more when they follow it down.
constexpr struct {
  int from, to, course;
} kEdges[kEdgeCount] = {{0, 1, 4}, {1, 2, 2}, {2, 3, 5}, {3, 0, 3}, {4, 5, 4}, {5, 6, 2},
                        {6, 7, 5}, {7, 4, 3}, {0, 4, 0}, {1, 5, 0}, {2, 6, 0}, {3, 7, 0}};

using orx::geometry::kFacesAcrossX;
using orx::geometry::kFacesAcrossY;
using orx::geometry::Point;
using orx::geometry::Roles;

struct Course {
  double length;
  Point direction;
};

using Coefficients = double[4];

double value_at(const Coefficients& plane, double x, double y, double z) {
  return plane[0] * x + plane[1] * y + plane[2] * z + plane[3];
}

// How far a segment starts below the plane, and what it gains with each unit of its length, both in lengths
// of the normal. The first sum begins with D.
double depth_of(const Coefficients& plane, const Point& start) {
  return -(plane[3] + plane[0] * start.x + plane[1] * start.y + plane[2] * start.z);
}

double rise_of(const Coefficients& plane, const Point& direction) {
  return plane[0] * direction.x + plane[1] * direction.y + plane[2] * direction.z;
}

// What a segment has in common with the plane. When it is not met, t is 0 and the point means nothing.
struct Meeting {
  bool is_met;
  double t;
  double x, y, z;  // one by one: a point that is copied whole waits for its last coordinate
};

// A rise that is not a number is none. Which segments meet the plane cannot be guessed, so that is no jump;
// what stands behind the jump is rare.
inline Meeting meeting_of(const Point& start, const Point& end, const Course& course, double depth,
                          double rise) {
  const double t = depth / rise;
  const bool is_parallel = !(std::fabs(rise) > kTolerance);
  const bool is_start = std::fabs(t) <= kTolerance;
  const bool is_end = std::fabs(t - course.length) <= kTolerance;
  if (is_parallel | is_start | is_end) {
    const bool is_in_plane = std::fabs(depth) <= kTolerance;
    if (is_parallel || is_start) return {!is_parallel || is_in_plane, 0.0, start.x, start.y, start.z};
    return {true, course.length, end.x, end.y, end.z};
  }
  const bool is_met = (t + kTolerance >= 0.0) & (course.length >= t - kTolerance);
  const std::uint64_t mask = std::uint64_t{0} - static_cast<std::uint64_t>(is_met);
  return {is_met, std::bit_cast<double>(std::bit_cast<std::uint64_t>(t) & mask),
          start.x + t * course.direction.x, start.y + t * course.direction.y,
          start.z + t * course.direction.z};
}

// The course of edges along an axis, with what cutplane_seed_line_segment comes to for them: `step` along
// that axis, and 0 along the others, or not a number where a length of 0 gives no finite step.
Course course_along(int axis, double length, double step) {
  const double none = step - step;
  return {length, {axis == 0 ? step : none, axis == 1 ? step : none, axis == 2 ? step : none}};
}

struct Section {
  int count;
  double xs[kEdgeCount], ys[kEdgeCount], zs[kEdgeCount];
};

// Where the plane meets the edges of the box, by courses and starts that edges share. The bits are those that
// each edge would come to by itself: a coordinate that is infinite or not a number would leave the edges
// there without a direction, but it leaves them without a depth too, and they are not met either way.
template <const Roles& roles>
Section section_of(cutplane* cut, const bbox& box) {
  Point corners[8];
  double depths[std::size(corners)];
  for (int k = 0; k < 8; ++k) {
    corners[k] = orx::geometry::corner(box, k, roles);
    depths[k] = depth_of(cut->plane, corners[k]);
  }
  Course courses[6];
  double rises[std::size(courses)];
  for (int i = 0; i < 3; ++i) {
    const double extent = box.max[roles[i]] - box.min[roles[i]];
    const double length = std::sqrt(extent * extent);
    const double step = extent / length;
    for (const int down : {0, 1}) {
      Course& course = courses[2 * i + down];
      course = course_along(roles[i], length, down == 0 ? step : -step);
      rises[2 * i + down] = rise_of(cut->plane, course.direction);
    }
  }
  Section section;
  int count = 0;
  double t = 0.0;
  for (const auto& [from, to, course] : kEdges) {
    const Meeting meeting =
        meeting_of(corners[from], corners[to], courses[course], depths[from], rises[course]);
    section.xs[count] = meeting.x;
    section.ys[count] = meeting.y;
    section.zs[count] = meeting.z;
    count += meeting.is_met ? 1 : 0;
    t = meeting.t;
  }
  section.count = count;
  const Point& from = corners[kEdges[kEdgeCount - 1].from];
  const Point& to = corners[kEdges[kEdgeCount - 1].to];
  cutplane_seed_line_segment(cut, from.x, from.y, from.z, to.x, to.y, to.z);
  cut->last_t = t;
  return section;
}

Course course_of(const cutplane& cut) {
  return {cut.seg_len, {cut.seg_dir[0], cut.seg_dir[1], cut.seg_dir[2]}};
}

Point end_of(const cutplane& cut, int end) { return {cut.seg_x[end], cut.seg_y[end], cut.seg_z[end]}; }

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
  const double rise = rise_of(cut->plane, course_of(*cut).direction);
  const bool is_met = std::fabs(rise) > kTolerance;
  cut->last_t = is_met ? depth_of(cut->plane, end_of(*cut, 0)) / rise : 0.0;
  if (!is_met) return 0;
  double t;
  cutplane_get_last_t_xyz(cut, &t, x, y, z);
  return 1;
}

int cutplane_intersect_segment(cutplane* cut, double* x, double* y, double* z) {
  if (any_null(cut, x, y, z)) return 0;
  const Point start = end_of(*cut, 0);
  const Course course = course_of(*cut);
  const Meeting meeting = meeting_of(start, end_of(*cut, 1), course, depth_of(cut->plane, start),
                                     rise_of(cut->plane, course.direction));
  cut->last_t = meeting.t;
  double unwanted;
  *std::array{&unwanted, x}[meeting.is_met] = meeting.x;
  *std::array{&unwanted, y}[meeting.is_met] = meeting.y;
  *std::array{&unwanted, z}[meeting.is_met] = meeting.z;
  return meeting.is_met ? 1 : 0;
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
  // Without a normal there is one side only, whatever the signs of the zeros.
  if (cut->plane[0] == 0.0 && cut->plane[1] == 0.0 && cut->plane[2] == 0.0) return 0;
  double xs[8], ys[8], zs[8];
  bbox_get_corner_points(box, xs, ys, zs);
  int below = 0;
  for (int k = 0; k < 8; ++k) below += std::signbit(value_at(cut->plane, xs[k], ys[k], zs[k])) ? 1 : 0;
  return below % 8 == 0 ? 0 : 1;
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
