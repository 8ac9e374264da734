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

constexpr std::size_t kSegmentsAtOnce = 1 << 16;
constexpr int kPointsInLeaf = 12;

using Number = std::uint32_t;  // of a point or of a line

// A point as the octree takes it. All heights are 0, at the bottom of the root: were they in the middle,
// every search would look on both sides of every dividing plane.
struct Joint {
  double across, up, height;
  Number number;
};

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

// The points in which segments meet.
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
    joints_.reserve(segments.size() * 2);  // the tree has their addresses
  }

  Number number_of(const Point& point) {
    End end{{dot(point, across_), dot(point, up_), 0, static_cast<Number>(points_.size())}, tolerance_};
    const auto* const found = static_cast<const Joint*>(tree_.FindNode(&end));
    if (found != nullptr) return found->number;
    tree_.AddNode(&joints_.emplace_back(end));
    points_.push_back(point);
    return end.number;
  }

  std::vector<Point> take_points() {
    // The tree tells in no other way that it had no memory for a point.
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
  std::vector<std::array<Number, 2>> lines;  // the lower point first
};

Network connect(const std::vector<Segment>& segments, Joints& joints, Progress& progress) {
  Network network;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (i % kSegmentsAtOnce == 0) progress.tell("joining", i, segments.size());
    const Number first = joints.number_of(segments[i][0]);
    const Number second = joints.number_of(segments[i][1]);
    if (first != second) network.lines.push_back({std::min(first, second), std::max(first, second)});
  }
  network.points = joints.take_points();
  std::ranges::sort(network.lines);
  network.lines.erase(std::unique(network.lines.begin(), network.lines.end()), network.lines.end());
  return network;
}

// Goes along the lines of a network, along each one once.
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
      for (const Number point : network.lines[i]) at_point_[next[point]++] = i;
    }
  }

  std::vector<Polyline> walk() {
    std::vector<Polyline> polylines;
    // What is left between points in which two lines meet are loops.
    for (const bool loops : {false, true}) {
      for (Number point = 0; point < network_.points.size(); ++point) {
        if (loops == goes_on(point)) start_at(point, polylines);
      }
    }
    return polylines;
  }

 private:
  bool goes_on(Number point) const { return first_[point + 1] - first_[point] == 2; }

  void start_at(Number point, std::vector<Polyline>& polylines) {
    for (std::size_t i = first_[point]; i < first_[point + 1]; ++i) {
      if (!is_walked_[at_point_[i]]) polylines.push_back(follow(point, at_point_[i]));
    }
  }

  Polyline follow(Number point, Number line) {
    Polyline polyline{{network_.points[point]}, 0};
    while (!is_walked_[line]) {
      is_walked_[line] = true;
      const auto [low, high] = network_.lines[line];
      point = point == low ? high : low;
      const Point step = network_.points[point] - polyline.points.back();
      polyline.length += length_of(step);
      polyline.points.push_back(network_.points[point]);
      if (!goes_on(point)) break;
      const std::size_t first = first_[point];
      line = at_point_[first] == line ? at_point_[first + 1] : at_point_[first];
    }
    return polyline;
  }

  const Network& network_;
  std::vector<std::size_t> first_;  // of the lines at a point
  std::vector<Number> at_point_;    // the lines, point by point
  std::vector<bool> is_walked_;
};

}  // namespace

std::vector<Polyline> join(const std::vector<Segment>& segments, const Point& across, const Point& up,
                           double tolerance, Progress& progress) {
  Joints joints(segments, across, up, tolerance);
  const Network network = connect(segments, joints, progress);
  return Walker(network).walk();
}

}  // namespace orx::cli
