#include <orx/geometry/bounding_box.h>

#include <gtest/gtest.h>
#include <tests/support/failing_memory.h>
#include <tests/support/geometry.h>

#include <array>
#include <cmath>

using namespace orx::testing;

namespace {

constexpr double kNan = NAN, kInf = INFINITY, kLow = BBOX_EMPTY_MIN, kHigh = BBOX_EMPTY_MAX;
constexpr bbox kEmpty = {{kLow, kLow, kLow}, {kHigh, kHigh, kHigh}};

void expect_box(const bbox& box, const bbox& expected) {
  EXPECT_TRUE(same(box.min, expected.min, 3) && same(box.max, expected.max, 3))
      << testing::PrintToString(box.min) << " to " << testing::PrintToString(box.max);
}

TEST(BoundingBox, GrowsAroundPoints) {
  const std::pair<std::array<double, 3>, bbox> steps[] = {
      {{kNan, kNan, kNan}, kEmpty},
      {{1, 2, 0.0}, {{1, 2, 0.0}, {1, 2, 0.0}}},
      {{0, 5, -0.0}, {{0, 2, 0.0}, {1, 5, 0.0}}},  // neither zero is greater
      {{-2, kNan, -1}, {{-2, 2, -1}, {1, 5, 0.0}}},
      {{2e15, -2e15, kInf}, {{-2, -2e15, -1}, {2e15, 5, kInf}}}};
  bbox box;
  bbox_init(&box);
  for (const auto& [point, expected] : steps) {
    bbox_update(&box, point.data());
    expect_box(box, expected);
  }
}

TEST(BoundingBox, GrowsAroundBoxesAndByDistances) {
  bbox box = {{1, 2, 3}, {2, 4, 8}};
  const bbox other = {{0, 3, -1}, {1, 9, 4}}, upside_down = {{5, 9, 3}, {1, 2, 3}};
  bbox_update_from_bbox(&box, &other);
  expect_box(box, {{0, 2, -1}, {2, 9, 8}});
  bbox_update_from_bbox(&box, &upside_down);
  expect_box(box, {{0, 2, -1}, {5, 9, 8}});
  bbox_expand(&box, -1.5);
  expect_box(box, {{1.5, 3.5, 0.5}, {3.5, 7.5, 6.5}});
  bbox_percent_expand(&box, 0);
  bbox_percent_expand(&box, 50);
  expect_box(box, {{0.5, 1.5, -2.5}, {4.5, 9.5, 9.5}});
  bbox_update_from_bbox(&box, &kEmpty);
  expect_box(box, {{kHigh, kHigh, kHigh}, {kLow, kLow, kLow}});
  bbox empty = kEmpty;
  bbox_percent_expand(&empty, 10);
  expect_box(empty, {{1.2e15, 1.2e15, 1.2e15}, {-1.2e15, -1.2e15, -1.2e15}});
}

TEST(BoundingBox, TouchingIntersectsInPlanAndInSpace) {
  const bbox box = {{0, 0, 0}, {2, 4, 6}};
  using Row = std::tuple<bbox, int, int>;
  for (const auto& [other, in_plan, in_space] :
       {Row{{{1, 1, 1}, {9, 9, 9}}, 1, 1}, Row{{{2, 4, 6}, {3, 5, 7}}, 1, 1},  // a corner
        Row{{{std::nextafter(2, 3), 0, 0}, {3, 4, 6}}, 0, 0}, Row{{{0, 4.5, 0}, {2, 5, 6}}, 0, 0},
        Row{{{0, 0, 7}, {2, 4, 8}}, 1, 0}, Row{{{-kInf, -kInf, -kInf}, {kInf, kInf, kInf}}, 1, 1},
        Row{{{kNan, 1, kNan}, {kNan, 1, kNan}}, 1, 1}, Row{kEmpty, 0, 0}}) {
    SCOPED_TRACE(testing::PrintToString(other.min));
    EXPECT_EQ(bboxes_intersect_2d(&box, &other), in_plan);
    EXPECT_EQ(bboxes_intersect_2d(&other, &box), in_plan);
    EXPECT_EQ(bboxes_intersect(&box, &other), in_space);
    EXPECT_EQ(bboxes_intersect(&other, &box), in_space);
    const bbox point = {{other.min[0], other.min[1], other.min[2]},
                        {other.min[0], other.min[1], other.min[2]}};
    EXPECT_EQ(bbox_pnt_intersect(&box, other.min), bboxes_intersect(&box, &point));
    EXPECT_EQ(bbox_xy_pnt_intersect(&box, other.min), bboxes_intersect_2d(&box, &point));
  }
}

TEST(BoundingBox, GetsCornersUnlessAnArgumentIsNull) {
  const bbox box = {{1, 2, 3}, {4, 5, 6}};
  const double expected[24] = {1, 1, 1, 1, 4, 4, 4, 4, 2, 2, 5, 5, 2, 2, 5, 5, 3, 6, 6, 3, 3, 6, 6, 3};
  double c[24] = {}, v[6] = {};
  const double none[24] = {};
  expect_refuses_each_null(-1, bbox_get_min_max, &box, v, v, v, v, v, v);
  expect_refuses_each_null(-1, bbox_get_corner_points, &box, c, c, c);
  EXPECT_TRUE(same(v, none, 6) && same(c, none, 24));
  EXPECT_EQ(bbox_get_min_max(&box, v, v + 1, v + 2, v + 3, v + 4, v + 5), 0);
  EXPECT_EQ(bbox_get_corner_points(&box, c, c + 8, c + 16), 0);
  EXPECT_TRUE(same(v, box.min, 3) && same(v + 3, box.max, 3) && same(c, expected, 24));
}

TEST(BoundingBox, HandlesNullAndOutOfMemory) {
  const bbox box = {{1, 2, 3}, {4, 5, 6}};
  bbox kept = box;
  expect_refuses_each_null(0, bbox_update_from_bbox, &kept, &box);
  expect_box(kept, box);
  EXPECT_EQ(bbox_init(nullptr) + bbox_update(nullptr, box.min) + bbox_update_from_xyz(nullptr, 1, 2, 3), 0);
  EXPECT_EQ(bbox_expand(nullptr, 1) + bbox_percent_expand(nullptr, 1) + bbox_free(nullptr), 0);
  for (const auto& test : {bboxes_intersect, bboxes_intersect_2d})
    expect_refuses_each_null(0, test, &box, &box);
  for (const auto& test : {bbox_pnt_intersect, bbox_xy_pnt_intersect})
    expect_refuses_each_null(0, test, &box, box.min);
  bbox* const made = bbox_new();
  expect_box(*made, kEmpty);
  bbox_free(made);
  EXPECT_EQ(orx::testing::without_memory(bbox_new), nullptr);
}

}  // namespace
