#include <orx/containers/generic_list.h>

#include <orx/base/errno_guard.h>
#include <orx/base/shell_sort.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

struct genlist_node {
  void* item;
  genlist_node *next, *prev;
};

namespace {

using Node = genlist_node;

// A block of memory for nodes, which follow this header.
struct Block {
  Block* older;
};

// Sizes of blocks, in nodes. Each block is three times as large as the one before, and none of its pages is
// touched before its nodes are used. The factor matters: glibc keeps freed memory up to twice the size of the
// largest freed block, if that has at most 32 MB. With a factor of two, or with smaller blocks, a list of a
// million items exceeds that limit, and every time it is filled again all its pages must be mapped again,
// which takes twice as long.
constexpr std::size_t kFirstBlock = 16;
constexpr std::size_t kGrowth = 3;
constexpr std::size_t kLargestBlock = 1000000;

}  // namespace

// The nodes form a chain from head to tail; both are null exactly when the list is empty. `current` is a node
// of the chain or null. Every node is in the chain, in the chain of unused nodes, or fresh. During a call of
// `free_item` the node is already out of the chain, but still counted.
struct genlist {
  Node *head, *tail, *current;
  genlist_compare_fn compare;
  genlist_swap_fn swap;
  genlist_free_fn free_item;
  unsigned int count;

  Block* blocks;
  std::size_t block_size;   // of the newest block
  Node *fresh, *fresh_end;  // the nodes of the newest block that have never been used
  Node* unused;             // removed nodes, linked by `next`
};

namespace {

// Adds the next block, or a smaller one when memory runs out.
bool add_block(genlist& list) {
  const orx::ErrnoGuard errno_guard;
  std::size_t size = std::clamp(kGrowth * list.block_size, kFirstBlock, kLargestBlock);
  void* memory = nullptr;
  while (memory == nullptr && size >= kFirstBlock) {
    memory = ::operator new(sizeof(Block) + size * sizeof(Node), std::nothrow);
    if (memory == nullptr) size /= kGrowth;
  }
  if (memory == nullptr) return false;
  list.blocks = new (memory) Block{list.blocks};
  list.block_size = size;
  list.fresh = new (list.blocks + 1) Node[size];
  list.fresh_end = list.fresh + size;
  return true;
}

Node* take_node(genlist& list, void* item) {
  Node* node = list.unused;
  if (node != nullptr) {
    list.unused = node->next;
  } else {
    if (list.fresh == list.fresh_end && !add_block(list)) return nullptr;
    node = list.fresh;
    ++list.fresh;
  }
  *node = {item, nullptr, nullptr};
  return node;
}

// Links the node after `predecessor`, or before the first node if that is null.
void link_node(genlist& list, Node* node, Node* predecessor) {
  Node* const successor = predecessor == nullptr ? list.head : predecessor->next;
  node->prev = predecessor;
  node->next = successor;
  if (predecessor == nullptr) {
    list.head = node;
  } else {
    predecessor->next = node;
  }
  if (successor == nullptr) {
    list.tail = node;
  } else {
    successor->prev = node;
  }
  ++list.count;
}

void unlink_node(genlist& list, const Node* node) {
  if (node == list.current) list.current = node->next;
  if (node->prev == nullptr) {
    list.head = node->next;
  } else {
    node->prev->next = node->next;
  }
  if (node->next == nullptr) {
    list.tail = node->prev;
  } else {
    node->next->prev = node->prev;
  }
}

// Callbacks may query the list: `free_item` finds the node unlinked, and the count not yet reduced.
void remove_node(genlist& list, Node* node) {
  unlink_node(list, node);
  if (list.free_item != nullptr) list.free_item(node->item);
  node->next = list.unused;
  list.unused = node;
  --list.count;
}

// Returns the node after which the item belongs, or null for the front. Hosts may rely on the order of calls:
// the tail is compared twice on purpose. The walk ends at the head even if `compare` contradicts itself.
Node* find_predecessor(const genlist& list, void* item) {
  if (list.head == nullptr || list.compare(item, list.head->item) <= 0) return nullptr;
  Node* place = list.tail;
  if (list.compare(item, place->item) >= 0) return place;
  while (list.compare(item, place->item) < 0 && place->prev != nullptr) place = place->prev;
  return place;
}

// Returns the first node that matches the key, or null.
Node* find_node(const genlist* list, void* key) {
  if (list == nullptr || list->compare == nullptr) return nullptr;
  Node* node = list->head;
  while (node != nullptr && list->compare(node->item, key) != 0) node = node->next;
  return node;
}

void* item_of(const Node* node) { return node == nullptr ? nullptr : node->item; }

// Returns the item next to the first match. `next` and `first` select the direction: the following item, and
// then the head if it wraps, or the preceding item and the tail.
void* neighbour(const genlist* list, void* key, int wrap, Node* Node::*next, Node* genlist::*first) {
  const Node* const node = find_node(list, key);
  if (node == nullptr) return nullptr;
  const Node* adjacent = node->*next;
  if (adjacent == nullptr && wrap != 0) adjacent = list->*first;
  return item_of(adjacent);
}

std::unique_ptr<void* []> allocate_items(const genlist& list) {
  const orx::ErrnoGuard errno_guard;
  return std::unique_ptr<void*[]>(new (std::nothrow) void*[list.count]);
}

}  // namespace

genlist* genlist_new(genlist_compare_fn compare, genlist_swap_fn swap, genlist_free_fn free_item) {
  const orx::ErrnoGuard errno_guard;
  auto* const list = new (std::nothrow) genlist{};
  if (list == nullptr) return nullptr;
  list->compare = compare;
  list->swap = swap;
  list->free_item = free_item;
  return list;
}

int genlist_add(genlist* list, void* item) {
  Node* const node = list == nullptr ? nullptr : take_node(*list, item);
  if (node == nullptr) return 1;
  link_node(*list, node, list->tail);
  return 0;
}

int genlist_insert(genlist* list, void* item) {
  if (list == nullptr || list->compare == nullptr) return 1;
  Node* const node = take_node(*list, item);
  if (node == nullptr) return 1;
  Node* const predecessor = find_predecessor(*list, item);
  link_node(*list, node, predecessor);
  return 0;
}

void* genlist_find(genlist* list, void* key) { return item_of(find_node(list, key)); }

int genlist_delete(genlist* list, void* key) {
  if (list == nullptr) return 0;
  if (list->count == 0) return 1;
  Node* const node = find_node(list, key);
  if (node != nullptr) remove_node(*list, node);
  return 0;
}

genlist* genlist_delete_nodes(genlist* list) {
  if (list == nullptr || list->head == nullptr) return list;
  if (list->free_item != nullptr) {
    while (list->head != nullptr) remove_node(*list, list->head);
  } else {
    // The whole chain becomes unused at once.
    list->tail->next = list->unused;
    list->unused = list->head;
    list->head = nullptr;
    list->tail = nullptr;
    list->count = 0;
  }
  list->current = nullptr;
  return list;
}

void* genlist_get_first_node(genlist* list) {
  if (list == nullptr) return nullptr;
  list->current = list->head;
  return item_of(list->current);
}

void* genlist_get_next_node(genlist* list) {
  if (list == nullptr || list->current == nullptr) return nullptr;
  list->current = list->current->next;
  return item_of(list->current);
}

void* genlist_get_node_by_index(genlist* list, int index) {
  void* item = genlist_get_first_node(list);
  for (int i = 0; i < index && item != nullptr; ++i) item = genlist_get_next_node(list);
  return index < 0 ? nullptr : item;
}

unsigned int genlist_get_num_nodes(genlist* list) { return list == nullptr ? 0 : list->count; }

void* genlist_get_following_node(genlist* list, void* key, int wrap) {
  return neighbour(list, key, wrap, &Node::next, &genlist::head);
}

void* genlist_get_preceeding_node(genlist* list, void* key, int wrap) {
  return neighbour(list, key, wrap, &Node::prev, &genlist::tail);
}

int genlist_sort(genlist* list) {
  if (list == nullptr || list->count < 2 || list->compare == nullptr || list->swap == nullptr) return 1;
  const std::unique_ptr<void*[]> owner = allocate_items(*list);
  void** const items = owner.get();
  if (items == nullptr) return 1;
  std::size_t count = 0;
  for (const Node* node = list->head; node != nullptr; node = node->next) {
    items[count] = node->item;
    ++count;
  }
  // The pointers stay in place: `swap` exchanges the contents of the items.
  const auto compare = [items, function = list->compare](std::size_t i, std::size_t j) {
    return function(items[i], items[j]);
  };
  const auto swap = [items, function = list->swap](std::size_t i, std::size_t j) {
    function(items[i], items[j]);
  };
  orx::shell_sort(count, compare, swap);
  return 0;
}

genlist* genlist_free(genlist* list) {
  if (list == nullptr) return nullptr;
  if (list->free_item != nullptr) genlist_delete_nodes(list);
  while (list->blocks != nullptr) {
    Block* const older = list->blocks->older;
    ::operator delete(list->blocks);
    list->blocks = older;
  }
  delete list;
  return nullptr;
}
