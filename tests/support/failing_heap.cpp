#include <libxml/xmlmemory.h>
#include <tests/support/failing_heap.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __real_realloc(void* block, std::size_t size);

namespace {

thread_local int left = INT_MAX;
thread_local auto failure = orx::testing::HeapFailure::kOnce;
thread_local bool has_failed = false;
thread_local bool is_waiting = false;  // from fail_heap_after to restore_heap
std::atomic<int> in_use = 0;

bool may_allocate() {
  if (left == INT_MAX || left-- > 0) return true;
  if (failure == orx::testing::HeapFailure::kOnce) left = INT_MAX;
  has_failed = true;
  errno = ENOMEM;
  return false;
}

// Memory that is not checked for leaks. Before each block is its size plus one, or 0 once it is freed.
constexpr std::size_t kHeader = alignof(std::max_align_t);
alignas(std::max_align_t) char arena[std::size_t{16} << 20];
std::size_t arena_used = 0;
bool uses_arena = false;

bool is_in_arena(const void* block) { return block >= arena && block < arena + sizeof arena; }

std::size_t& size_of(void* block) {
  return *reinterpret_cast<std::size_t*>(static_cast<char*>(block) - kHeader);
}

void* allocate_in_arena(std::size_t size) {
  const std::size_t rounded = (size + 2 * kHeader - 1) / kHeader * kHeader;
  if (rounded > sizeof arena - arena_used) std::abort();
  void* block = arena + arena_used + kHeader;
  arena_used += rounded;
  size_of(block) = size + 1;
  return block;
}

void* allocate(std::size_t size) {
  if (!may_allocate()) return nullptr;
  if (uses_arena && is_waiting) return allocate_in_arena(size);
  void* block = __real_malloc(size);
  if (block != nullptr) ++in_use;
  return block;
}

void release(void* block) {
  if (is_in_arena(block)) {
    if (std::exchange(size_of(block), 0) == 0) std::abort();
    return;
  }
  if (block != nullptr) --in_use;
  std::free(block);
}

void* reallocate(void* block, std::size_t size) {
  if (block == nullptr) return allocate(size);
  if (!is_in_arena(block)) return may_allocate() ? __real_realloc(block, size) : nullptr;
  void* moved = allocate(size);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, block, std::min(size, size_of(block) - 1));
  release(block);
  return moved;
}

char* copy_text(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  void* copy = allocate(size);
  return copy != nullptr ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}

// Runs before libxml2 allocates anything.
[[maybe_unused]] const int set_up = xmlMemSetup(release, allocate, reallocate, copy_text);

}  // namespace

namespace orx::testing {

void fail_heap_after(int count, HeapFailure how) {
  left = count;
  failure = how;
  has_failed = false;
  is_waiting = true;
}

bool restore_heap() {
  left = INT_MAX;
  is_waiting = false;
  return has_failed;
}

int blocks_in_use() { return in_use; }

void use_arena(bool uses) { uses_arena = uses; }

}  // namespace orx::testing

extern "C" void* __wrap_malloc(std::size_t size) { return may_allocate() ? __real_malloc(size) : nullptr; }
extern "C" void* __wrap_realloc(void* block, std::size_t size) {
  return may_allocate() ? __real_realloc(block, size) : nullptr;
}

void* operator new(std::size_t size) {
  void* block = allocate(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { release(block); }
