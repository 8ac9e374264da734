// A surface of triangles, as Wavefront OBJ files hold it.
//
// Of a file, the vertices (v) and the faces (f) count; every other statement is passed over. A face names its
// vertices by their numbers, from 1 up, or from -1 back for those that the file had so far; what follows a
// number behind a slash is passed over. A face of more than three corners is a fan of triangles around its
// first one. A backslash at the end of a line joins the next one to it.
#pragma once

#include <orx/geometry/bounding_box.h>

#include <array>
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

// The points and the box are relative to the origin, which lies among them: coordinates in the millions of
// metres would leave no digits for what is computed from them.
struct TriangleSurface {
  Point origin;
  bbox box;
  std::vector<Point> points;
  std::vector<std::array<std::uint32_t, 3>> triangles;
};

// Raises Failure, which names the line, when a statement cannot be read, and when there are no faces.
TriangleSurface read_surface(const std::string& file, Progress& progress);

}  // namespace orx::cli
