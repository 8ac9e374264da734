// The octree against a packed R-tree and an R-tree built by insertion (Boost.Geometry), a k-d tree
// (nanoflann) and a voxel octree (PCL, in single precision), as far as they are installed. A million points
// are evenly spread or in clusters. Then the octree alone: 200,000 points in regions that are far wider than
// the points or stretched by one stray point, and 100,000 points at 1,000 places.
#include <benchmark/benchmark.h>
#include <orx/geometry/octree.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif
#if __has_include(<boost/geometry/index/rtree.hpp>)
#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>
#define ORX_BENCH_BOOST_GEOMETRY 1
#endif
#if __has_include(<nanoflann.hpp>)
#include <nanoflann.hpp>
#endif
#if defined(ORX_BENCH_PCL)
#include <pcl/octree/octree_search.h>
#endif

namespace {

constexpr std::size_t kCount = 1'000'000;
constexpr double kExtent = 1000;
constexpr double kTolerance = 0.01;

using Point = std::array<double, 3>;
using Points = std::vector<Point>;

enum Kind { kUniform, kClustered };

// Points in random order, all different except for rounding.
Points make_points(Kind kind) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(0, kExtent);
  std::normal_distribution<double> spread(0, kExtent / 200);
  const auto anywhere = [&] { return Point{place(random), place(random), place(random)}; };
  Points centres(100);
  Points points(kCount);
  for (Point& centre : centres) centre = anywhere();
  for (Point& point : points) {
    point = kind == kUniform ? anywhere() : centres[random() % centres.size()];
    if (kind == kUniform) continue;
    for (double& value : point) value = std::clamp(value + spread(random), 0.0, kExtent);
  }
  return points;
}

const Points& points_for(const benchmark::State& state) {
  static const Points kinds[] = {make_points(kUniform), make_points(kClustered)};
  return kinds[state.range(0)];
}

std::size_t allocated() {
#if defined(__GLIBC__)
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
#else
  return 0;
#endif
}

// Hides a callback from the optimizer, which could not inline the callback of a host either.
template <class Function>
Function hide_from_optimizer(Function function) {
  benchmark::DoNotOptimize(function);
  return function;
}

const Point& point_of(const void* item) { return *static_cast<const Point*>(item); }

int locate(void* item, double x, double y, double z) {
  const Point& point = point_of(item);
  return (point[0] < x ? 1 : 0) | (point[1] < y ? 2 : 0) | (point[2] < z ? 4 : 0);
}

int is_same(void* a, void* b) { return point_of(a) == point_of(b) ? 1 : 0; }

int is_near(void* a, void* b) {
  double sum = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    const double difference = point_of(a)[i] - point_of(b)[i];
    sum += difference * difference;
  }
  return sum < kTolerance * kTolerance ? 1 : 0;
}

template <class Root>
class OrxOctree {
 public:
  explicit OrxOctree(const Points& points, ORXOcTreeCompareFn compare = is_same) {
    tree_.SetFunctions(hide_from_optimizer(compare), hide_from_optimizer(locate), nullptr);
    tree_.SetTolerance(kTolerance);
    tree_.Init(0, 0, 0, kExtent, kExtent, kExtent, 0);
    for (const Point& point : points) tree_.AddNode(item_of(point));
  }
  bool Find(const Point& point) { return tree_.FindNode(item_of(point)) != nullptr; }
  std::uintptr_t Visit() {
    std::uintptr_t sum = 0;
    int counter = 0;
    tree_.Iterate(hide_from_optimizer(add), &sum, counter);
    return sum;
  }

 private:
  static void add(int /*index*/, void* item, void* sum) {
    *static_cast<std::uintptr_t*>(sum) += reinterpret_cast<std::uintptr_t>(item);
  }
  static void* item_of(const Point& point) { return const_cast<Point*>(&point); }
  Root tree_;
};

using Octree = OrxOctree<CORXOcTreeGeneric>;

class NearOctree : public OrxOctree<CORXOcTreeNode> {
 public:
  explicit NearOctree(const Points& points) : OrxOctree(points, is_near) {}
};

#if defined(ORX_BENCH_BOOST_GEOMETRY)
namespace bg = boost::geometry;

class RTree {
 public:
  RTree() = default;
  explicit RTree(const Points& points) : RTree(values_of(points)) {}
  bool Find(const Point& point) const {
    const BoostPoint at(point[0], point[1], point[2]);
    return tree_.qbegin(bg::index::intersects(at)) != tree_.qend();
  }
  std::uintptr_t Visit() const {
    std::uintptr_t sum = 0;
    for (const Value& value : tree_) sum += value.second;
    return sum;
  }

 protected:
  using BoostPoint = bg::model::point<double, 3, bg::cs::cartesian>;
  using Value = std::pair<BoostPoint, std::uint32_t>;

  static std::vector<Value> values_of(const Points& points) {
    std::vector<Value> values;
    values.reserve(points.size());
    for (const Point& p : points) {
      values.emplace_back(BoostPoint(p[0], p[1], p[2]), static_cast<std::uint32_t>(values.size()));
    }
    return values;
  }

  explicit RTree(const std::vector<Value>& values) : tree_(values) {}
  bg::index::rtree<Value, bg::index::quadratic<16>> tree_;
};

class GrownRTree : public RTree {
 public:
  explicit GrownRTree(const Points& points) {
    for (const Value& value : values_of(points)) tree_.insert(value);
  }
};

// Stores pointers to the points, as the octree does.
class RTreeOfItems {
 public:
  explicit RTreeOfItems(const Points& points) : tree_(items_of(points)) {}
  bool Find(const Point& point) const {
    const BoostPoint at(point[0], point[1], point[2]);
    return tree_.qbegin(bg::index::intersects(at)) != tree_.qend();
  }

 private:
  using BoostPoint = bg::model::point<double, 3, bg::cs::cartesian>;
  struct Place {
    using result_type = BoostPoint;
    BoostPoint operator()(const Point* item) const { return {(*item)[0], (*item)[1], (*item)[2]}; }
  };

  static std::vector<const Point*> items_of(const Points& points) {
    std::vector<const Point*> items;
    for (const Point& point : points) items.push_back(&point);
    return items;
  }

  bg::index::rtree<const Point*, bg::index::quadratic<16>, Place> tree_;
};
#endif

#if defined(NANOFLANN_VERSION)
class KdTree {
 public:
  explicit KdTree(const Points& points) : cloud_{points}, tree_(3, cloud_) {}
  bool Find(const Point& point) const {
    std::uint32_t index = 0;
    double distance = 1;
    tree_.knnSearch(point.data(), 1, &index, &distance);
    return distance == 0;
  }
  bool FindNear(const Point& point) {
    found_.clear();
    nanoflann::SearchParams unsorted;
    unsorted.sorted = false;
    return tree_.radiusSearch(point.data(), kTolerance * kTolerance, found_, unsorted) != 0;
  }

 private:
  struct Cloud {
    const Points& points;
    std::size_t kdtree_get_point_count() const { return points.size(); }
    double kdtree_get_pt(std::size_t index, std::size_t axis) const { return points[index][axis]; }
    template <class Box>
    bool kdtree_get_bbox(Box& /*box*/) const {
      return false;
    }
  };
  Cloud cloud_;
  std::vector<std::pair<std::uint32_t, double>> found_;
  nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Cloud>, Cloud, 3> tree_;
};

class NearKdTree : public KdTree {
 public:
  using KdTree::KdTree;
  bool Find(const Point& point) { return FindNear(point); }
};
#endif

#if defined(ORX_BENCH_PCL)
class PclOctree {
 public:
  explicit PclOctree(const Points& points)
      : cloud_(new pcl::PointCloud<pcl::PointXYZ>), tree_(kExtent / 1024) {
    for (const Point& p : points) cloud_->push_back(pcl_point(p));
    tree_.defineBoundingBox(0, 0, 0, kExtent, kExtent, kExtent);
    tree_.enableDynamicDepth(64);
    tree_.setInputCloud(cloud_);
    tree_.addPointsFromInputCloud();
  }
  bool Find(const Point& point) {
    const pcl::PointXYZ sought = pcl_point(point);
    found_.clear();
    tree_.voxelSearch(sought, found_);
    return std::any_of(found_.begin(), found_.end(), [&](int index) {
      const pcl::PointXYZ& p = (*cloud_)[static_cast<std::size_t>(index)];
      return p.x == sought.x && p.y == sought.y && p.z == sought.z;
    });
  }

 private:
  static pcl::PointXYZ pcl_point(const Point& p) {
    return {static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])};
  }
  pcl::PointCloud<pcl::PointXYZ>::Ptr cloud_;
  pcl::octree::OctreePointCloudSearch<pcl::PointXYZ> tree_;
  std::vector<int> found_;
};
#endif

template <class Tree>
void build(benchmark::State& state) {
  const Points& points = points_for(state);
  for (auto _ : state) {
    const std::size_t before = allocated();
    auto tree = std::make_unique<Tree>(points);
    state.PauseTiming();
    state.counters["bytes/point"] = static_cast<double>(allocated() - before) / kCount;
    tree.reset();
    state.ResumeTiming();
  }
}

template <class Tree>
void find_all(benchmark::State& state, Tree& tree, const Points& sought) {
  for (auto _ : state) {
    std::size_t found = 0;
    for (const Point& point : sought) {
      if (tree.Find(point)) ++found;
    }
    if (found != kCount) state.SkipWithError("not all found");
  }
}

template <class Tree>
void find(benchmark::State& state) {
  const Points& points = points_for(state);
  Tree tree(points);
  find_all(state, tree, points);
}

// The points are on one side of a plane that divides an upper level of the octree, and they are searched for
// from the other side, within the tolerance.
template <class Tree>
void find_beyond(benchmark::State& state) {
  Points points = points_for(state);
  Points sought = points;
  for (std::size_t i = 0; i < kCount; ++i) {
    const double plane = std::round(points[i][i % 3] / kExtent * 32) * kExtent / 32;
    points[i][i % 3] = plane + kTolerance / 4;
    sought[i][i % 3] = plane - kTolerance / 4;
  }
  Tree tree(points);
  find_all(state, tree, sought);
}

template <class Tree>
void visit(benchmark::State& state) {
  Tree tree(points_for(state));
  for (auto _ : state) benchmark::DoNotOptimize(tree.Visit());
}

constexpr struct {
  const char* name;
  double low, high, stray;
} kRegions[] = {{"tight", 0, kExtent, 1},     {"1e3", -1e3, 1e3, 1},    {"1e6", -1e6, 1e6, 1},
                {"1e7", -1e7, 1e7, 1},        {"1e8", -1e8, 1e8, 1},    {"1e9", -1e9, 1e9, 1},
                {"1e12", -1e12, 1e12, 1},     {"1e15", -1e15, 1e15, 1}, {"stray 1e10", 0, 1e10, 1e10},
                {"stray 1e30", 0, 1e30, 1e30}};

std::int64_t comparisons = 0;
int count_and_compare(void* a, void* b) {
  ++comparisons;
  return is_same(a, b);
}

std::unique_ptr<CORXOcTreeNode> made_tree(Points& points, double low, double high) {
  auto tree = std::make_unique<CORXOcTreeNode>();
  tree->SetFunctions(hide_from_optimizer(count_and_compare), hide_from_optimizer(locate), nullptr);
  tree->Init(low, low, low, high, high, high, 0);
  for (Point& point : points) tree->AddNode(&point);
  return tree;
}

void find_in_region(benchmark::State& state) {
  const auto& [name, low, high, stray] = kRegions[state.range(0)];
  state.SetLabel(name);
  Points points = make_points(kUniform);
  points.resize(200'000);
  points[1000].fill(stray);
  const auto tree = made_tree(points, low, high);
  comparisons = 0;
  for (auto _ : state) {
    for (Point& point : points) benchmark::DoNotOptimize(tree->FindNode(&point));
  }
  const auto searches = static_cast<double>(state.iterations()) * static_cast<double>(points.size());
  state.counters["comparisons"] = static_cast<double>(comparisons) / searches;
}

void build_of_coincident(benchmark::State& state) {
  constexpr std::size_t kPlaces = 1000, kPointsAtPlace = 100;
  Points points = make_points(kUniform);
  points.resize(kPlaces * kPointsAtPlace);
  for (std::size_t i = kPlaces; i < points.size(); ++i) points[i] = points[i % kPlaces];
  for (auto _ : state) {
    const std::size_t before = allocated();
    auto tree = made_tree(points, 0, kExtent);
    state.PauseTiming();
    const auto bytes = static_cast<double>(allocated() - before);
    state.counters["bytes/point"] = bytes / static_cast<double>(points.size());
    tree.reset();
    state.ResumeTiming();
  }
}

void kinds(benchmark::internal::Benchmark* family) {
  family->ArgName("clustered")->Arg(kUniform)->Arg(kClustered)->Unit(benchmark::kMillisecond);
}

#define ORX_BENCH_TREE(operation, Tree) BENCHMARK_TEMPLATE(operation, Tree)->Apply(kinds)

ORX_BENCH_TREE(build, Octree);
ORX_BENCH_TREE(find, Octree);
ORX_BENCH_TREE(visit, Octree);
ORX_BENCH_TREE(find_beyond, NearOctree);
#if defined(ORX_BENCH_BOOST_GEOMETRY)
ORX_BENCH_TREE(build, RTree);
ORX_BENCH_TREE(build, GrownRTree);
ORX_BENCH_TREE(find, RTree);
ORX_BENCH_TREE(build, RTreeOfItems);
ORX_BENCH_TREE(find, RTreeOfItems);
ORX_BENCH_TREE(visit, RTree);
#endif
#if defined(NANOFLANN_VERSION)
ORX_BENCH_TREE(build, KdTree);
ORX_BENCH_TREE(find, KdTree);
ORX_BENCH_TREE(find_beyond, NearKdTree);
#endif
#if defined(ORX_BENCH_PCL)
ORX_BENCH_TREE(build, PclOctree);
ORX_BENCH_TREE(find, PclOctree);
#endif

BENCHMARK(find_in_region)->DenseRange(0, std::size(kRegions) - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(build_of_coincident)->Unit(benchmark::kMillisecond);

}  // namespace
