#include <orx/geometry/cutting_plane.h>

#include <gtest/gtest.h>
#include <tests/support/failing_memory.h>
#include <tests/support/geometry.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <random>

using namespace orx::testing;

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

TEST(CuttingPlane, SeedingComputesCoefficientsAndDirections) {
  cutplane cut = plane_through({1, 2, 3}, {2, 4, 5}, {3, 3, 1});
  EXPECT_TRUE(same(cut.plane, std::begin({-6., 6., -3., 3.}), 4) && cut.normal_len == 9);
  EXPECT_EQ(cutplane_distance_to_point(&cut, -1, 4, 2), 3);
  EXPECT_EQ(cutplane_normalize(&cut), 0);
  EXPECT_TRUE(same(cut.plane, std::begin({-6 / 9., 6 / 9., -3 / 9., 3 / 9.}), 4) && cut.normal_len == 1);

  cut = plane_through({1, 2, 3}, {2, 4, 7}, {3, 6, 11});
  EXPECT_EQ(cutplane_normalize(&cut), 1);
  EXPECT_TRUE(std::isnan(cutplane_distance_to_point(&cut, 1, 2, 3)));
  seed(cut, {1, 1, 1}, {2, 3, -1});
  EXPECT_TRUE(same(cut.seg_vec, std::begin({1., 2., -2., 3., 1 / 3., 2 / 3., -2 / 3.}), 7));
  double p[9];
  EXPECT_EQ(cutplane_get_plane_points(&cut, p, p + 1, p + 2, p + 3, p + 4, p + 5, p + 6, p + 7, p + 8), 0);
  EXPECT_TRUE(same(p, std::begin({1., 2., 3., 2., 4., 7., 3., 6., 11.}), 9));
}

// The corners that each edge joins.
constexpr int kEdges[12][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                               {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};

Point corner(const bbox& box, int k, bool exchanged) {
  const bool first = k >= 4, second = k % 4 > 1, third = (k + 1) % 4 > 1;
  const bool x = exchanged ? second : first, y = exchanged ? first : second;
  return {(x ? box.max : box.min)[0], (y ? box.max : box.min)[1], (third ? box.max : box.min)[2]};
}

enum Extent { kSegment, kLine };

// The model: where the plane meets the record's segment or its line, with one comparison after the other.
bool meets(cutplane& cut, Extent extent, Point& at) {
  const auto& [a, b, c, d] = cut.plane;
  const auto& u = cut.seg_dir;
  const Point start = {cut.seg_x[0], cut.seg_y[0], cut.seg_z[0]};
  const double depth = -(d + a * start[0] + b * start[1] + c * start[2]);
  const double rise = a * u[0] + b * u[1] + c * u[2], t = depth / rise;
  cut.last_t = 0;
  const bool is_parallel = !(std::fabs(rise) > 1e-8), is_start = std::fabs(t) <= 1e-8;
  if (is_parallel && (extent == kLine || !(std::fabs(depth) <= 1e-8))) return false;
  at = start;
  if (is_parallel || (is_start && extent == kSegment)) return true;
  const bool is_end = extent == kSegment && std::fabs(t - cut.seg_len) <= 1e-8;
  const bool is_within = t + 1e-8 >= 0 && cut.seg_len >= t - 1e-8;
  for (std::size_t i = 0; i < 3; ++i) at[i] += t * u[i];
  if (is_end) at = {cut.seg_x[1], cut.seg_y[1], cut.seg_z[1]};
  if (is_end || is_within || extent == kLine) cut.last_t = is_end ? cut.seg_len : t;
  return is_end || is_within || extent == kLine;
}

int cut_one_by_one(cutplane& cut, const bbox& box, bool exchanged, double (&found)[3][12]) {
  int count = 0;
  for (const auto& [from, to] : kEdges) {
    seed(cut, corner(box, from, exchanged), corner(box, to, exchanged));
    Point at;
    if (!meets(cut, kSegment, at)) continue;
    for (std::size_t i = 0; i < 3; ++i) found[i][count] = at[i];
    ++count;
  }
  return count;
}

// Whether corners are on both sides of the plane; -1 when a sum is not a number.
int crossed_by(const cutplane& cut, const bbox& box) {
  const auto& [a, b, c, d] = cut.plane;
  int below = 0;
  for (int k = 0; k < 8; ++k) {
    const auto [x, y, z] = corner(box, k, false);
    const double sum = a * x + b * y + c * z + d;
    if (std::isnan(sum)) return -1;
    below += std::signbit(sum) ? 1 : 0;
  }
  return below % 8 != 0 && (a != 0 || b != 0 || c != 0) ? 1 : 0;
}

TEST(CuttingPlane, AgreesWithItsModelToTheLastBit) {
  constexpr unsigned kSeed = 20240511;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  constexpr double kOdd[] = {0.0,  -0.0,  1,    -1,    1e-9,   1e-8,   2,
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
    for (int i = 0; i < crossed; ++i)
      bbox_update_from_xyz(&model.plane_bbox, expected[0][i], expected[1][i], expected[2][i]);
    EXPECT_EQ(cutplane_set_plane_bbox(&cut, &box), crossed > 0 ? 0 : 1);
    EXPECT_TRUE(same(cut.seg_x, model.seg_x, kDoubles));
    seed(cut, point(), point());
    for (const Extent extent : {kSegment, kLine}) {
      const auto meet = extent == kLine ? cutplane_intersect_line : cutplane_intersect_segment;
      Point at = {kUntouched, kUntouched, kUntouched}, wanted, last = at;
      model = cut;
      const bool is_met = meets(model, extent, wanted);
      EXPECT_EQ(meet(&cut, &at[0], &at[1], &at[2]), is_met ? 1 : 0);
      EXPECT_TRUE(same(at.data(), is_met ? wanted.data() : last.data(), 3));
      EXPECT_TRUE(same(cut.seg_x, model.seg_x, kDoubles));
      if (!is_met || extent == kSegment) continue;
      double t;
      EXPECT_EQ(cutplane_get_last_t_xyz(&cut, &t, &last[0], &last[1], &last[2]), 0);
      EXPECT_TRUE(same(last.data(), wanted.data(), 3) && same(&t, &model.last_t, 1));
    }
    const int sides = crossed_by(cut, box);
    if (sides >= 0) {
      EXPECT_EQ(cutplane_intersects_bbox(&cut, &box), sides);
    }
  }
}

TEST(CuttingPlane, HandlesNullAndOutOfMemory) {
  cutplane* const made = cutplane_new();
  const cutplane zeros = {};
  EXPECT_TRUE(same(made->seg_x, zeros.seg_x, kDoubles));
  cutplane cut = plane_through({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  seed(cut, {0, 0, -1}, {0, 0, 1});
  cut.last_t = 9;
  cutplane_copy(made, &cut);
  cutplane cleared = cut;
  EXPECT_TRUE(cutplane_init(&cleared) == 0 && same(cleared.seg_x, zeros.seg_x, kDoubles));
  const bbox box = {{-1, -1, -1}, {1, 1, 1}};
  double v[9] = {};
  expect_refuses_each_null(1, cutplane_get_plane_points, &cut, v, v, v, v, v, v, v, v, v);
  expect_refuses_each_null(-1, cutplane_get_last_t_xyz, &cut, v, v, v, v);
  expect_refuses_each_null(0, cutplane_intersect_line, &cut, v, v, v);
  expect_refuses_each_null(0, cutplane_intersect_segment, &cut, v, v, v);
  expect_refuses_each_null(0, cutplane_intersect_bbox_lines, &cut, &box, v, v, v);
  expect_refuses_each_null(0, cutplane_intersects_bbox, &cut, &box);
  expect_refuses_each_null(1, cutplane_set_plane_bbox, &cut, &box);
  EXPECT_TRUE(same(made->seg_x, cut.seg_x, kDoubles));
  EXPECT_EQ(*std::max_element(v, v + 9), 0);
  EXPECT_EQ(cutplane_seed_plane(nullptr, 0, 0, 0, 1, 0, 0, 0, 1, 0), nullptr);
  EXPECT_EQ(cutplane_seed_line_segment(nullptr, 0, 0, 0, 1, 0, 0), -1);
  EXPECT_EQ(cutplane_normalize(nullptr), 1);
  EXPECT_EQ(cutplane_distance_to_point(nullptr, 1, 2, 3), 0);
  EXPECT_EQ(cutplane_init(nullptr) + cutplane_free(nullptr) + cutplane_free(made), 0);
  EXPECT_EQ(orx::testing::without_memory(cutplane_new), nullptr);
}

}  // namespace
