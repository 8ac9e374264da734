// A doubly linked list of the caller's pointers, with a cursor.
//
// The list never looks at an item: it compares, exchanges and releases through the three callbacks that it
// was made with. It keeps the order in which items were added; genlist_insert and genlist_sort order them.
// What is called `node` in a name is an item: nodes are the list's own.
//
// Items are not null, and stay the caller's unless the list has a `free_item`. A null handle is an empty list
// to which nothing can be added. Results are 0 for done and 1 for not done, where nothing else is said. A
// list is for one thread at a time; two threads may use two lists, and callbacks may use other lists.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

typedef struct genlist genlist;

// Negative, 0 or positive as `a` comes before, matches or comes after `b`. In a search `a` is an item and `b`
// the caller's key; genlist_insert and genlist_sort pass two items.
typedef int (*genlist_compare_fn)(void* a, void* b);
// Exchanges the contents of two items. The result is ignored.
typedef int (*genlist_swap_fn)(void* a, void* b);
typedef void (*genlist_free_fn)(void* item);

// An empty list, or null when memory runs out; genlist_free releases it. Each callback may be null: without
// `compare` no search finds anything and nothing can be inserted, without either of the first two nothing is
// sorted, and without `free_item` items are not released.
ORX_API genlist* genlist_new(genlist_compare_fn compare, genlist_swap_fn swap, genlist_free_fn free_item);

// Appends. 1, and the list as it was, when memory runs out.
ORX_API int genlist_add(genlist* list, void* item);

// Inserts into a list in ascending order, which it searches from the end: before items equal to the first
// one, else behind all that are equal. 1, and the list as it was, without `compare` or when memory runs out.
ORX_API int genlist_insert(genlist* list, void* item);

// The first item that matches the key, or null.
ORX_API void* genlist_find(genlist* list, void* key);

// Removes and releases the first item that matches the key; a cursor on it moves to the next item. Returns 1
// for an empty list and 0 in every other case: also when nothing matches, and for a null list.
ORX_API int genlist_delete(genlist* list, void* key);

// Removes and releases all items and returns the list, which keeps its memory for items to come.
ORX_API genlist* genlist_delete_nodes(genlist* list);

// The cursor: set to the first item, moved to the next one, set to the item at an index from 0. The item, or
// null when there is none: the cursor is off the list then, or, for a negative index, on the first item.
ORX_API void* genlist_get_first_node(genlist* list);
ORX_API void* genlist_get_next_node(genlist* list);
ORX_API void* genlist_get_node_by_index(genlist* list, int index);

ORX_API unsigned int genlist_get_num_nodes(genlist* list);

// The item behind or before the first one that matches the key, or null; with `wrap` not 0, the list is a
// ring.
ORX_API void* genlist_get_following_node(genlist* list, void* key, int wrap);
ORX_API void* genlist_get_preceeding_node(genlist* list, void* key, int wrap);

// Sorts the contents of the items with sm_sort: every item stays where it is, and gets other contents. 1 for
// fewer than two items, without `compare` or `swap`, or when memory runs out; nothing is called then.
ORX_API int genlist_sort(genlist* list);

// Releases all items and the list. Returns null.
ORX_API genlist* genlist_free(genlist* list);

ORX_C_END
