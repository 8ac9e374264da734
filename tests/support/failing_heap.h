// A heap that fails when a test asks for it: operator new, malloc of the library's objects, and the memory of
// libxml2.
#pragma once

namespace orx::testing {

enum class HeapFailure { kOnce, kFromThen };

// Lets `count` allocations of this thread succeed. Then one allocation fails, or all of them. With
// `may_lose_blocks` new blocks come from memory that leak checkers do not see, since libxml2 loses some of
// its own; a block that is freed twice ends the process.
void fail_heap_after(int count, HeapFailure how, bool may_lose_blocks = false);

// Lets all allocations succeed again. Returns whether one has failed.
bool restore_heap();

// The number of blocks of operator new and of libxml2 that are in use.
int blocks_in_use();

}  // namespace orx::testing
