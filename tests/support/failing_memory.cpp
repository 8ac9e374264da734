#include <tests/support/failing_memory.h>

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

// The linker calls the first for malloc, and gives malloc the second name.
extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) { return may_allocate() ? __real_malloc(size) : nullptr; }
