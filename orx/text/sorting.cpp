#include <orx/text/sorting.h>

#include <orx/base/shell_sort.h>

#include <utility>

namespace {

struct Range {
  int first, end;

  int Size() const { return end - first; }
};

// Parts that wait are sorted in their order up to the first number. Beyond it the larger of two parts waits,
// so that every further part that waits is at most half of the one before.
constexpr int kWaitingInOrder = 1024;
constexpr int kWaitingBySize = 32;

// Puts the first element where it belongs, with no greater ones before and no lesser ones behind, and returns
// that position. The pivot is in turn at the lower and at the upper end of what is left to look at.
int partition(const Range& range, orx_sort_compare_fn compare, orx_sort_swap_fn swap) {
  int low = range.first;
  int high = range.end - 1;
  while (low != high) {
    while (high > low && compare(high, low) >= 0) --high;
    if (high == low) break;
    swap(high, low);
    while (low < high && compare(low, high) <= 0) ++low;
    if (low != high) swap(low, high);
  }
  return low;
}

}  // namespace

void qksort(int n, orx_sort_compare_fn compare, orx_sort_swap_fn swap) {
  if (compare == nullptr || swap == nullptr) return;
  Range waiting[kWaitingInOrder + kWaitingBySize];
  waiting[0] = {0, n};
  int count = 1;
  while (count > 0) {
    Range range = waiting[--count];
    while (range.Size() > 1) {
      const int pivot = partition(range, compare, swap);
      Range later{pivot + 1, range.end};
      range.end = pivot;
      if (count >= kWaitingInOrder && later.Size() < range.Size()) std::swap(later, range);
      if (later.Size() > 1) waiting[count++] = later;
    }
  }
}

int sm_sort(int n, orx_sort_compare_fn compare, orx_sort_swap_fn swap) {
  if (compare != nullptr && swap != nullptr) orx::shell_sort(n, compare, swap);
  return 0;
}
