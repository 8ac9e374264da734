#include "section/section.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>

namespace orx::cli {
namespace {

constexpr std::size_t kFacesPerReport = 1 << 16;
constexpr double kSlack = 1e-6;     // margin of boxes, in the unit of the surface
constexpr double kMinDip = 1e-6;    // a plane with a smaller dip is horizontal
constexpr double kMinAngle = 1e-9;  // directions with a smaller angle are the same

cutplane plane_through(const Seeds& seeds) {
  const auto& [p1, p2, p3] = seeds;
  cutplane cut;
  cutplane_init(&cut);
  cutplane_seed_plane(&cut, p1.x, p1.y, p1.z, p2.x, p2.y, p2.z, p3.x, p3.y, p3.z);
  return cut;
}

Frame frame_of(const cutplane& cut, const Seeds& seeds) {
  const Point normal = {cut.plane[0], cut.plane[1], cut.plane[2]};
  const Point foot = -cut.plane[3] * normal;
  const double dip = std::hypot(normal.x, normal.y);
  if (dip < kMinDip) return {foot, {1, 0, 0}, {0, 1, 0}, true};
  Point across = {-normal.y / dip, normal.x / dip, 0};
  const Point side = seeds[1] - seeds[0];
  double along = dot(across, side);
  if (std::fabs(along) <= kMinAngle * length_of(side)) along = dot(across, seeds[2] - seeds[0]);
  if (along < 0) across = -1 * across;
  return {foot, across, {-normal.x * normal.z / dip, -normal.y * normal.z / dip, dip}, false};
}

// The point where the plane cuts the edge from a to b. The direction of the computation depends on the
// coordinates alone, so that both faces of an edge get the same bits.
Point crossing_of(cutplane& cut, const Point& a, const Point& b) {
  const bool is_turned = std::tie(b.x, b.y, b.z) < std::tie(a.x, a.y, a.z);
  const Point& from = is_turned ? b : a;
  const Point& to = is_turned ? a : b;
  cutplane_seed_line_segment(&cut, from.x, from.y, from.z, to.x, to.y, to.z);
  Point crossing = from;
  cutplane_intersect_segment(&cut, &crossing.x, &crossing.y, &crossing.z);
  return crossing;
}

// 1 above the plane, -1 below, 0 in it.
int side_of(const cutplane& cut, const Point& point) {
  const double distance = cutplane_distance_to_point(&cut, point.x, point.y, point.z);
  if (distance > CUTPLANE_TOLERANCE) return 1;
  return distance < -CUTPLANE_TOLERANCE ? -1 : 0;
}

using Face = std::array<Point, 3>;

// Only the sides of the corners decide which edges are cut, so that all faces of a corner agree. An edge from
// one side to the other is never taken as parallel to the plane. A face with two points in the result
// contributes a segment; one point is a touch, and three points are a face in the plane.
std::optional<Segment> cut_face(cutplane& cut, const Face& face) {
  const std::array sides = {side_of(cut, face[0]), side_of(cut, face[1]), side_of(cut, face[2])};
  Face points;
  std::size_t count = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t next = (i + 1) % 3;
    if (sides[i] == 0) {
      points[count] = face[i];
      ++count;
    } else if (sides[i] * sides[next] < 0) {
      points[count] = crossing_of(cut, face[i], face[next]);
      ++count;
    }
  }
  if (count != 2) return {};
  return Segment{points[0], points[1]};
}

std::vector<Segment> cut_faces(const TriangleSurface& surface, cutplane& cut, Progress& progress) {
  std::vector<Segment> segments;
  bbox reach = cut.plane_bbox;
  bbox_expand(&reach, kSlack);
  for (std::size_t i = 0; i < surface.triangles.size(); ++i) {
    if (i % kFacesPerReport == 0) progress.Report("cutting", i, surface.triangles.size());
    bbox box;
    bbox_init(&box);
    for (const std::uint32_t corner : surface.triangles[i]) bbox_update(&box, &surface.points[corner].x);
    if (bboxes_intersect(&box, &reach) == 0) continue;
    // The margin keeps a face that touches the plane in spite of rounding.
    bbox_expand(&box, kSlack);
    if (cutplane_intersects_bbox(&cut, &box) == 0) continue;
    const auto& [a, b, c] = surface.triangles[i];
    const auto segment = cut_face(cut, {surface.points[a], surface.points[b], surface.points[c]});
    if (segment) segments.push_back(*segment);
  }
  return segments;
}

std::vector<Point> outline_of(cutplane& cut, const bbox& box) {
  std::array<double, 12> xs, ys, zs;
  const int count = cutplane_intersect_bbox_lines(&cut, &box, xs.data(), ys.data(), zs.data());
  std::vector<Point> outline;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) outline.push_back({xs[i], ys[i], zs[i]});
  return outline;
}

// Converts the section to the coordinates of the file, and adds up its length.
void restore_coordinates(Section& section, const TriangleSurface& surface) {
  const auto place = [&](Point& point) { point = surface.unit * point + surface.origin; };
  place(section.frame.origin);
  std::ranges::for_each(section.outline, place);
  for (Polyline& polyline : section.polylines) {
    std::ranges::for_each(polyline.points, place);
    polyline.length *= surface.unit;
    section.length += polyline.length;
  }
}

}  // namespace

bool is_plane_defined_by(const Seeds& seeds) {
  const double sides = length_of(seeds[1] - seeds[0]) * length_of(seeds[2] - seeds[0]);
  return plane_through(seeds).normal_len > kMinAngle * sides;
}

double default_tolerance(const TriangleSurface& surface) {
  return surface.unit * diagonal_of(surface.box) / 1e6;
}

Section cut_surface(const TriangleSurface& surface, Seeds seeds, double tolerance, Progress& progress) {
  for (Point& seed : seeds) seed = 1 / surface.unit * (seed - surface.origin);
  cutplane cut = plane_through(seeds);
  cutplane_normalize(&cut);
  Section section{frame_of(cut, seeds), {}, {}, 0};
  bbox box = surface.box;
  bbox_expand(&box, kSlack);
  if (cutplane_set_plane_bbox(&cut, &box) != 0) return section;
  section.outline = outline_of(cut, box);
  const std::vector<Segment> segments = cut_faces(surface, cut, progress);
  section.polylines =
      join_segments(segments, section.frame.across, section.frame.up, tolerance / surface.unit, progress);
  restore_coordinates(section, surface);
  return section;
}

}  // namespace orx::cli
