// The Shell sort, for whatever has positions.
#pragma once

namespace orx {

// Calls compare(i, j) and swap(i, j) with positions below `n`, i before j.
template <typename Position, typename Compare, typename Swap>
void shell_sort(Position n, Compare compare, Swap swap) {
  for (Position gap = n / 2; gap > 0; gap /= 2) {
    for (Position end = gap; end < n; ++end) {
      Position late = end;
      while (late >= gap && compare(late - gap, late) > 0) {
        swap(late - gap, late);
        late -= gap;
      }
    }
  }
}

}  // namespace orx
