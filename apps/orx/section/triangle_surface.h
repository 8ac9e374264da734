// A surface of triangles, as Wavefront OBJ files hold it.
//
// Of a file, the vertices (v) and the faces (f) count; every other statement is passed over. A face names its
// vertices by their numbers, from 1 up, or from -1 back for those that the file had so far; what follows a
// number behind a slash is passed over. A face of more than three corners is a fan of triangles around its
// first one. A backslash at the end of a line joins the next one to it.
#pragma once

#include <orx/geometry/bounding_box.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "progress.h"

namespace orx::cli {

struct Point {
  double x, y, z;
  friend bool operator==(const Point&, const Point&) = default;
};

constexpr Point operator+(const Point& a, const Point& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
constexpr Point operator-(const Point& a, const Point& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
constexpr Point operator*(double factor, const Point& a) {
  return {factor * a.x, factor * a.y, factor * a.z};
}
constexpr double dot(const Point& a, const Point& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline double length_of(const Point& a) { return std::sqrt(dot(a, a)); }
inline double diagonal_of(const bbox& box) {
  return length_of({box.max[0] - box.min[0], box.max[1] - box.min[1], box.max[2] - box.min[2]});
}

// The points and the box are relative to the origin, which lies among them: coordinates in the millions of
// metres would leave no digits for what is computed from them. They are in a unit, a power of two, in which
// the diagonal of the box is shorter than 1 and no less than a half: so a tolerance means the same for all
// sizes.
struct TriangleSurface {
  Point origin;
  double unit;
  bbox box;
  std::vector<Point> points;
  std::vector<std::array<std::uint32_t, 3>> triangles;
};

// Raises Failure, which names the line, when a statement cannot be read, and when there are no faces.
TriangleSurface read_surface(const std::string& file, Progress& progress);

}  // namespace orx::cli
