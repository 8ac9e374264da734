#include <tests/support/failing_memory.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <new>

int orx::testing::allocations_left = INT_MAX;

void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  if (orx::testing::allocations_left-- > 0) return ::operator new(size);
  errno = ENOMEM;
  return nullptr;
}

void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
  return ::operator new(size, nothrow);
}
