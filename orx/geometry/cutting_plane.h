// cutplane: a plane and a line segment, and where the two meet.
//
// The plane is seeded from three points, the segment from two, in any order; seeding one keeps the other. The
// functions return the distance of a point from the plane, where the segment or its whole line meets the
// plane, and how the plane cuts a bounding box. The functions that cut a box seed the record's segment with
// each edge of the box, and leave the last edge and its `last_t` there.
//
// Lengths, including `last_t`, are in the caller's unit. Every product and every sum is rounded separately
// and in a fixed order, so all systems compute the same bits. Collinear seed points give a plane with the
// coefficients 0: every segment lies in it, no line crosses it, and distances from it are infinite or not a
// number. A segment of length 0 has no direction and counts as parallel to every plane.
//
// A record may be the caller's own, prepared by cutplane_init, or come from cutplane_new. Each function says
// what it returns for a null pointer; it then writes nothing. errno is unchanged. Different threads may use
// different records.
//
//   cutplane_new -> cutplane_seed_plane -> cutplane_set_plane_bbox, cutplane_intersect_bbox_lines, ...
//                                       -> cutplane_seed_line_segment -> cutplane_intersect_segment, ...
#pragma once

#include <orx/compat/export.h>
#include <orx/geometry/bounding_box.h>

#include <stddef.h>

// A segment is parallel to the plane if A*x + B*y + C*z of its direction is at most this far from 0, and a
// parallel segment is in the plane if A*x + B*y + C*z + D of its start is at most this far from 0. An
// intersection at most this far from an end of the segment is that end.
#define CUTPLANE_TOLERANCE 1.0E-8

typedef struct cutplane {
  double seg_x[2];     // x of the segment's start and end
  double seg_y[2];     // y of the segment's start and end
  double seg_z[2];     // z of the segment's start and end
  double seed_x[3];    // x of the plane's three seed points
  double seed_y[3];    // y of the plane's three seed points
  double seed_z[3];    // z of the plane's three seed points
  double seg_vec[3];   // the segment's end minus its start
  double seg_len;      // the length of seg_vec
  double seg_dir[3];   // seg_vec divided by seg_len; not a number if the length is 0
  double plane[4];     // A, B, C, D of A*x + B*y + C*z + D = 0
  double last_t;       // distance of the last intersection from the start along seg_dir; 0 without one
  bbox plane_bbox;     // around the cut through the last box given to cutplane_set_plane_bbox
  double reserved[6];  // 0; never read or written
  double normal_len;   // the length of (A, B, C)
} cutplane;

ORX_C_BEGIN

// Creates a record of zeros, or returns null when memory runs out. The caller releases it with cutplane_free.
ORX_API cutplane* cutplane_new(void);

// Sets every field to 0. Null is allowed. Always returns 0.
ORX_API int cutplane_init(cutplane* cut);

// Sets the plane through three points. (A, B, C) points to the side from which the points are seen
// counterclockwise, and has the length of the cross product. Returns the record, or null for a null record.
ORX_API cutplane* cutplane_seed_plane(cutplane* cut, double x1, double y1, double z1, double x2, double y2,
                                      double z2, double x3, double y3, double z3);

// Divides the coefficients so that (A, B, C) has length 1. Returns 0, or 1 if the length is 0 or the record
// is null; the plane is then unchanged.
ORX_API int cutplane_normalize(cutplane* cut);

// Sets the segment from its start and its end. Returns 0, or -1 for a null record.
ORX_API int cutplane_seed_line_segment(cutplane* cut, double x1, double y1, double z1, double x2, double y2,
                                       double z2);

// Gets the seed points. Returns 0, or 1 if any pointer is null.
ORX_API int cutplane_get_plane_points(const cutplane* cut, double* x1, double* y1, double* z1, double* x2,
                                      double* y2, double* z2, double* x3, double* y3, double* z3);

// Returns the distance of the point from the plane, positive on the side that (A, B, C) points to. A null
// record gives 0.
ORX_API double cutplane_distance_to_point(const cutplane* cut, double x, double y, double z);

// Intersects the unbounded line through the segment with the plane. Returns 1 and stores the point; or
// returns 0 and stores nothing, if they are parallel or any pointer is null. Sets `last_t` unless a pointer
// is null.
ORX_API int cutplane_intersect_line(cutplane* cut, double* x, double* y, double* z);

// Intersects the segment with the plane, with the results of cutplane_intersect_line. An intersection within
// the tolerance of an end is exactly that end. A segment in the plane gives its start.
ORX_API int cutplane_intersect_segment(cutplane* cut, double* x, double* y, double* z);

// Gets `last_t` and the point start + last_t * seg_dir. Returns 0, or -1 if any pointer is null.
ORX_API int cutplane_get_last_t_xyz(const cutplane* cut, double* t, double* x, double* y, double* z);

// Returns 1 if the box has corners on both sides of the plane, and 0 if it does not or a pointer is null. For
// a corner on the plane the sign of its zero decides: +0 counts as positive, -0 as negative.
ORX_API int cutplane_intersects_bbox(const cutplane* cut, const bbox* box);

// Sets `plane_bbox` to the box around all points where the plane meets the edges of `box`, which may be the
// record's own `plane_bbox`. Returns 0; or 1 if there are no such points, and `plane_bbox` is empty, or if a
// pointer is null.
ORX_API int cutplane_set_plane_bbox(cutplane* cut, const bbox* box);

// Stores the points where the plane meets the edges of the box, and returns their number. Each array has 12
// elements. A corner on the plane is stored once for each of its three edges, and an edge in the plane gives
// its start. With the corners of bbox_get_corner_points, the edges are 0-1, 1-2, 2-3, 3-0, 4-5, 5-6, 6-7,
// 7-4, 0-4, 1-5, 2-6, 3-7. Returns 0 if any pointer is null.
ORX_API int cutplane_intersect_bbox_lines(cutplane* cut, const bbox* box, double* xs, double* ys, double* zs);

// Copies all fields. Neither pointer may be null.
ORX_API void cutplane_copy(cutplane* to, const cutplane* from);

// Releases the record. Null is allowed. Always returns 0.
ORX_API int cutplane_free(cutplane* cut);

ORX_C_END

#if defined(__cplusplus)
// The offset of each field, as the number of doubles before it.
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
