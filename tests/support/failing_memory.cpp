#include <tests/support/failing_memory.h>

#include <cstddef>
#include <new>

int orx::testing::allocations_left = INT_MAX;

bool orx::testing::may_allocate() {
  if (allocations_left-- > 0) return true;
  errno = ENOMEM;
  return false;
}

void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  return orx::testing::may_allocate() ? ::operator new(size) : nullptr;
}

void* operator new[](std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  return orx::testing::may_allocate() ? ::operator new[](size) : nullptr;
}
