#include <orx/text/sorting.h>

#include <orx/base/shell_sort.h>

#include <utility>

namespace {

// The positions from `first` up to, but not including, `end`.
struct Range {
  int first, end;

  int Size() const { return end - first; }
};

// The capacity for parts that wait to be sorted. The first kWaitingInOrder waiting parts are sorted from left
// to right. After that the larger of two parts waits, so each further waiting part has at most half the size
// of the one before, and kWaitingBySize of them suffice for every int.
constexpr int kWaitingInOrder = 1024;
constexpr int kWaitingBySize = 32;

// Moves the first element of the range, the pivot, to its final position and returns that position. No
// element before it is greater, and no element after it is less. The pivot is always at one end of the
// unchecked elements: at `low` and at `high` in turn.
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
