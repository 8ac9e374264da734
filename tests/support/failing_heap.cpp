#include <libxml/xmlmemory.h>
#include <tests/support/failing_heap.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __real_realloc(void* block, std::size_t size);

namespace {

using orx::testing::HeapFailure;

thread_local int left = INT_MAX;  // the allocations that succeed before the next failure
thread_local HeapFailure failure = HeapFailure::kOnce;
thread_local bool has_failed = false;
std::atomic<int> in_use = 0;

// Memory for blocks that may be lost. A mark before each block says that the block is in use.
thread_local bool uses_arena = false;
constexpr std::size_t kMark = alignof(std::max_align_t);
alignas(std::max_align_t) char arena[std::size_t{16} << 20];
std::size_t arena_used = 0;

bool is_in_arena(const void* block) { return block >= arena && block < std::end(arena); }
char& mark_of(void* block) { return static_cast<char*>(block)[-static_cast<std::ptrdiff_t>(kMark)]; }

void* allocate_in_arena(std::size_t size) {
  void* block = arena + arena_used + kMark;
  arena_used += (kMark + size + kMark - 1) / kMark * kMark;
  if (arena_used > sizeof arena) std::abort();
  mark_of(block) = 1;
  return block;
}

bool may_allocate() {
  if (left == INT_MAX || left-- > 0) return true;
  left = failure == HeapFailure::kOnce ? INT_MAX : 0;
  has_failed = true;
  errno = ENOMEM;
  return false;
}

void* allocate(std::size_t size) {
  if (!may_allocate()) return nullptr;
  if (uses_arena) return allocate_in_arena(size);
  void* block = __real_malloc(size);
  if (block != nullptr) ++in_use;
  return block;
}

void release(void* block) {
  if (is_in_arena(block)) {
    if (mark_of(block) == 0) std::abort();  // freed twice
    mark_of(block) = 0;
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
  std::memmove(moved, block, size);  // also copies what follows the old block, which does no harm
  release(block);
  return moved;
}

char* copy_text(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  void* copy = allocate(size);
  return copy != nullptr ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}

// Before libxml2 allocates anything.
[[maybe_unused]] const int set_up = xmlMemSetup(release, allocate, reallocate, copy_text);

}  // namespace

namespace orx::testing {

void fail_heap_after(int count, HeapFailure how, bool may_lose_blocks) {
  left = count;
  failure = how;
  uses_arena = may_lose_blocks;
  has_failed = false;
}

bool restore_heap() {
  left = INT_MAX;
  uses_arena = false;
  return has_failed;
}

int blocks_in_use() { return in_use; }

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
