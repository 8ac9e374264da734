// Boxes and planes against those of Eigen, if it is installed. Each call handles one point, one pair of
// boxes, one segment or one box. The functions of Eigen are not inlined, so that both sides are calls.
#include <benchmark/benchmark.h>
#include <orx/geometry/bounding_box.h>
#include <orx/geometry/cutting_plane.h>

#if __has_include(<Eigen/Geometry>)
#include <Eigen/Geometry>
#define ORX_BENCH_EIGEN 1
#endif

#include <algorithm>
#include <array>
#include <random>
#include <vector>

namespace {

constexpr std::size_t kCount = 1'000'000;
constexpr std::size_t kBoxes = 100'000;

using Point = std::array<double, 3>;

// Random points in a cube of 2000 units around the origin.
std::vector<Point> make_points(std::size_t count) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> coordinate(-1000, 1000);
  std::vector<Point> all(count);
  for (Point& point : all) std::generate(point.begin(), point.end(), [&] { return coordinate(random); });
  return all;
}

// Three points that define the plane.
constexpr Point kSeed[] = {{-100, 30, 40}, {500, -70, 200}, {90, 600, -80}};

struct Orx {
  using Box = bbox;

  static Box MakeBox(const Point& a, const Point& b) {
    Box made;
    bbox_init(&made);
    bbox_update(&made, a.data());
    bbox_update(&made, b.data());
    return made;
  }
  static void Extend(Box& box, const Point& point) { bbox_update(&box, point.data()); }
  static bool Intersects(const Box& a, const Box& b) { return bboxes_intersect(&a, &b) != 0; }
  static bool Contains(const Box& box, const Point& point) {
    return bbox_pnt_intersect(&box, point.data()) != 0;
  }

  class Plane {
   public:
    Plane() {
      const auto& [a, b, c] = kSeed;
      cutplane_init(&cut_);
      cutplane_seed_plane(&cut_, a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]);
    }
    bool Intersect(const Point& from, const Point& to, Point& at) {
      cutplane_seed_line_segment(&cut_, from[0], from[1], from[2], to[0], to[1], to[2]);
      return cutplane_intersect_segment(&cut_, &at[0], &at[1], &at[2]) != 0;
    }
    int CutEdges(const Box& box, double* xs, double* ys, double* zs) {
      return cutplane_intersect_bbox_lines(&cut_, &box, xs, ys, zs);
    }
    Box Section(const Box& box) {
      cutplane_set_plane_bbox(&cut_, &box);
      return cut_.plane_bbox;
    }

   private:
    cutplane cut_;
  };
};

#if defined(ORX_BENCH_EIGEN)
struct Eigens {
  using Vector = Eigen::Vector3d;
  using Line = Eigen::ParametrizedLine<double, 3>;
  using Box = Eigen::AlignedBox3d;

  static Vector ToVector(const Point& point) { return Vector(point[0], point[1], point[2]); }
  static Box MakeBox(const Point& a, const Point& b) { return Box(ToVector(a)).extend(ToVector(b)); }
  [[gnu::noinline]] static void Extend(Box& box, const Point& point) {
    box.extend(Eigen::Map<const Vector>(point.data()));
  }
  [[gnu::noinline]] static bool Intersects(const Box& a, const Box& b) { return a.intersects(b); }
  [[gnu::noinline]] static bool Contains(const Box& box, const Point& point) {
    return box.contains(Eigen::Map<const Vector>(point.data()));
  }

  class Plane {
   public:
    Plane() : plane_(Hyperplane::Through(ToVector(kSeed[0]), ToVector(kSeed[1]), ToVector(kSeed[2]))) {}

    [[gnu::noinline]] bool Intersect(const Point& from, const Point& to, Point& at) const {
      const Eigen::Map<const Vector> start(from.data()), end(to.data());
      Vector met;
      if (!Intersect(start, end, met)) return false;
      Eigen::Map<Vector>(at.data()) = met;
      return true;
    }

    [[gnu::noinline]] int CutEdges(const Box& box, double* xs, double* ys, double* zs) const {
      int count = 0;
      ForEachCut(box, [&](const Vector& met) {
        xs[count] = met[0];
        ys[count] = met[1];
        zs[count] = met[2];
        ++count;
      });
      return count;
    }

    [[gnu::noinline]] Box Section(const Box& box) const {
      Box section;
      ForEachCut(box, [&](const Vector& met) { section.extend(met); });
      return section;
    }

   private:
    using Hyperplane = Eigen::Hyperplane<double, 3>;

    // As in orx, an end within the tolerance of the plane is the intersection.
    bool Intersect(const Vector& start, const Vector& end, Vector& at) const {
      const Vector way = end - start;
      const double length = way.norm();
      const Line line(start, way / length);
      if (!(std::abs(plane_.normal().dot(line.direction())) > CUTPLANE_TOLERANCE)) {
        at = start;
        return std::abs(plane_.signedDistance(start)) <= CUTPLANE_TOLERANCE;
      }
      const double t = line.intersectionParameter(plane_);
      if (t < -CUTPLANE_TOLERANCE || t > length + CUTPLANE_TOLERANCE) return false;
      if (t <= CUTPLANE_TOLERANCE) {
        at = start;
      } else if (t >= length - CUTPLANE_TOLERANCE) {
        at = end;
      } else {
        at = line.pointAt(t);
      }
      return true;
    }

    template <class Handle>
    void ForEachCut(const Box& box, Handle handle) const {
      constexpr int kEdges[12][2] = {{0, 4}, {4, 6}, {6, 2}, {2, 0}, {1, 5}, {5, 7},
                                     {7, 3}, {3, 1}, {0, 1}, {4, 5}, {6, 7}, {2, 3}};
      Vector corners[8];
      for (int i = 0; i < 8; ++i) corners[i] = box.corner(static_cast<Box::CornerType>(i));
      Vector met;
      for (const auto& [from, to] : kEdges) {
        if (Intersect(corners[from], corners[to], met)) handle(met);
      }
    }

    Hyperplane plane_;
  };
};
#endif

template <class Side>
void update(benchmark::State& state) {
  const std::vector<Point> all = make_points(kCount);
  for (auto _ : state) {
    typename Side::Box box = Side::MakeBox(all[0], all[0]);
    for (const Point& point : all) Side::Extend(box, point);
    benchmark::DoNotOptimize(box);
  }
}

template <class Side>
std::vector<typename Side::Box> make_boxes(std::size_t count) {
  std::vector<Point> corners = make_points(2 * count);
  std::vector<typename Side::Box> all;
  for (std::size_t i = 0; i < count; ++i) all.push_back(Side::MakeBox(corners[2 * i], corners[2 * i + 1]));
  return all;
}

template <class Side>
void box_pairs(benchmark::State& state) {
  const auto all = make_boxes<Side>(kCount + 1);
  for (auto _ : state) {
    int count = 0;
    for (std::size_t i = 0; i < kCount; ++i) count += Side::Intersects(all[i], all[i + 1]) ? 1 : 0;
    state.counters["hits"] = count;
  }
}

template <class Side>
void points_in_boxes(benchmark::State& state) {
  const auto all = make_boxes<Side>(kCount);
  const std::vector<Point> sought = make_points(kCount);
  for (auto _ : state) {
    int count = 0;
    for (std::size_t i = 0; i < kCount; ++i) count += Side::Contains(all[i], sought[kCount - 1 - i]) ? 1 : 0;
    state.counters["hits"] = count;
  }
}

template <class Side>
void cut_segments(benchmark::State& state) {
  const std::vector<Point> ends = make_points(2 * kCount);
  typename Side::Plane plane;
  for (auto _ : state) {
    int count = 0;
    for (std::size_t i = 0; i < ends.size(); i += 2) {
      Point at;
      count += plane.Intersect(ends[i], ends[i + 1], at) ? 1 : 0;
      benchmark::DoNotOptimize(at);
    }
    state.counters["hits"] = count;
  }
}

template <class Side>
void cut_boxes(benchmark::State& state) {
  const auto all = make_boxes<Side>(kBoxes);
  typename Side::Plane plane;
  for (auto _ : state) {
    int count = 0;
    for (const auto& box : all) {
      double xs[12], ys[12], zs[12];
      count += plane.CutEdges(box, xs, ys, zs);
      benchmark::DoNotOptimize(xs);
    }
    state.counters["hits"] = count;
  }
}

template <class Side>
void section_boxes(benchmark::State& state) {
  const auto all = make_boxes<Side>(kBoxes);
  typename Side::Plane plane;
  for (auto _ : state) {
    for (const auto& box : all) benchmark::DoNotOptimize(plane.Section(box));
  }
}

#if defined(ORX_BENCH_EIGEN)
#define ORX_BENCH_ALL(operation)                                     \
  BENCHMARK_TEMPLATE(operation, Orx)->Unit(benchmark::kMillisecond); \
  BENCHMARK_TEMPLATE(operation, Eigens)->Unit(benchmark::kMillisecond)
#else
#define ORX_BENCH_ALL(operation) BENCHMARK_TEMPLATE(operation, Orx)->Unit(benchmark::kMillisecond)
#endif

ORX_BENCH_ALL(update);
ORX_BENCH_ALL(box_pairs);
ORX_BENCH_ALL(points_in_boxes);
ORX_BENCH_ALL(cut_segments);
ORX_BENCH_ALL(cut_boxes);
ORX_BENCH_ALL(section_boxes);

}  // namespace
