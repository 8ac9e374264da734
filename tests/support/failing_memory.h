// Lets operator new (std::nothrow) run out of memory.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>

namespace orx::testing {

// The number of allocations that still succeed, initially INT_MAX.
extern int allocations_left;

// Takes one of them, or sets errno.
bool may_allocate();

// Makes a call that can allocate a few times only. The call must keep errno.
template <class Call>
auto without_memory(Call call, int allocations = 0) {
  errno = 7;
  allocations_left = allocations;
  const auto result = call();
  allocations_left = INT_MAX;
  EXPECT_EQ(errno, 7);
  return result;
}

}  // namespace orx::testing
