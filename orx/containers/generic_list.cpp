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

// Followed by its nodes.
struct Block {
  Block* older;
};

// In nodes. Every block is three times the one before, and no page of it is touched before its nodes are
// used. glibc holds back up to twice the largest block that it got back, if that has at most 32 MB. With
// doubling, or with blocks of half the size, a list of a million items is more than that, and waits for all
// its pages again whenever it is filled: that takes twice as long.
constexpr std::size_t kFirstBlock = 16;
constexpr std::size_t kGrowth = 3;
constexpr std::size_t kLargestBlock = 1000000;

}  // namespace

struct genlist {
  Node *head, *tail, *current;
  genlist_compare_fn compare;
  genlist_swap_fn swap;
  genlist_free_fn free_item;
  unsigned int count;

  Block* blocks;
  std::size_t block_size;   // of the newest block
  Node *fresh, *fresh_end;  // what has not been used yet of the newest block
  Node* unused;             // removed nodes, linked by `next`
};

namespace {

// Where memory is short, a smaller block will do.
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
    node = list.fresh++;
  }
  *node = {item, nullptr, nullptr};
  return node;
}

// Behind `place`; before the first node when that is null.
void link(genlist& list, Node* node, Node* place) {
  Node* const next = place == nullptr ? list.head : place->next;
  node->prev = place;
  node->next = next;
  (place == nullptr ? list.head : place->next) = node;
  (next == nullptr ? list.tail : next->prev) = node;
  ++list.count;
}

void unlink(genlist& list, const Node* node) {
  if (node == list.current) list.current = node->next;
  (node->prev == nullptr ? list.head : node->prev->next) = node->next;
  (node->next == nullptr ? list.tail : node->next->prev) = node->prev;
}

// `free_item` may look at the list: the node is off it by then, though still counted.
void remove(genlist& list, Node* node) {
  unlink(list, node);
  if (list.free_item != nullptr) list.free_item(node->item);
  node->next = list.unused;
  list.unused = node;
  --list.count;
}

// The node that the item goes behind, or null for the front. Hosts may count on the calls: the walk asks for
// the tail once more. It ends at the head even if `compare` contradicts itself.
Node* place_of(const genlist& list, void* item) {
  if (list.head == nullptr || list.compare(item, list.head->item) <= 0) return nullptr;
  Node* place = list.tail;
  if (list.compare(item, place->item) >= 0) return place;
  while (list.compare(item, place->item) < 0 && place->prev != nullptr) place = place->prev;
  return place;
}

Node* find(const genlist* list, void* key) {
  if (list == nullptr || list->compare == nullptr) return nullptr;
  Node* node = list->head;
  while (node != nullptr && list->compare(node->item, key) != 0) node = node->next;
  return node;
}

void* item_of(const Node* node) { return node == nullptr ? nullptr : node->item; }

// `next` and `first` are those of the direction that is looked in.
void* neighbour(const genlist* list, void* key, int wrap, Node* Node::*next, Node* genlist::*first) {
  const Node* const node = find(list, key);
  if (node == nullptr) return nullptr;
  return item_of(node->*next == nullptr && wrap != 0 ? list->*first : node->*next);
}

std::unique_ptr<void* []> room_for_items(const genlist& list) {
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
  link(*list, node, list->tail);
  return 0;
}

int genlist_insert(genlist* list, void* item) {
  if (list == nullptr || list->compare == nullptr) return 1;
  Node* const node = take_node(*list, item);
  if (node == nullptr) return 1;
  link(*list, node, place_of(*list, item));
  return 0;
}

void* genlist_find(genlist* list, void* key) { return item_of(find(list, key)); }

int genlist_delete(genlist* list, void* key) {
  if (list == nullptr) return 0;
  if (list->count == 0) return 1;
  Node* const node = find(list, key);
  if (node != nullptr) remove(*list, node);
  return 0;
}

genlist* genlist_delete_nodes(genlist* list) {
  if (list == nullptr || list->head == nullptr) return list;
  if (list->free_item != nullptr) {
    while (list->head != nullptr) remove(*list, list->head);
  } else {
    list->tail->next = list->unused;
    list->unused = list->head;
    list->head = list->tail = nullptr;
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
  const std::unique_ptr<void*[]> room = room_for_items(*list);
  void** const items = room.get();
  if (items == nullptr) return 1;
  std::size_t n = 0;
  for (const Node* node = list->head; node != nullptr; node = node->next) items[n++] = node->item;
  orx::shell_sort(
      n,
      [items, compare = list->compare](std::size_t i, std::size_t j) { return compare(items[i], items[j]); },
      [items, swap = list->swap](std::size_t i, std::size_t j) { swap(items[i], items[j]); });
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
