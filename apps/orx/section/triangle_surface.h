// A surface of triangles, read from a Wavefront OBJ file.
//
// The reader uses the vertices (v) and the faces (f) and ignores every other statement. A face refers to its
// vertices by number: 1 is the first vertex of the file, and -1 is the last vertex before the face. Text
// after a slash is ignored. A face with more than three corners becomes a fan of triangles around its first
// corner. A backslash at the end of a line continues the statement on the next line.
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

// A point of the file is origin + unit * point, and the box is in the same coordinates as the points. The
// origin is in the middle of the box, since coordinates of millions of metres would leave too few digits for
// computations. The unit is a power of two that makes the diagonal of the box at least 0.5 and less than 1
// (smaller only for a minute surface), so that tolerances mean the same for surfaces of all sizes.
struct TriangleSurface {
  Point origin;
  double unit;
  bbox box;
  std::vector<Point> points;
  std::vector<std::array<std::uint32_t, 3>> triangles;
};

// Raises Failure when the file cannot be read or has no faces, and, with the line, for an invalid statement.
TriangleSurface read_surface(const std::string& file, Progress& progress);

}  // namespace orx::cli
