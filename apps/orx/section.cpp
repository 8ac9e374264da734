#include "section.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>

namespace orx::cli {
namespace {

constexpr std::size_t kFacesAtOnce = 1 << 16;
constexpr double kLeastDip = 1e-6;    // of a plane that is not horizontal
constexpr double kLeastAngle = 1e-9;  // of directions that are not the same

double length_of(const Point& vector) { return std::sqrt(dot(vector, vector)); }

double diagonal_of(const bbox& box) {
  return length_of({box.max[0] - box.min[0], box.max[1] - box.min[1], box.max[2] - box.min[2]});
}

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
  if (dip < kLeastDip) return {foot, {1, 0, 0}, {0, 1, 0}, true};
  Point across = {-normal.y / dip, normal.x / dip, 0};
  const Point side = seeds[1] - seeds[0];
  double along = dot(across, side);
  if (std::fabs(along) <= kLeastAngle * length_of(side)) along = dot(across, seeds[2] - seeds[0]);
  if (along < 0) across = -1 * across;
  return {foot, across, {-normal.x * normal.z / dip, -normal.y * normal.z / dip, dip}, false};
}

// In the same direction whichever face asks, so that both faces of an edge get the same bits.
bool meet(cutplane& cut, const Point& a, const Point& b, Point& met) {
  const bool is_turned = std::tie(b.x, b.y, b.z) < std::tie(a.x, a.y, a.z);
  const Point& from = is_turned ? b : a;
  const Point& to = is_turned ? a : b;
  cutplane_seed_line_segment(&cut, from.x, from.y, from.z, to.x, to.y, to.z);
  return cutplane_intersect_segment(&cut, &met.x, &met.y, &met.z) == 1;
}

bool lies_in(const cutplane& cut, const Point& point) {
  return std::fabs(cutplane_distance_to_point(&cut, point.x, point.y, point.z)) <= CUTPLANE_TOLERANCE;
}

using Face = std::array<Point, 3>;

// Two edges that meet the plane at a common corner may do so at points that differ by little; of three points
// those count that are farthest apart.
std::optional<Segment> cut_face(cutplane& cut, const Face& face) {
  const auto in_plane = [&](const Point& corner) { return lies_in(cut, corner); };
  if (std::ranges::all_of(face, in_plane)) return {};
  Face met;
  std::size_t count = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    if (meet(cut, face[i], face[(i + 1) % 3], met[count])) ++count;
  }
  std::optional<Segment> segment;
  double longest = 0;
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const double length = length_of(met[i] - met[j]);
      if (length > longest) segment = {met[j], met[i]};
      longest = std::max(longest, length);
    }
  }
  return segment;
}

std::vector<Segment> cut_faces(const TriangleSurface& surface, cutplane& cut, double slack,
                               Progress& progress) {
  std::vector<Segment> segments;
  bbox reach = cut.plane_bbox;
  bbox_expand(&reach, slack);
  for (std::size_t i = 0; i < surface.triangles.size(); ++i) {
    if (i % kFacesAtOnce == 0) progress.tell("cutting", i, surface.triangles.size());
    bbox box;
    bbox_init(&box);
    for (const std::uint32_t corner : surface.triangles[i]) bbox_update(&box, &surface.points[corner].x);
    if (bboxes_intersect(&box, &reach) == 0) continue;
    // Rounding must not part a face from the plane that it touches.
    bbox_expand(&box, slack);
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

void move(Section& section, const Point& origin) {
  section.frame.origin = section.frame.origin + origin;
  for (Point& point : section.outline) point = point + origin;
  for (Polyline& polyline : section.polylines) {
    for (Point& point : polyline.points) point = point + origin;
  }
}

}  // namespace

bool are_spread(const Seeds& seeds) {
  const double sides = length_of(seeds[1] - seeds[0]) * length_of(seeds[2] - seeds[0]);
  return plane_through(seeds).normal_len > kLeastAngle * sides;
}

double usual_tolerance(const TriangleSurface& surface) { return diagonal_of(surface.box) / 1e6; }

Section cut_surface(const TriangleSurface& surface, Seeds seeds, double tolerance, Progress& progress) {
  for (Point& seed : seeds) seed = seed - surface.origin;
  cutplane cut = plane_through(seeds);
  cutplane_normalize(&cut);
  Section section{frame_of(cut, seeds), {}, {}, 0};
  const double slack = usual_tolerance(surface) + 2 * CUTPLANE_TOLERANCE;
  bbox box = surface.box;
  bbox_expand(&box, slack);
  if (cutplane_set_plane_bbox(&cut, &box) != 0) return section;
  section.outline = outline_of(cut, box);
  const std::vector<Segment> segments = cut_faces(surface, cut, slack, progress);
  section.polylines = join(segments, section.frame.across, section.frame.up, tolerance, progress);
  for (const Polyline& polyline : section.polylines) section.length += polyline.length;
  move(section, surface.origin);
  return section;
}

}  // namespace orx::cli
