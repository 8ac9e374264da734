// A heap that fails when a test wants it to: operator new, malloc of the library's objects, and what libxml2
// allocates.
#pragma once

namespace orx::testing {

enum class HeapFailure { kOnce, kFromThen };

// Lets `count` allocations of this thread succeed; then the next or all others fail.
void fail_heap_after(int count, HeapFailure how);

// Lets all succeed again. Whether any has failed.
bool restore_heap();

// From fail_heap_after to restore_heap, takes new blocks from memory that may be lost, since libxml2 loses
// some of its own. A block that is freed twice ends the process.
void use_arena(bool uses);

// How many blocks of operator new and libxml2 are in use.
int blocks_in_use();

}  // namespace orx::testing
