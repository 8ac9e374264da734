// bbox: an axis-aligned box in three dimensions.
//
// A box starts empty, grows to enclose the points and boxes that it is updated with, and is tested against
// another box or a point, in space or in plan (x and y). It is closed: what only touches it intersects. There
// is no tolerance; widen a box to get one. All comparisons are strict, so that a coordinate that is not a
// number never grows a box and never keeps two things apart.
//
// The empty box has its lower corner above its upper one, at the two values below, and nothing treats it
// specially: it intersects nothing between them, and a box that is updated from an empty one takes them over.
//
// A point is three doubles x, y, z in the caller's units. With a null box a function does nothing and returns
// 0, or -1 where it says so. A box may be the caller's own or come from bbox_new. Different boxes may be used
// by different threads.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

#define BBOX_EMPTY_MIN 1.0E15
#define BBOX_EMPTY_MAX (-1.0E15)

typedef struct bbox {
  double min[3];  // the lower corner: x, y, z
  double max[3];  // the upper corner
} bbox;

ORX_C_BEGIN

// An empty box, or null when memory runs out; bbox_free releases it.
ORX_API bbox* bbox_new(void);

// Makes the box empty. Always 0.
ORX_API int bbox_init(bbox* box);

// Grow the box to enclose a point, which must not be null. Always 0.
ORX_API int bbox_update(bbox* box, const double* point);
ORX_API int bbox_update_from_xyz(bbox* box, double x, double y, double z);

// Grows the box to enclose both corners of another. Null is allowed for either. Always 0.
ORX_API int bbox_update_from_bbox(bbox* box, const bbox* other);

// Moves every face outwards, or inwards for a negative distance. Always 0.
ORX_API int bbox_expand(bbox* box, double distance);

// Moves every face outwards by a percentage of the box's extent on that axis: 50 doubles the extent. Always
// 0.
ORX_API int bbox_percent_expand(bbox* box, double percent);

// 0, or -1 when the box or any output is null: nothing is written then.
ORX_API int bbox_get_min_max(const bbox* box, double* min_x, double* min_y, double* min_z, double* max_x,
                             double* max_y, double* max_z);

// The corners, into arrays of 8: the face at the lower x, then that at the upper x, each in the turn (y, z)
// low-low, low-high, high-high, high-low. 0, or -1 when the box or an array is null: nothing is written then.
ORX_API int bbox_get_corner_points(const bbox* box, double* xs, double* ys, double* zs);

// 1 when two boxes have a point in common, else 0, also when either is null. In plan z plays no part.
ORX_API int bboxes_intersect(const bbox* a, const bbox* b);
ORX_API int bboxes_intersect_2d(const bbox* a, const bbox* b);

// 1 when the point lies in the box, else 0, also when either is null. In plan only x and y are read.
ORX_API int bbox_pnt_intersect(const bbox* box, const double* point);
ORX_API int bbox_xy_pnt_intersect(const bbox* box, const double* point);

// Null is allowed. Always 0.
ORX_API int bbox_free(bbox* box);

ORX_C_END

#if defined(__cplusplus)
static_assert(sizeof(bbox) == 6 * sizeof(double) && offsetof(bbox, max) == 3 * sizeof(double));
#endif
