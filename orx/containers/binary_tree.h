// bto_tree: a height-balanced (AVL) search tree of the host's items.
//
// The items are the nodes: each begins with a bto_base_object, and the tree links them through it without
// allocating anything. What an item holds, only the three callbacks know. From its insertion on an item
// belongs to the tree, which gives it to `free_item` when it is deleted and when the tree is freed. An item
// stays where it is in memory, and what it is ordered by must not change while it is in the tree.
//
// A key is an item-shaped probe: the comparison gets it in the place of an item, and on either side.
// Callbacks may read the tree (look up, traverse) and use others as they like; they must not change the tree
// that calls them. Nothing here locks: a tree belongs to one thread at a time, different trees are
// independent.
//
//   bto_new -> bto_init_all_functions -> add, get, delete, traverse in any order -> bto_free
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>
#include <stdint.h>

// The head of every item. All of it is the tree's while the item is in it.
typedef struct bto_base_object {
  struct bto_base_object* left;   // items that order before this one
  struct bto_base_object* right;  // items that order after it
  int16_t balance;                // height of the right subtree less that of the left: -1, 0 or 1
} bto_base_object;

// Negative, 0, positive: a orders before b, the same, after.
typedef int (*bto_compare_fn)(void* a, void* b);
// Visits or releases an item; the result is ignored.
typedef int (*bto_item_fn)(void* item);

typedef struct bto_tree {
  bto_compare_fn compare;
  int32_t compare_set;  // this flag and the next two: 1 once the callbacks are installed
  bto_item_fn visit;
  int32_t visit_set;
  bto_item_fn free_item;
  int32_t free_set;
  int8_t height_changed;  // 1 when the last insertion or deletion changed the height of the tree
  bto_base_object* root;  // null when the tree is empty
} bto_tree;

ORX_C_BEGIN

// An empty tree without callbacks; null when memory is exhausted.
ORX_API bto_tree* bto_new(void);

// Each callback may be null: without `compare` nothing is added, found or deleted, without `visit` nothing is
// visited, and without `free_item` the items stay the caller's. 0, or 1 for a null tree.
ORX_API int bto_init_all_functions(bto_tree* tree, bto_compare_fn compare, bto_item_fn visit,
                                   bto_item_fn free_item);

// Calls compare(item, stored item) on the way down. An item equal to a stored one is not added but released:
// the pointer that comes back, always the one given, is then no longer valid. A null item is not added.
ORX_API void* bto_add_item(bto_tree* tree, void* item);

// Calls compare(key, stored item). The item is released once the tree is whole again, with null links; an
// absent key changes nothing. Always 0.
ORX_API int bto_delete_item(bto_tree* tree, void* key);

// Calls compare(stored item, key). The stored item, which stays the tree's; null when there is none, and for
// null arguments.
ORX_API void* bto_get_item(bto_tree* tree, void* key);

// Visits every item in ascending order. 0, also without callbacks; 1 for a null tree.
ORX_API int bto_traverse_tree(bto_tree* tree);

// Releases every item after those below it, left before right, then frees the tree; to the callback the tree
// is empty already. Null is allowed. Always 0.
ORX_API int bto_free(bto_tree* tree);

// A ready-made `free_item` for items from malloc or calloc. Null is allowed. Always 0.
ORX_API int bto_free_base_object(void* item);

ORX_C_END

#if defined(__cplusplus)
static_assert(offsetof(bto_base_object, right) == sizeof(void*) &&
              offsetof(bto_base_object, balance) == 2 * sizeof(void*));
static_assert(sizeof(void*) != 8 ||
              (offsetof(bto_tree, visit) == 16 && offsetof(bto_tree, free_item) == 32 &&
               offsetof(bto_tree, height_changed) == 44 && offsetof(bto_tree, root) == 48));
#endif
