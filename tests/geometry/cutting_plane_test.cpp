#include <orx/geometry/cutting_plane.h>

#include <gtest/gtest.h>
#include <tests/support/failing_memory.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>

namespace {

constexpr double kNan = NAN, kInf = INFINITY, kUntouched = -12345;
constexpr std::size_t kDoubles = sizeof(cutplane) / sizeof(double);

using Point = std::array<double, 3>;

cutplane plane_through(const Point& a, const Point& b, const Point& c) {
  cutplane cut;
  cutplane_init(&cut);
  cutplane_seed_plane(&cut, a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]);
  return cut;
}

void seed(cutplane& cut, const Point& from, const Point& to) {
  EXPECT_EQ(cutplane_seed_line_segment(&cut, from[0], from[1], from[2], to[0], to[1], to[2]), 0);
}

// As bits, but for what is not a number: that is as good as any other.
bool same(const double* a, const double* b, std::size_t count) {
  return std::equal(a, a + count, b, [](double x, double y) {
    return (std::isnan(x) && std::isnan(y)) ||
           std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
  });
}

TEST(CuttingPlane, IsSeededAndMeasured) {
  cutplane cut = plane_through({0, 0, 3}, {2, 0, 3}, {0, 2, 3});
  EXPECT_EQ(Point({cut.plane[0], cut.plane[1], cut.plane[2]}), Point({0, 0, 4}));
  EXPECT_EQ(cut.plane[3], -12);
  EXPECT_EQ(cutplane_distance_to_point(&cut, 5, 5, 5), 2);
  EXPECT_EQ(cutplane_normalize(&cut), 0);
  EXPECT_EQ(cut.plane[2], 1);
  EXPECT_EQ(cut.plane[3], -3);
  EXPECT_EQ(cut.normal_len, 1);
  EXPECT_EQ(cutplane_distance_to_point(&cut, 5, 5, 1), -2);

  cut = plane_through({1, 2, 3}, {2, 4, 7}, {3, 6, 11});
  EXPECT_EQ(cutplane_normalize(&cut), 1);
  EXPECT_TRUE(std::isnan(cutplane_distance_to_point(&cut, 1, 2, 3)));
  double p[9];
  EXPECT_EQ(cutplane_get_plane_points(&cut, p, p + 1, p + 2, p + 3, p + 4, p + 5, p + 6, p + 7, p + 8), 0);
  EXPECT_TRUE(same(p, std::begin({1., 2., 3., 2., 4., 7., 3., 6., 11.}), 9));
  const bbox box = {{-1, -1, -1}, {1, 1, 1}};
  EXPECT_EQ(cutplane_intersects_bbox(&cut, &box), 0);
  double xs[12], ys[12], zs[12];
  EXPECT_EQ(cutplane_intersect_bbox_lines(&cut, &box, xs, ys, zs), 12);  // all starts
}

TEST(CuttingPlane, MeetsSegmentsAndLines) {
  const struct {
    Point from, to;
    std::int64_t meets_line;
    double line_t;
    std::int64_t meets_segment;
    double segment_t;
    Point at;  // of the segment
  } cases[] = {{{0, 0, -1}, {0, 0, 1}, 1, 1, 1, 1, {0, 0, 0}},
               {{0, 0, 1}, {0, 0, 3}, 1, -1, 0, 0, {}},
               {{0, 0, -3}, {0, 0, -1}, 1, 3, 0, 0, {}},
               {{3, 0, 4}, {0, 0, 0}, 1, 5, 1, 5, {0, 0, 0}},
               {{1, 2, -1}, {1, 2, -1e-9}, 1, 1, 1, 1 - 1e-9, {1, 2, -1e-9}},  // the end itself
               {{1, 2, 1e-9}, {1, 2, 1}, 1, -1e-9, 1, 0, {1, 2, 1e-9}},
               {{1, 2, 2e-8}, {1, 2, 1}, 1, -2e-8, 0, 0, {}},
               {{1, 2, -0.0}, {3, 4, -0.0}, 0, 0, 1, 0, {1, 2, -0.0}},
               {{1, 2, 1e-8}, {3, 4, 1e-8}, 0, 0, 1, 0, {1, 2, 1e-8}},
               {{1, 2, 2e-8}, {3, 4, 2e-8}, 0, 0, 0, 0, {}},
               {{1, 2, 0}, {1, 2, 0}, 0, 0, 1, 0, {1, 2, 0}},
               {{1, 2, 1}, {1, 2, 1}, 0, 0, 0, 0, {}},
               {{1, 2, 0}, {1, 2, kInf}, 0, 0, 1, 0, {1, 2, 0}},
               {{1, 2, kNan}, {1, 2, 1}, 0, 0, 0, 0, {}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    cutplane cut = plane_through({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
    seed(cut, c.from, c.to);
    Point at = {kUntouched, kUntouched, kUntouched}, last = at;
    cut.last_t = 9;
    EXPECT_EQ(cutplane_intersect_segment(&cut, &at[0], &at[1], &at[2]), c.meets_segment);
    EXPECT_EQ(cut.last_t, c.segment_t);
    EXPECT_TRUE(same(at.data(), c.meets_segment == 1 ? c.at.data() : last.data(), 3)) << at[0] << at[2];
    at = last;
    EXPECT_EQ(cutplane_intersect_line(&cut, &at[0], &at[1], &at[2]), c.meets_line);
    EXPECT_EQ(cut.last_t, c.line_t);
    if (c.meets_line == 0) continue;
    double t;
    EXPECT_EQ(cutplane_get_last_t_xyz(&cut, &t, &last[0], &last[1], &last[2]), 0);
    EXPECT_EQ(at, last);
    EXPECT_EQ(t, c.line_t);
  }
}

// The start and the end of each edge, 0 for the lower side of an axis.
constexpr int kEdges[12][2][3] = {{{0, 0, 0}, {0, 0, 1}}, {{0, 0, 1}, {0, 1, 1}}, {{0, 1, 1}, {0, 1, 0}},
                                  {{0, 1, 0}, {0, 0, 0}}, {{1, 0, 0}, {1, 0, 1}}, {{1, 0, 1}, {1, 1, 1}},
                                  {{1, 1, 1}, {1, 1, 0}}, {{1, 1, 0}, {1, 0, 0}}, {{0, 0, 0}, {1, 0, 0}},
                                  {{0, 0, 1}, {1, 0, 1}}, {{0, 1, 1}, {1, 1, 1}}, {{0, 1, 0}, {1, 1, 0}}};

Point corner(const bbox& box, const int (&ends)[3], bool exchanged) {
  const int x = ends[exchanged ? 1 : 0], y = ends[exchanged ? 0 : 1], z = ends[2];
  return {(x == 0 ? box.min : box.max)[0], (y == 0 ? box.min : box.max)[1], (z == 0 ? box.min : box.max)[2]};
}

int cut_one_by_one(cutplane& cut, const bbox& box, bool exchanged, double (&found)[3][12]) {
  int count = 0;
  for (const auto& edge : kEdges) {
    seed(cut, corner(box, edge[0], exchanged), corner(box, edge[1], exchanged));
    double x, y, z;
    if (cutplane_intersect_segment(&cut, &x, &y, &z) == 0) continue;
    found[0][count] = x;
    found[1][count] = y;
    found[2][count++] = z;
  }
  return count;
}

TEST(CuttingPlane, CutsBoxesAsItCutsTheirEdgesOneByOne) {
  constexpr unsigned kSeed = 20240511;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  constexpr double kOdd[] = {0.0,  -0.0,  1,    -1,    1e-9,   5e-9,   2,
                             kInf, -kInf, kNan, 1e300, 1e-170, -1e160, 1e-320};
  std::uniform_real_distribution<double> plain(-10, 10);
  for (unsigned round = 0; round < 40000 && !HasFailure(); ++round) {
    const auto value = [&] {
      return random() % 8 < round % 8 ? plain(random) : kOdd[random() % std::size(kOdd)];
    };
    const auto point = [&] { return Point{value(), value(), value()}; };
    cutplane cut = plane_through(point(), point(), point());
    const bbox box = {{value(), value(), value()}, {value(), value(), value()}};
    cutplane model = cut;
    double found[3][12] = {}, expected[3][12] = {};
    const int count = cut_one_by_one(model, box, false, expected);
    EXPECT_EQ(cutplane_intersect_bbox_lines(&cut, &box, found[0], found[1], found[2]), count);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_TRUE(same(found[i], expected[i], 12));
    EXPECT_TRUE(same(cut.seg_x, model.seg_x, kDoubles));

    const int crossed = cut_one_by_one(model, box, true, expected);
    bbox_init(&model.plane_bbox);
    for (int i = 0; i < crossed; ++i) {
      bbox_update_from_xyz(&model.plane_bbox, expected[0][i], expected[1][i], expected[2][i]);
    }
    EXPECT_EQ(cutplane_set_plane_bbox(&cut, &box), crossed > 0 ? 0 : 1);
    EXPECT_TRUE(same(cut.seg_x, model.seg_x, kDoubles));
  }
}

// The determinant of the seeds and a point, in more precision where there is some.
long double side_of(const cutplane& cut, const Point& p) {
  const auto [x1, x2, x3] = cut.seed_x;
  const auto [y1, y2, y3] = cut.seed_y;
  const auto [z1, z2, z3] = cut.seed_z;
  const long double a = p[0] - x1, b = p[1] - y1, c = p[2] - z1, d = x2 - x1, e = y2 - y1, f = z2 - z1;
  const long double g = x3 - x1, h = y3 - y1, i = z3 - z1;
  return a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
}

TEST(CuttingPlane, AgreesWithTheSidesOfTheCorners) {
  constexpr unsigned kSeed = 77;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  std::uniform_real_distribution<double> low(-10, 0), high(0, 10), any(-10, 10);
  for (int round = 0; round < 5000 && !HasFailure(); ++round) {
    const auto point = [&] { return Point{any(random), any(random), any(random)}; };
    cutplane cut = plane_through(point(), point(), point());
    const bbox box = {{low(random), low(random), low(random)}, {high(random), high(random), high(random)}};
    double found[3][12];
    const int count = cutplane_intersect_bbox_lines(&cut, &box, found[0], found[1], found[2]);
    int crossed = 0;
    for (const auto& edge : kEdges) {
      const Point from = corner(box, edge[0], false), to = corner(box, edge[1], false);
      const long double before = side_of(cut, from), after = side_of(cut, to);
      if ((before < 0) == (after < 0)) continue;
      ASSERT_LT(crossed, count);
      for (std::size_t i = 0; i < 3; ++i) {
        const long double at = from[i] + before / (before - after) * (to[i] - from[i]);
        EXPECT_NEAR(found[i][crossed], static_cast<double>(at), 1e-8);
      }
      ++crossed;
    }
    EXPECT_EQ(count, crossed);
    EXPECT_EQ(cutplane_intersects_bbox(&cut, &box), crossed > 0 ? 1 : 0);
  }
}

TEST(CuttingPlane, TouchesBoxesByTheSignOfZero) {
  const bbox box = {{0, 0, 0}, {1, 1, 1}};
  double xs[12], ys[12], zs[12];
  cutplane cut = plane_through({3, 0, 0}, {0, 3, 0}, {0, 0, 3});
  EXPECT_EQ(cutplane_intersect_bbox_lines(&cut, &box, xs, ys, zs), 3);
  for (const double* values : {xs, ys, zs}) EXPECT_TRUE(same(values, std::begin({1., 1., 1.}), 3));
  EXPECT_EQ(cutplane_set_plane_bbox(&cut, &box), 0);
  EXPECT_EQ(cut.plane_bbox.min[0], 1);
  EXPECT_EQ(cut.plane_bbox.max[2], 1);
  EXPECT_EQ(cutplane_intersects_bbox(&cut, &box), 1);  // the corner's 0 is positive, the others are below
  for (double& coefficient : cut.plane) coefficient = -coefficient;
  EXPECT_EQ(cutplane_intersects_bbox(&cut, &box), 0);
}

TEST(CuttingPlane, AnswersNullAndExhaustedMemory) {
  cutplane* const made = cutplane_new();
  const cutplane zeros = {};
  EXPECT_TRUE(same(made->seg_x, zeros.seg_x, kDoubles));
  cutplane cut = plane_through({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  seed(cut, {0, 0, -1}, {0, 0, 1});
  cut.last_t = 9;
  cutplane_copy(made, &cut);
  const bbox box = {{-1, -1, -1}, {1, 1, 1}};
  double v[9] = {};
  for (int null = 0; null < 10; ++null) {
    cutplane* const in = null == 0 ? nullptr : &cut;
    const auto out = [&](int i) { return null == i ? nullptr : v + i - 1; };
    EXPECT_EQ(
        cutplane_get_plane_points(in, out(1), out(2), out(3), out(4), out(5), out(6), out(7), out(8), out(9)),
        1);
    if (null < 5) {
      EXPECT_EQ(cutplane_get_last_t_xyz(in, out(1), out(2), out(3), out(4)), -1);
    }
    if (null < 4) {
      EXPECT_EQ(cutplane_intersect_line(in, out(1), out(2), out(3)), 0);
      EXPECT_EQ(cutplane_intersect_segment(in, out(1), out(2), out(3)), 0);
      EXPECT_EQ(cutplane_intersect_bbox_lines(in, &box, out(1), out(2), out(3)), 0);
    }
  }
  EXPECT_EQ(cutplane_intersects_bbox(nullptr, &box) + cutplane_intersects_bbox(&cut, nullptr), 0);
  EXPECT_EQ(cutplane_set_plane_bbox(nullptr, &box) + cutplane_set_plane_bbox(&cut, nullptr), 2);
  EXPECT_EQ(cutplane_intersect_bbox_lines(&cut, nullptr, v, v, v), 0);
  EXPECT_TRUE(same(made->seg_x, cut.seg_x, kDoubles));
  EXPECT_EQ(*std::max_element(v, v + 9), 0);
  EXPECT_EQ(cutplane_seed_plane(nullptr, 0, 0, 0, 1, 0, 0, 0, 1, 0), nullptr);
  EXPECT_EQ(cutplane_seed_line_segment(nullptr, 0, 0, 0, 1, 0, 0), -1);
  EXPECT_EQ(cutplane_normalize(nullptr), 1);
  EXPECT_EQ(cutplane_distance_to_point(nullptr, 1, 2, 3), 0);
  EXPECT_EQ(cutplane_init(nullptr) + cutplane_free(nullptr) + cutplane_free(made), 0);
  errno = 7;
  orx::testing::allocations_left = 0;
  EXPECT_EQ(cutplane_new(), nullptr);
  orx::testing::allocations_left = INT_MAX;
  EXPECT_EQ(errno, 7);
}

}  // namespace
