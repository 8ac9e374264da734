// Lets allocations fail: operator new, malloc in the objects of the library, and the allocations of libxml2.
#pragma once

namespace orx::testing {

enum class HeapFailure { kOnce, kFromThen };

// Lets `count` allocations of this thread succeed. After that the next one fails, or all of them.
void fail_heap_after(int count, HeapFailure how);

// Lets all allocations succeed again. Returns whether one has failed.
bool restore_heap();

// Takes new blocks between fail_heap_after and restore_heap from an arena, which hides the leaks of libxml2
// itself. A block that is freed twice ends the process.
void use_arena(bool uses);

// The number of blocks of operator new and libxml2 that are in use.
int blocks_in_use();

}  // namespace orx::testing
