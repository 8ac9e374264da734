#include <orx/geometry/bounding_box.h>

#include <orx/base/errno_guard.h>
#include <orx/geometry/any_null.h>
#include <orx/geometry/box_corners.h>

#include <new>

namespace {

using orx::geometry::any_null;

// Numbers of axes.
constexpr int kInPlan = 2;
constexpr int kInSpace = 3;

constexpr bbox kEmpty = {{BBOX_EMPTY_MIN, BBOX_EMPTY_MIN, BBOX_EMPTY_MIN},
                         {BBOX_EMPTY_MAX, BBOX_EMPTY_MAX, BBOX_EMPTY_MAX}};

// Compares on all axes without a branch. Most pairs are apart on some axis, but not on a predictable one, so
// branches that skip comparisons would cost more than the comparisons.
template <int axes>
int overlap(const double* min_a, const double* max_a, const double* min_b, const double* max_b) {
  bool apart = false;
  for (int i = 0; i < axes; ++i) apart |= (min_a[i] > max_b[i]) | (min_b[i] > max_a[i]);
  return apart ? 0 : 1;
}

template <int axes>
int boxes_overlap(const bbox* a, const bbox* b) {
  if (any_null(a, b)) return 0;
  return overlap<axes>(a->min, a->max, b->min, b->max);
}

template <int axes>
int box_contains(const bbox* box, const double* point) {
  if (any_null(box, point)) return 0;
  return overlap<axes>(box->min, box->max, point, point);
}

}  // namespace

bbox* bbox_new() {
  const orx::ErrnoGuard errno_guard;
  return new (std::nothrow) bbox(kEmpty);
}

int bbox_init(bbox* box) {
  if (box != nullptr) *box = kEmpty;
  return 0;
}

int bbox_update(bbox* box, const double* point) {
  return box == nullptr ? 0 : bbox_update_from_xyz(box, point[0], point[1], point[2]);
}

int bbox_update_from_xyz(bbox* box, double x, double y, double z) {
  if (box == nullptr) return 0;
  const double point[] = {x, y, z};
  // Neither a NaN nor a zero of the other sign changes the box, because no comparison with it is true.
  for (int i = 0; i < 3; ++i) {
    box->min[i] = box->min[i] > point[i] ? point[i] : box->min[i];
    box->max[i] = point[i] > box->max[i] ? point[i] : box->max[i];
  }
  return 0;
}

int bbox_update_from_bbox(bbox* box, const bbox* other) {
  if (any_null(box, other)) return 0;
  bbox_update(box, other->min);
  return bbox_update(box, other->max);
}

int bbox_expand(bbox* box, double distance) {
  if (box == nullptr) return 0;
  for (double& low : box->min) low -= distance;
  for (double& high : box->max) high += distance;
  return 0;
}

int bbox_percent_expand(bbox* box, double percent) {
  if (box == nullptr) return 0;
  const double share = percent / 100.0;
  for (int i = 0; i < 3; ++i) {
    const double extent = box->max[i] - box->min[i];
    box->max[i] += extent * share;
    box->min[i] -= extent * share;
  }
  return 0;
}

int bbox_get_min_max(const bbox* box, double* min_x, double* min_y, double* min_z, double* max_x,
                     double* max_y, double* max_z) {
  if (any_null(box, min_x, min_y, min_z, max_x, max_y, max_z)) return -1;
  double* const outputs[] = {min_x, min_y, min_z, max_x, max_y, max_z};
  const bbox copy = *box;  // the outputs may be fields of the box
  for (int i = 0; i < 3; ++i) {
    *outputs[i] = copy.min[i];
    *outputs[i + 3] = copy.max[i];
  }
  return 0;
}

int bbox_get_corner_points(const bbox* box, double* xs, double* ys, double* zs) {
  if (any_null(box, xs, ys, zs)) return -1;
  const bbox copy = *box;  // the arrays may overlap the box
  for (int k = 0; k < orx::geometry::kCornerCount; ++k) {
    const orx::geometry::Point corner = orx::geometry::corner(copy, k, orx::geometry::kFacesAcrossX);
    xs[k] = corner.x;
    ys[k] = corner.y;
    zs[k] = corner.z;
  }
  return 0;
}

int bboxes_intersect(const bbox* a, const bbox* b) { return boxes_overlap<kInSpace>(a, b); }
int bboxes_intersect_2d(const bbox* a, const bbox* b) { return boxes_overlap<kInPlan>(a, b); }
int bbox_pnt_intersect(const bbox* box, const double* point) { return box_contains<kInSpace>(box, point); }
int bbox_xy_pnt_intersect(const bbox* box, const double* point) { return box_contains<kInPlan>(box, point); }

int bbox_free(bbox* box) {
  delete box;
  return 0;
}
