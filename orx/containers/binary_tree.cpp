#include <orx/containers/binary_tree.h>

#include <orx/base/compiler.h>
#include <orx/base/errno_guard.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

using Node = bto_base_object;
using Link = Node*;  // the root or one of an item's two links; null when the subtree is empty

// A side, as the change of a node's balance when that side grows by one level.
constexpr int kLeft = -1;
constexpr int kRight = 1;

// The smallest AVL tree of height 96 has more nodes than a 64-bit memory has bytes.
constexpr int kMaxHeight = 96;

Link& link_of(Node& node, int side) { return side == kLeft ? node.left : node.right; }

void set_balance(Node& node, int balance) { node.balance = static_cast<std::int16_t>(balance); }

// Returns first or second without a jump. A processor mispredicts every other step of a search, and each
// misprediction costs more than a comparison.
template <typename T>
T* branchless_select(bool is_first, T* first, T* second) {
  const auto difference = reinterpret_cast<std::uintptr_t>(first) ^ reinterpret_cast<std::uintptr_t>(second);
  const std::uintptr_t mask = std::uintptr_t{0} - static_cast<std::uintptr_t>(is_first);
  return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(second) ^ (difference & mask));
}

// The upper levels of a tree stay in the cache by themselves; prefetching them would displace other nodes.
// Measured: with 12 or 14 levels finds of random keys get slower on a loaded machine.
constexpr std::ptrdiff_t kCachedLevels = 10;

// The two children of a node. Deep in a large tree both are prefetched, so that the next node is on its way
// while the comparison decides which child it is.
struct Children {
  Node *left, *right;

  Children(const Node& node, std::ptrdiff_t level) : left(node.left), right(node.right) {
    if (level < kCachedLevels) return;
    orx::prefetch(left);
    orx::prefetch(right);
  }
};

// The links from the root down to the place of an operation. links_[0] is the link of the root; each further
// link belongs to the node that the link before it points to. The last one may be null: an empty subtree.
class Path {
 public:
  using Position = Link**;

  explicit Path(Link& root) { links_[0] = &root; }
  Path(const Path&) = delete;
  Path& operator=(const Path&) = delete;

  // Descends to the item that is equal to `probe`, or to the empty subtree where it belongs. Compares each
  // node once; hosts rely on the order of the calls.
  Node* Find(bto_compare_fn compare, void* probe) {
    Position end = links_;
    Node* node = **end;
    int order = 1;
    // Items often come in ascending order, and then go along the right edge of the tree. There the processor
    // predicts each step, so a plain loop is faster.
    while (node != nullptr && (order = compare(probe, node)) > 0) {
      *++end = &node->right;
      node = node->right;
    }
    if (order < 0) {
      *++end = &node->left;
      node = node->left;
      while (node != nullptr) {
        const Children children(*node, end - links_);
        order = compare(probe, node);
        if (order == 0) break;
        *++end = branchless_select(order < 0, &node->left, &node->right);
        node = branchless_select(order < 0, children.left, children.right);
      }
    }
    end_ = end;
    return node;
  }

  Link& End() { return **end_; }
  Position Last() const { return end_; }
  bool IsAtRoot() const { return end_ == links_; }

  void Descend(int side) {
    Node& node = *End();
    *++end_ = &link_of(node, side);
  }
  // Returns the side of the new end on which the old end is.
  int Ascend() {
    const Link* const below = *end_--;
    return below == &End()->left ? kLeft : kRight;
  }

  // Links `node` at `position` instead of the present node. The path then continues on the left side of
  // `node`.
  static void Redirect(Position position, Node& node) {
    **position = &node;
    position[1] = &node.left;
  }

 private:
  Link* links_[kMaxHeight + 1];
  Position end_ = links_;
};

// Rotates the subtree at `top`, which is two levels higher on `side`, and returns its new root. The height of
// the subtree is unchanged if the balance of the new root is not 0, otherwise it is one level lower.
template <int side>
Link rotate(Node& top) {
  Node& heir = *link_of(top, side);
  if (heir.balance != -side) {
    link_of(top, side) = link_of(heir, -side);
    link_of(heir, -side) = &top;
    set_balance(top, side - heir.balance);
    set_balance(heir, heir.balance - side);
    return &heir;
  }
  Node& middle = *link_of(heir, -side);
  link_of(heir, -side) = link_of(middle, side);
  link_of(top, side) = link_of(middle, -side);
  link_of(middle, side) = &heir;
  link_of(middle, -side) = &top;
  set_balance(top, middle.balance == side ? -side : 0);
  set_balance(heir, middle.balance == -side ? side : 0);
  middle.balance = 0;
  return &middle;
}

// Rebalances the node at the link after the height of `side` has grown by one level relative to the other
// side.
template <int side>
void rebalance(Link& link) {
  Node& node = *link;
  if (node.balance == side) {
    link = rotate<side>(node);
  } else {
    set_balance(node, node.balance + side);
  }
}

void rebalance(Link& link, int side) {
  if (side == kLeft) {
    rebalance<kLeft>(link);
  } else {
    rebalance<kRight>(link);
  }
}

// Rebalances the nodes above the path's end, whose subtree has grown by one level. Returns whether the height
// of the whole tree has changed.
bool rebalance_after_insert(Path& path) {
  while (!path.IsAtRoot()) {
    const int side = path.Ascend();
    Link& link = path.End();
    if (link->balance != 0) {
      rebalance(link, side);
      return false;
    }
    set_balance(*link, side);
  }
  return true;
}

// The same after the subtree at the path's end has become one level lower.
bool rebalance_after_delete(Path& path) {
  while (!path.IsAtRoot()) {
    const int side = path.Ascend();
    rebalance(path.End(), -side);
    if (path.End()->balance != 0) return false;
  }
  return true;
}

// Takes the node at the path's end out of the tree. The path then ends at the subtree that has become lower.
// A node with two children is replaced by its predecessor.
void unlink(Path& path) {
  Node& node = *path.End();
  if (node.left == nullptr || node.right == nullptr) {
    path.End() = node.right == nullptr ? node.left : node.right;
    return;
  }
  const Path::Position position = path.Last();
  path.Descend(kLeft);
  while (path.End()->right != nullptr) path.Descend(kRight);
  Node& predecessor = *path.End();
  path.End() = predecessor.left;
  predecessor.left = node.left;
  predecessor.right = node.right;
  predecessor.balance = node.balance;
  Path::Redirect(position, predecessor);
}

void call(bto_item_fn function, void* item) {
  if (function != nullptr) function(item);
}

void visit_all(Node* node, bto_item_fn visit) {
  for (; node != nullptr; node = node->right) {
    visit_all(node->left, visit);
    visit(node);
  }
}

void release_all(Node* node, bto_item_fn free_item) {
  if (node == nullptr) return;
  release_all(node->left, free_item);
  release_all(node->right, free_item);
  free_item(node);
}

}  // namespace

bto_tree* bto_new() {
  const orx::ErrnoGuard errno_guard;
  return new (std::nothrow) bto_tree{};
}

int bto_init_all_functions(bto_tree* tree, bto_compare_fn compare, bto_item_fn visit, bto_item_fn free_item) {
  if (tree == nullptr) return 1;
  tree->compare = compare;
  tree->visit = visit;
  tree->free_item = free_item;
  tree->compare_set = 1;
  tree->visit_set = 1;
  tree->free_set = 1;
  return 0;
}

void* bto_add_item(bto_tree* tree, void* item) {
  if (tree == nullptr || tree->compare == nullptr || item == nullptr) return item;
  Path path(tree->root);
  if (path.Find(tree->compare, item) != nullptr) {
    tree->height_changed = 0;
    call(tree->free_item, item);
    return item;
  }
  // Field by field: assigning the whole head would also write its padding, where the host's data may begin.
  Node& added = *static_cast<Node*>(item);
  added.left = nullptr;
  added.right = nullptr;
  added.balance = 0;
  path.End() = &added;
  tree->height_changed = rebalance_after_insert(path) ? 1 : 0;
  return item;
}

int bto_delete_item(bto_tree* tree, void* key) {
  if (tree == nullptr || tree->compare == nullptr || key == nullptr) return 0;
  Path path(tree->root);
  Node* const node = path.Find(tree->compare, key);
  tree->height_changed = 0;
  if (node == nullptr) return 0;
  unlink(path);
  tree->height_changed = rebalance_after_delete(path) ? 1 : 0;
  node->left = nullptr;
  node->right = nullptr;
  call(tree->free_item, node);
  return 0;
}

void* bto_get_item(bto_tree* tree, void* key) {
  if (tree == nullptr || tree->compare == nullptr || key == nullptr) return nullptr;
  const bto_compare_fn compare = tree->compare;
  Node* node = tree->root;
  for (std::ptrdiff_t level = 0; node != nullptr; ++level) {
    const Children children(*node, level);
    const int order = compare(node, key);
    if (order == 0) break;
    node = branchless_select(order > 0, children.left, children.right);
  }
  return node;
}

int bto_traverse_tree(bto_tree* tree) {
  if (tree == nullptr) return 1;
  if (tree->visit_set == 1 && tree->visit != nullptr) visit_all(tree->root, tree->visit);
  return 0;
}

int bto_free(bto_tree* tree) {
  if (tree == nullptr) return 0;
  Node* const root = tree->root;
  tree->root = nullptr;
  if (tree->free_set == 1 && tree->free_item != nullptr) release_all(root, tree->free_item);
  delete tree;
  return 0;
}

int bto_free_base_object(void* item) {
  std::free(item);
  return 0;
}
