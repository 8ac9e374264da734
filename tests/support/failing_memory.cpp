#include <tests/support/failing_memory.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <new>

int orx::testing::allocations_left = INT_MAX;

namespace {

bool may_allocate() {
  if (orx::testing::allocations_left-- > 0) return true;
  errno = ENOMEM;
  return false;
}

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  return may_allocate() ? ::operator new(size) : nullptr;
}

void* operator new[](std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  return may_allocate() ? ::operator new[](size) : nullptr;
}
