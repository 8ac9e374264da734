// The corners of a box and their numbers. Internal to the library.
//
// Corners 0 to 3 go round the face at the lower end of one axis, corners 4 to 7 round the opposite face.
#pragma once

#include <orx/geometry/bounding_box.h>

namespace orx::geometry {

struct Point {
  double x, y, z;
};

// The axis across the two faces, followed by the two axes along them.
using Roles = int[3];
inline constexpr Roles kFacesAcrossX = {0, 1, 2};
inline constexpr Roles kFacesAcrossY = {1, 0, 2};

inline constexpr int kCornerCount = 8;

// For each corner, whether it is at the upper end of the axis with each role.
inline constexpr bool kIsUpper[kCornerCount][3] = {
    {false, false, false}, {false, false, true}, {false, true, true}, {false, true, false},
    {true, false, false},  {true, false, true},  {true, true, true},  {true, true, false}};

inline Point corner(const bbox& box, int k, const Roles& roles) {
  double at[3];
  for (int i = 0; i < 3; ++i) {
    const int axis = roles[i];
    at[axis] = kIsUpper[k][i] ? box.max[axis] : box.min[axis];
  }
  return {at[0], at[1], at[2]};
}

}  // namespace orx::geometry
