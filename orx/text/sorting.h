// Two sorts that see a collection only through positions: one callback compares the elements at two
// positions, the other exchanges them.
//
// Positions count from 0. Both sorts give ascending order, and neither is stable. They allocate nothing and
// keep no state outside the call, so callbacks and other threads may sort other collections. With fewer than
// two elements or a null callback nothing is called. Hosts may rely on the order of the calls.
//
// A comparison that contradicts itself gives an undefined order. sm_sort ends in any case; qksort ends if the
// result of a comparison depends only on the two elements and every swap is made.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// Returns a negative number, 0 or a positive number as the element at `i` is less than, equal to or greater
// than the element at `j`.
typedef int (*orx_sort_compare_fn)(int i, int j);
// Exchanges the elements at `i` and `j`. The result is ignored.
typedef int (*orx_sort_swap_fn)(int i, int j);

// Quicksort of `n` elements, with the first element of each part as its pivot. Elements that are already in
// ascending or descending order therefore take quadratic time. Parts are sorted from left to right; only when
// more than a thousand parts are waiting, smaller parts come first. The stack size does not depend on the
// input.
ORX_API void qksort(int n, orx_sort_compare_fn compare, orx_sort_swap_fn swap);

// Shell sort of `n` elements with the gaps n/2, n/4 ... 1. Always returns 0.
ORX_API int sm_sort(int n, orx_sort_compare_fn compare, orx_sort_swap_fn swap);

ORX_C_END
