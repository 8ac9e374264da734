#include <orx/text/sorting.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Values = std::vector<int>;

Values values;
std::string calls;

int& value(int position) { return values.at(static_cast<std::size_t>(position)); }

int compare(int i, int j) {
  calls += {' ', 'c', static_cast<char>('0' + i), static_cast<char>('0' + j)};
  return value(i) - value(j);
}

int swap(int i, int j) {
  if (calls.size() < 1000) calls += {' ', 's', static_cast<char>('0' + i), static_cast<char>('0' + j)};
  std::swap(value(i), value(j));
  return -1;
}

// Sorts another collection with both sorts before it compares.
int sort_and_compare(int i, int j) {
  const std::string outer_calls = calls;
  const Values outer = std::exchange(values, {2, 3, 1});
  qksort(2, compare, swap);
  EXPECT_EQ(sm_sort(3, compare, swap), 0);
  EXPECT_EQ(std::exchange(values, outer), (Values{1, 2, 3}));
  calls = outer_calls;
  return compare(i, j);
}

TEST(Sorting, CallsComeInADefinedOrder) {
  using Row = std::tuple<Values, const char*, const char*>;
  for (const auto& [input, quick, shell] :
       {Row{{}, "", ""}, Row{{7}, "", ""}, Row{{1, 1}, " c10", " c01"},
        Row{{1, 2, 3, 4}, " c30 c20 c10 c31 c21 c32", " c02 c13 c01 c12 c23"},
        Row{{3, 1, 2}, " c20 s20 c02 c12 c10 s10 c01", " c01 s01 c12 s12 c01"},
        Row{{2, 3, 1}, " c20 s20 c02 c12 s12 c21", " c01 c12 s12 c01 s01"},
        Row{{3, 2, 1, 5, 4},  // with parts on both sides of the first pivot
            " c40 c30 c20 s20 c02 c12 c10 c43 s43 c34",
            " c02 s02 c13 c24 c01 c12 c23 c34 s34 c23"},
        Row{{5, 4, 3, 2, 1},
            " c40 s40 c04 c14 c24 c34 c30 c20 c10 c31 s31 c13 c23 c21",
            " c02 s02 c13 s13 c24 s24 c02 s02 c01 c12 c23 c34"}}) {
    for (const auto order : {compare, sort_and_compare}) {
      const auto expect_sorts = [&, &unsorted = input](auto sort, const char* expected) {
        calls.clear();
        values = unsorted;
        sort(static_cast<int>(values.size()), order, swap);
        EXPECT_EQ(calls, expected) << testing::PrintToString(unsorted);
        EXPECT_TRUE(std::is_sorted(values.begin(), values.end())) << testing::PrintToString(values);
      };
      expect_sorts(qksort, quick);
      expect_sorts(sm_sort, shell);
    }
  }
}

TEST(Sorting, NullCallbacksAndEmptyCollectionsCallNothing) {
  calls.clear();
  qksort(-1, compare, swap);
  qksort(2, nullptr, swap);
  qksort(2, compare, nullptr);
  EXPECT_EQ(sm_sort(-1, compare, swap) + sm_sort(2, nullptr, swap) + sm_sort(2, compare, nullptr), 0);
  EXPECT_EQ(calls, "");
}

// Every pivot leaves two greater elements on its right, so the greatest possible number of parts waits.
Values waiting_parts(int n) {
  Values made{0, 1, 2};
  for (int i = 3; i < n; i += 3) {
    const int first = std::exchange(made[0], i);
    made.insert(made.end(), {first, i + 1, i + 2});
  }
  return made;
}

std::uintptr_t shallowest, deepest;

int compare_and_measure_stack(int i, int j) {
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  shallowest = std::max(shallowest, here);
  deepest = std::min(deepest, here);
  return value(i) - value(j);
}

TEST(Sorting, StackDoesNotDependOnTheInput) {
  Values sorted(4500);
  std::iota(sorted.begin(), sorted.end(), 0);
  for (const Values& input : {sorted, Values(sorted.rbegin(), sorted.rend()), waiting_parts(4500)}) {
    values = input;
    shallowest = 0;
    deepest = UINTPTR_MAX;
    qksort(4500, compare_and_measure_stack, swap);
    EXPECT_EQ(values, sorted);
    EXPECT_LT(shallowest - deepest, 4096U);
  }
}

}  // namespace
