// How the corners of a box are numbered.
#pragma once

#include <orx/geometry/bounding_box.h>

namespace orx::geometry {

struct Point {
  double x, y, z;
};

// The axes that play x, y and z when the corners are numbered.
using Roles = int[3];
inline constexpr Roles kFacesAcrossX = {0, 1, 2};
inline constexpr Roles kFacesAcrossY = {1, 0, 2};

inline constexpr int kCornerCount = 8;

// Whether a corner is at the upper end of each axis.
inline constexpr bool kIsUpper[kCornerCount][3] = {
    {false, false, false}, {false, false, true}, {false, true, true}, {false, true, false},
    {true, false, false},  {true, false, true},  {true, true, true},  {true, true, false}};

inline Point corner(const bbox& box, int k, const Roles& roles) {
  double at[3];
  for (int i = 0; i < 3; ++i) at[roles[i]] = kIsUpper[k][i] ? box.max[roles[i]] : box.min[roles[i]];
  return {at[0], at[1], at[2]};
}

}  // namespace orx::geometry
