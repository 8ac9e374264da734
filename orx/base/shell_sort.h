// Shell sort of any collection that has positions. Internal to the library.
#pragma once

namespace orx {

// Sorts in ascending order with the gaps n/2, n/4 ... 1. Calls compare(i, j) and swap(i, j) with two
// positions i < j below `n`. Hosts see these calls through sm_sort and genlist_sort and may rely on their
// order.
template <typename Position, typename Compare, typename Swap>
void shell_sort(Position n, Compare compare, Swap swap) {
  for (Position gap = n / 2; gap > 0; gap /= 2) {
    for (Position next = gap; next < n; ++next) {
      Position place = next;
      while (place >= gap && compare(place - gap, place) > 0) {
        swap(place - gap, place);
        place -= gap;
      }
    }
  }
}

}  // namespace orx
