// bbox: an axis-aligned box in three dimensions.
//
// A box starts empty, grows to enclose points and other boxes, and is tested against a box or a point, in
// space or in plan (x and y only). It is closed: a box or point that only touches it intersects it. There is
// no tolerance; expand a box to get one. All comparisons are strict, so a coordinate that is not a number
// never makes a box grow and never separates two boxes.
//
// The empty box has its lower corner above its upper corner, at the two values below, and is not treated
// specially. It intersects nothing between these values, and a box that is updated from it grows to them.
//
// A point is an array of three doubles x, y, z. All lengths are in the caller's unit. With a null box a
// function does nothing and returns 0, unless stated otherwise. A box may be the caller's own, prepared by
// bbox_init, or come from bbox_new. errno is unchanged. Different threads may use different boxes.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

// The coordinates of the two corners of an empty box.
#define BBOX_EMPTY_MIN 1.0E15
#define BBOX_EMPTY_MAX (-1.0E15)

typedef struct bbox {
  double min[3];  // the lower corner: x, y, z
  double max[3];  // the upper corner: x, y, z
} bbox;

ORX_C_BEGIN

// Creates an empty box, or returns null when memory runs out. The caller releases it with bbox_free.
ORX_API bbox* bbox_new(void);

// Makes the box empty. Always returns 0.
ORX_API int bbox_init(bbox* box);

// Enlarge the box to enclose a point. `point` must not be null. Always return 0.
ORX_API int bbox_update(bbox* box, const double* point);
ORX_API int bbox_update_from_xyz(bbox* box, double x, double y, double z);

// Enlarges the box to enclose both corners of `other`, which may be null. Always returns 0.
ORX_API int bbox_update_from_bbox(bbox* box, const bbox* other);

// Moves every face outwards by `distance`, or inwards if it is negative. Always returns 0.
ORX_API int bbox_expand(bbox* box, double distance);

// Moves every face outwards by a percentage of the extent on its axis: 50 doubles the extent. Always returns
// 0.
ORX_API int bbox_percent_expand(bbox* box, double percent);

// Gets the coordinates of both corners. Returns 0, or -1 if any pointer is null; nothing is written then.
ORX_API int bbox_get_min_max(const bbox* box, double* min_x, double* min_y, double* min_z, double* max_x,
                             double* max_y, double* max_z);

// Gets the eight corners; each array has 8 elements. Corners 0 to 3 are those of the face at the lower x,
// corners 4 to 7 those of the face at the upper x. In each face their (y, z) are (lower, lower), (lower,
// upper), (upper, upper), (upper, lower). Returns 0, or -1 if any pointer is null; nothing is written then.
ORX_API int bbox_get_corner_points(const bbox* box, double* xs, double* ys, double* zs);

// Return 1 if the two boxes have a point in common, and 0 if they do not or one is null. The second function
// ignores z.
ORX_API int bboxes_intersect(const bbox* a, const bbox* b);
ORX_API int bboxes_intersect_2d(const bbox* a, const bbox* b);

// Return 1 if the point is in the box, and 0 if it is not or a pointer is null. The second function reads
// only x and y.
ORX_API int bbox_pnt_intersect(const bbox* box, const double* point);
ORX_API int bbox_xy_pnt_intersect(const bbox* box, const double* point);

// Releases the box. Null is allowed. Always returns 0.
ORX_API int bbox_free(bbox* box);

ORX_C_END

#if defined(__cplusplus)
static_assert(sizeof(bbox) == 6 * sizeof(double) && offsetof(bbox, max) == 3 * sizeof(double));
#endif
