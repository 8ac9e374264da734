// genlist: a doubly linked list of the caller's pointers, with a cursor.
//
// The list never reads an item. It compares, exchanges and releases items through three callbacks. Items keep
// the order in which they were added; genlist_insert and genlist_sort order them. A `node` in the name of a
// function means an item; the nodes themselves are not visible.
//
// Items must not be null. The caller owns them unless the list has a `free_item`. A null list is treated as
// an empty list to which nothing can be added. Unless stated otherwise, functions return 0 when they have
// done their work and 1 when they have not. errno is unchanged.
//
// A list may be used by one thread at a time; different threads may use different lists. Callbacks may use
// other lists.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

typedef struct genlist genlist;

// Returns a negative number, 0 or a positive number as `a` comes before, matches or comes after `b`. In
// searches `a` is an item and `b` is the caller's key. genlist_insert and genlist_sort pass two items. Hosts
// may rely on the order of the calls.
typedef int (*genlist_compare_fn)(void* a, void* b);
// Exchanges the contents of the two items. The result is ignored.
typedef int (*genlist_swap_fn)(void* a, void* b);
// Releases the item, which the list no longer contains but still counts.
typedef void (*genlist_free_fn)(void* item);

// Creates an empty list, or returns null when memory runs out. The caller releases it with genlist_free. Each
// callback may be null. Without `compare` searches find nothing and genlist_insert fails; without `compare`
// or `swap` genlist_sort fails; without `free_item` items are not released.
ORX_API genlist* genlist_new(genlist_compare_fn compare, genlist_swap_fn swap, genlist_free_fn free_item);

// Appends the item. Returns 1, with the list unchanged, when memory runs out.
ORX_API int genlist_add(genlist* list, void* item);

// Inserts the item into a list in ascending order. An item that is equal to the first one goes before it; any
// other item goes after all items that are equal to it. The search begins at the end, so items that arrive
// nearly in order are cheap. Returns 1, with the list unchanged, without `compare` or when memory runs out.
ORX_API int genlist_insert(genlist* list, void* item);

// Returns the first item that matches the key, or null. The cursor does not move.
ORX_API void* genlist_find(genlist* list, void* key);

// Removes and releases the first item that matches the key. A cursor on that item moves to the next one.
// Returns 1 for an empty list and 0 in all other cases, also when nothing matches or the list is null.
ORX_API int genlist_delete(genlist* list, void* key);

// Removes and releases all items and returns the list, which keeps its memory for later items.
ORX_API genlist* genlist_delete_nodes(genlist* list);

// Move the cursor to the first item, to the next item, or to the item at an index, which counts from 0, and
// return that item. Without such an item they return null, and the cursor is on no item; only a negative
// index leaves it on the first item. Adding and inserting do not move the cursor.
ORX_API void* genlist_get_first_node(genlist* list);
ORX_API void* genlist_get_next_node(genlist* list);
ORX_API void* genlist_get_node_by_index(genlist* list, int index);

// Returns the number of items.
ORX_API unsigned int genlist_get_num_nodes(genlist* list);

// Return the item after or before the first item that matches the key, or null. If `wrap` is not 0, the first
// item follows the last one. The cursor does not move.
ORX_API void* genlist_get_following_node(genlist* list, void* key, int wrap);
ORX_API void* genlist_get_preceeding_node(genlist* list, void* key, int wrap);

// Sorts with sm_sort (text/sorting.h). The items keep their places, and `swap` exchanges their contents.
// Returns 1, without calling anything, for fewer than two items, without `compare` or `swap`, or when memory
// runs out.
ORX_API int genlist_sort(genlist* list);

// Releases all items and the list. Null is allowed. Always returns null.
ORX_API genlist* genlist_free(genlist* list);

ORX_C_END
