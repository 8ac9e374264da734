// bto_tree: a height-balanced (AVL) search tree of the host's items.
//
// The items are the nodes: each begins with a bto_base_object, through which the tree links them, so that
// nothing is allocated for an item. Only the three callbacks know the rest of an item. The tree owns an item
// from its insertion, and passes it to `free_item` when the item is deleted and when the tree is freed. An
// item must not be moved in memory, and its order must not change, while it is in the tree.
//
// A key is a probe in the form of an item: the comparison gets it in place of an item, as first or as second
// argument. Callbacks may read the tree that calls them (get, traverse), and may do anything with other
// trees; they must not change the tree that calls them. There are no locks: a tree belongs to one thread at a
// time; different trees are independent.
//
//   bto_new -> bto_init_all_functions -> add, get, delete, traverse in any order -> bto_free
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>
#include <stdint.h>

// The head of every item. Only the tree writes it while the item is in the tree.
typedef struct bto_base_object {
  struct bto_base_object* left;   // items that order before this one
  struct bto_base_object* right;  // items that order after it
  int16_t balance;                // height of the right subtree minus height of the left: -1, 0 or 1
} bto_base_object;

// Negative when a orders before b, 0 when they are equal, positive when a orders after b.
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

// Returns an empty tree without callbacks, which the caller frees with bto_free; null when out of memory.
ORX_API bto_tree* bto_new(void);

// Installs the callbacks. Each may be null: without `compare` nothing is added, found or deleted, without
// `visit` nothing is visited, and without `free_item` the caller keeps the items. Returns 0, or 1 for a null
// tree.
ORX_API int bto_init_all_functions(bto_tree* tree, bto_compare_fn compare, bto_item_fn visit,
                                   bto_item_fn free_item);

// Adds an item and returns it, whatever happens. Calls compare(item, stored item) from the root down. An item
// that is equal to a stored one is not added: it is passed to `free_item`, and the returned pointer is then
// no longer valid. Never add an item that is in the tree already, since it equals itself. Ignores a null
// item.
ORX_API void* bto_add_item(bto_tree* tree, void* item);

// Deletes the item that is equal to the key, if there is one. Calls compare(key, stored item). The item is
// passed to `free_item` with null links, when the tree is complete again. Always returns 0.
ORX_API int bto_delete_item(bto_tree* tree, void* key);

// Returns the item that is equal to the key; it still belongs to the tree. Calls compare(stored item, key).
// Null when there is no such item, and for null arguments.
ORX_API void* bto_get_item(bto_tree* tree, void* key);

// Visits every item in ascending order. Returns 0, also without callbacks, or 1 for a null tree.
ORX_API int bto_traverse_tree(bto_tree* tree);

// Passes every item to `free_item`, after the items of its left and then of its right subtree, and frees the
// tree. The tree is already empty for the callback. Ignores null. Always returns 0.
ORX_API int bto_free(bto_tree* tree);

// A ready-made `free_item` for items from malloc or calloc. Ignores null. Always returns 0.
ORX_API int bto_free_base_object(void* item);

ORX_C_END

#if defined(__cplusplus)
static_assert(offsetof(bto_base_object, right) == sizeof(void*) &&
              offsetof(bto_base_object, balance) == 2 * sizeof(void*));
static_assert(sizeof(void*) != 8 ||
              (offsetof(bto_tree, visit) == 16 && offsetof(bto_tree, free_item) == 32 &&
               offsetof(bto_tree, height_changed) == 44 && offsetof(bto_tree, root) == 48));
#endif
