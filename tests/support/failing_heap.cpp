#include <libxml/xmlmemory.h>
#include <tests/support/failing_heap.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __real_realloc(void* block, std::size_t size);

namespace {

thread_local int left = INT_MAX;
thread_local auto failure = orx::testing::HeapFailure::kOnce;
thread_local bool has_failed = false;
std::atomic<int> in_use = 0;

bool may_allocate() {
  if (left == INT_MAX || left-- > 0) return true;
  if (failure == orx::testing::HeapFailure::kOnce) left = INT_MAX;
  has_failed = true;
  errno = ENOMEM;
  return false;
}

void* allocate(std::size_t size) {
  void* block = may_allocate() ? __real_malloc(size) : nullptr;
  if (block != nullptr) ++in_use;
  return block;
}

void* reallocate(void* block, std::size_t size) {
  if (block == nullptr) return allocate(size);
  return may_allocate() ? __real_realloc(block, size) : nullptr;
}

void release(void* block) {
  if (block != nullptr) --in_use;
  std::free(block);
}

char* copy_text(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  void* copy = allocate(size);
  return copy != nullptr ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}

// Before anything that libxml2 allocates.
[[maybe_unused]] const int set_up = xmlMemSetup(release, allocate, reallocate, copy_text);

}  // namespace

namespace orx::testing {

void fail_heap_after(int count, HeapFailure how) {
  left = count;
  failure = how;
  has_failed = false;
}

bool restore_heap() {
  left = INT_MAX;
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
