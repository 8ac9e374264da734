// Two sorts that see a collection through positions only: one callback compares, another exchanges the
// elements at two of them.
//
// Positions count from 0. Both sorts end in ascending order, neither is stable, and neither keeps anything
// outside its call or allocates: callbacks may sort other collections, and so may other threads. A collection
// of fewer than two elements, or a null callback, is left alone without a call. A comparison that contradicts
// itself gives any order; qksort ends all the same if its results depend on the two elements alone and every
// swap is made, sm_sort in any case.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// Negative, 0 or positive as the element at `i` is less than, equal to or greater than the one at `j`.
typedef int (*orx_sort_compare_fn)(int i, int j);
// Exchanges the two elements. The result is ignored.
typedef int (*orx_sort_swap_fn)(int i, int j);

// Quicksort with the first element of each part as its pivot: elements that are in ascending or descending
// order already take a comparison for each pair. Parts are sorted from the left to the right; only where more
// than a thousand parts wait for their turn, smaller ones come first. The stack needed is the same for every
// input.
ORX_API void qksort(int n, orx_sort_compare_fn compare, orx_sort_swap_fn swap);

// Shell sort with gaps n/2, n/4 ... 1. Returns 0.
ORX_API int sm_sort(int n, orx_sort_compare_fn compare, orx_sort_swap_fn swap);

ORX_C_END
