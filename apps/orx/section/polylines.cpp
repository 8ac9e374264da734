#include "section/polylines.h"

#include <orx/geometry/bounding_box.h>
#include <orx/geometry/octree.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <utility>

namespace orx::cli {
namespace {

constexpr std::size_t kSegmentsPerReport = 1 << 16;
constexpr int kPointsInLeaf = 12;

using Number = std::uint32_t;  // the index of a point or of a line

// A point as an item of the octree. All heights are 0, which is the bottom of the root: heights in its middle
// would make every search visit both sides of each dividing plane.
struct Joint {
  double across, up, height;
  Number number;
};

// The end of a segment, which is searched for among the joints within `reach`.
struct End : Joint {
  double reach;
};

int joins(void* a, void* b) {
  const End& end = *static_cast<const End*>(a);
  const Joint& joint = *static_cast<const Joint*>(b);
  const double across = end.across - joint.across;
  const double up = end.up - joint.up;
  return across * across + up * up <= end.reach * end.reach ? 1 : 0;
}

int octant_of(void* item, double across, double up, double height) {
  const Joint& joint = *static_cast<const Joint*>(item);
  return (joint.across < across ? 1 : 0) | (joint.up < up ? 2 : 0) | (joint.height < height ? 4 : 0);
}

// The points where segments meet. Each end within the tolerance of a joint is that joint; any other end
// becomes a new joint.
class Joints {
 public:
  Joints(const std::vector<Segment>& segments, const Point& across, const Point& up, double tolerance)
      : across_(across), up_(up), tolerance_(tolerance) {
    bbox box;
    bbox_init(&box);
    for (const Segment& segment : segments) {
      for (const Point& point : segment) bbox_update_from_xyz(&box, dot(point, across_), dot(point, up_), 0);
    }
    const double size = std::max(box.max[0] - box.min[0], box.max[1] - box.min[1]);
    tree_.SetFunctions(joins, octant_of, nullptr);
    tree_.SetPointLimit(kPointsInLeaf);
    tree_.SetTolerance(tolerance);
    if (!tree_.Init(box.min[0], box.min[1], 0, box.max[0], box.max[1], size, 0)) throw std::bad_alloc();
    joints_.reserve(segments.size() * 2);  // the tree keeps their addresses, so they must not move
  }

  Number NumberOf(const Point& point) {
    End end{{dot(point, across_), dot(point, up_), 0, static_cast<Number>(points_.size())}, tolerance_};
    const auto* const found = static_cast<const Joint*>(tree_.FindNode(&end));
    if (found != nullptr) return found->number;
    tree_.AddNode(&joints_.emplace_back(end));
    points_.push_back(point);
    return end.number;
  }

  std::vector<Point> TakePoints() {
    // AddNode does not report that it is out of memory, but the point is then missing from the count.
    if (static_cast<std::size_t>(tree_.GetCount()) != points_.size()) throw std::bad_alloc();
    return std::move(points_);
  }

 private:
  Point across_;
  Point up_;
  double tolerance_;
  CORXOcTreeNode tree_;
  std::vector<Joint> joints_;
  std::vector<Point> points_;
};

struct Network {
  std::vector<Point> points;
  std::vector<std::array<Number, 2>> lines;  // sorted and unique; the lower number is first
};

Network connect(const std::vector<Segment>& segments, Joints& joints, Progress& progress) {
  Network network;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (i % kSegmentsPerReport == 0) progress.Report("joining", i, segments.size());
    const Number first = joints.NumberOf(segments[i][0]);
    const Number second = joints.NumberOf(segments[i][1]);
    if (first != second) network.lines.push_back({std::min(first, second), std::max(first, second)});
  }
  network.points = joints.TakePoints();
  std::ranges::sort(network.lines);
  network.lines.erase(std::unique(network.lines.begin(), network.lines.end()), network.lines.end());
  return network;
}

// Follows the lines of a network, each line once. The lines at point p are at_point_[first_[p]] up to
// at_point_[first_[p + 1]].
class Walker {
 public:
  explicit Walker(const Network& network)
      : network_(network), first_(network.points.size() + 1), is_walked_(network.lines.size()) {
    for (const auto& line : network.lines) {
      for (const Number point : line) ++first_[point + 1];
    }
    for (std::size_t i = 1; i < first_.size(); ++i) first_[i] += first_[i - 1];
    at_point_.resize(network.lines.size() * 2);
    std::vector<std::size_t> next = first_;
    for (Number i = 0; i < network.lines.size(); ++i) {
      for (const Number point : network.lines[i]) {
        at_point_[next[point]] = i;
        ++next[point];
      }
    }
  }

  std::vector<Polyline> Walk() {
    std::vector<Polyline> polylines;
    // First the polylines that begin at an end or a junction. Lines that then remain form loops.
    for (const bool loops : {false, true}) {
      for (Number point = 0; point < network_.points.size(); ++point) {
        if (loops == ContinuesAt(point)) StartAt(point, polylines);
      }
    }
    return polylines;
  }

 private:
  // A polyline continues where exactly two lines meet.
  bool ContinuesAt(Number point) const { return first_[point + 1] - first_[point] == 2; }

  void StartAt(Number point, std::vector<Polyline>& polylines) {
    for (std::size_t i = first_[point]; i < first_[point + 1]; ++i) {
      if (!is_walked_[at_point_[i]]) polylines.push_back(Follow(point, at_point_[i]));
    }
  }

  Polyline Follow(Number point, Number line) {
    Polyline polyline{{network_.points[point]}, 0};
    while (!is_walked_[line]) {
      is_walked_[line] = true;
      const auto [low, high] = network_.lines[line];
      point = point == low ? high : low;
      const Point step = network_.points[point] - polyline.points.back();
      polyline.length += length_of(step);
      polyline.points.push_back(network_.points[point]);
      if (!ContinuesAt(point)) break;
      const std::size_t first = first_[point];
      line = at_point_[first] == line ? at_point_[first + 1] : at_point_[first];
    }
    return polyline;
  }

  const Network& network_;
  std::vector<std::size_t> first_;
  std::vector<Number> at_point_;
  std::vector<bool> is_walked_;
};

}  // namespace

std::vector<Polyline> join_segments(const std::vector<Segment>& segments, const Point& across,
                                    const Point& up, double tolerance, Progress& progress) {
  Joints joints(segments, across, up, tolerance);
  const Network network = connect(segments, joints, progress);
  return Walker(network).Walk();
}

}  // namespace orx::cli
