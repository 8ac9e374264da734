// cutplane: a plane, with one line segment and what the two have in common.
//
// The plane is seeded from three points and the segment from two, in any order; reseeding one keeps the
// other. Then the record tells how far a point is from the plane, where the segment or its whole line meets
// it, and how it cuts a bounding box. The two functions that cut a box work on its edges one by one in the
// record's own segment, and leave the last edge there with its result.
//
// Lengths, and with them `last_t`, are in the caller's units. Each product and each sum is rounded by itself
// and in a fixed order, so that every system comes to the same bits. Collinear seed points give a plane whose
// coefficients are all 0: every segment lies in it, no line crosses it, and distances from it are infinite or
// not a number. A segment of length 0 has no direction; it is taken for parallel.
//
// A record may be the caller's own, cleared by cutplane_init, or come from cutplane_new. What a null argument
// gives, each function says; nothing is written then. Different records may be used by different threads.
//
//   cutplane_new -> cutplane_seed_plane -> cutplane_set_plane_bbox, cutplane_intersect_bbox_lines, ...
//                                       -> cutplane_seed_line_segment -> cutplane_intersect_segment, ...
#pragma once

#include <orx/compat/export.h>
#include <orx/geometry/bounding_box.h>

#include <stddef.h>

// How near to 0 the divisor of an intersection counts as parallel, and how near to an end of the segment an
// intersection is that end.
#define CUTPLANE_TOLERANCE 1.0E-8

typedef struct cutplane {
  double seg_x[2];     // x of the segment's start and of its end
  double seg_y[2];     // y
  double seg_z[2];     // z
  double seed_x[3];    // x of the plane's seed points
  double seed_y[3];    // y
  double seed_z[3];    // z
  double seg_vec[3];   // end minus start
  double seg_len;      // length of seg_vec
  double seg_dir[3];   // seg_vec divided by seg_len, each component not a number for length 0
  double plane[4];     // A, B, C, D of A*x + B*y + C*z + D = 0
  double last_t;       // where the last intersection is: distance from the start along seg_dir; 0 for none
  bbox plane_bbox;     // around the cut through the last box given to cutplane_set_plane_bbox
  double reserved[6];  // 0; never read or written
  double normal_len;   // length of (A, B, C)
} cutplane;

ORX_C_BEGIN

// A record of zeros, or null when memory runs out; cutplane_free releases it.
ORX_API cutplane* cutplane_new(void);

// Sets every field to 0. Null is allowed. Always 0.
ORX_API int cutplane_init(cutplane* cut);

// The plane through three points; (A, B, C) points to where they are seen counterclockwise and keeps the
// length of the cross product. Returns the record; null for a null one.
ORX_API cutplane* cutplane_seed_plane(cutplane* cut, double x1, double y1, double z1, double x2, double y2,
                                      double z2, double x3, double y3, double z3);

// Makes (A, B, C) one unit long. 1, and the plane as it was, when its length is 0 or the record null; else 0.
ORX_API int cutplane_normalize(cutplane* cut);

// 0, or -1 for a null record.
ORX_API int cutplane_seed_line_segment(cutplane* cut, double x1, double y1, double z1, double x2, double y2,
                                       double z2);

// The seed points. 0, or 1 when any pointer is null.
ORX_API int cutplane_get_plane_points(const cutplane* cut, double* x1, double* y1, double* z1, double* x2,
                                      double* y2, double* z2, double* x3, double* y3, double* z3);

// Positive where (A, B, C) points to; 0 for a null record.
ORX_API double cutplane_distance_to_point(const cutplane* cut, double x, double y, double z);

// Where the unbounded line through the segment crosses the plane. 1 and the point; 0, with nothing written to
// it, when they are parallel or any pointer is null. Sets `last_t` unless a pointer is null.
ORX_API int cutplane_intersect_line(cutplane* cut, double* x, double* y, double* z);

// Where the segment meets the plane: the exact start or end when it does so within the tolerance of it, and
// the start for a segment that lies in the plane. Results as those of cutplane_intersect_line.
ORX_API int cutplane_intersect_segment(cutplane* cut, double* x, double* y, double* z);

// The last intersection: `last_t` and the point there, start + last_t * seg_dir. 0, or -1 when any pointer is
// null.
ORX_API int cutplane_get_last_t_xyz(const cutplane* cut, double* t, double* x, double* y, double* z);

// 1 when the box has corners on both sides of the plane, else 0, also when either is null. A corner on the
// plane has the side of its zero's sign.
ORX_API int cutplane_intersects_bbox(const cutplane* cut, const bbox* box);

// Sets `plane_bbox` to the box around the points where the plane meets the edges of `box`, which may be the
// `plane_bbox` of before. 0; 1 when there are none, and `plane_bbox` is empty, or when either is null.
ORX_API int cutplane_set_plane_bbox(cutplane* cut, const bbox* box);

// The points where the plane meets the edges of the box, into arrays with room for 12; how many there are. A
// corner on the plane comes once for each of its three edges. With the corners of bbox_get_corner_points, the
// edges are 0-1, 1-2, 2-3, 3-0, 4-5, 5-6, 6-7, 7-4, 0-4, 1-5, 2-6, 3-7. 0 when any pointer is null.
ORX_API int cutplane_intersect_bbox_lines(cutplane* cut, const bbox* box, double* xs, double* ys, double* zs);

// All fields. Neither may be null.
ORX_API void cutplane_copy(cutplane* to, const cutplane* from);

// Null is allowed. Always 0.
ORX_API int cutplane_free(cutplane* cut);

ORX_C_END

#if defined(__cplusplus)
// Each field by the number of doubles before it.
static_assert(
    offsetof(cutplane, seg_y) == 2 * sizeof(double) && offsetof(cutplane, seg_z) == 4 * sizeof(double) &&
    offsetof(cutplane, seed_x) == 6 * sizeof(double) && offsetof(cutplane, seed_y) == 9 * sizeof(double) &&
    offsetof(cutplane, seed_z) == 12 * sizeof(double) && offsetof(cutplane, seg_vec) == 15 * sizeof(double) &&
    offsetof(cutplane, seg_len) == 18 * sizeof(double) &&
    offsetof(cutplane, seg_dir) == 19 * sizeof(double) && offsetof(cutplane, plane) == 22 * sizeof(double) &&
    offsetof(cutplane, last_t) == 26 * sizeof(double) &&
    offsetof(cutplane, plane_bbox) == 27 * sizeof(double) &&
    offsetof(cutplane, reserved) == 33 * sizeof(double) &&
    offsetof(cutplane, normal_len) == 39 * sizeof(double) && sizeof(cutplane) == 40 * sizeof(double));
#endif
