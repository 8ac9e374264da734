#include <orx/containers/binary_tree.h>

#include <orx/base/errno_guard.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

using Node = bto_base_object;
using Link = Node*;  // the root or one of an item's two links; null when the subtree is empty

// A side is told by what a node's balance gains when that side grows.
constexpr int kLeft = -1;
constexpr int kRight = 1;

// The least AVL tree of height 96 has more nodes than memory has bytes.
constexpr int kMaxHeight = 96;

Link& link_of(Node& node, int side) { return side == kLeft ? node.left : node.right; }

void set_balance(Node& node, int balance) { node.balance = static_cast<std::int16_t>(balance); }

// Chooses without a jump: which way a search goes is a guess that fails every other time, and each failure
// costs more than a comparison.
template <typename T>
T* either(bool is_first, T* first, T* second) {
  const auto difference = reinterpret_cast<std::uintptr_t>(first) ^ reinterpret_cast<std::uintptr_t>(second);
  const std::uintptr_t mask = std::uintptr_t{0} - static_cast<std::uintptr_t>(is_first);
  return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(second) ^ (difference & mask));
}

// So many levels of a tree stay in the cache by themselves, unless what is fetched needlessly displaces them.
constexpr std::ptrdiff_t kCachedLevels = 10;

// The two ways down from a node. In the depth of a large tree both are fetched before a comparison decides
// between them.
struct Fork {
  Node *left, *right;

  Fork(const Node& node, std::ptrdiff_t level) : left(node.left), right(node.right) {
    if (level < kCachedLevels) return;
    __builtin_prefetch(left);
    __builtin_prefetch(right);
  }
};

// The links from the root down to where an operation takes place, the last one included.
class Path {
 public:
  using Position = Link**;

  explicit Path(Link& root) { links_[0] = &root; }
  Path(const Path&) = delete;
  Path& operator=(const Path&) = delete;

  // Goes down to the item that is equal to `probe`, or to the empty subtree where it belongs.
  Node* Find(bto_compare_fn compare, void* probe) {
    Position end = links_;
    Node* node = **end;
    int order = 1;
    // Along the right edge of the tree, where probes in ascending order go, guesses hold.
    while (node != nullptr && (order = compare(probe, node)) > 0) {
      *++end = &node->right;
      node = node->right;
    }
    if (order < 0) {
      *++end = &node->left;
      node = node->left;
      while (node != nullptr) {
        const Fork fork(*node, end - links_);
        order = compare(probe, node);
        if (order == 0) break;
        *++end = either(order < 0, &node->left, &node->right);
        node = either(order < 0, fork.left, fork.right);
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
  // The side of the node above from which the way up comes.
  int Ascend() {
    const Link* const below = *end_--;
    return below == &End()->left ? kLeft : kRight;
  }

  // For a path that goes on to the left of `position`: there it now leads through another node.
  static void Redirect(Position position, Node& node) {
    **position = &node;
    position[1] = &node.left;
  }

 private:
  Link* links_[kMaxHeight + 1];
  Position end_ = links_;
};

// Takes the place of the node `top` that is two higher on `side`, and gives back what takes its place. A
// balance other than 0 at the new top means that the subtree is as high as it was.
template <int side>
Link rotated(Node& top) {
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

// The height of `side`, seen from the node at the link, has grown against the other side's.
template <int side>
void lean(Link& link) {
  Node& node = *link;
  if (node.balance == side) {
    link = rotated<side>(node);
  } else {
    set_balance(node, node.balance + side);
  }
}

void lean(Link& link, int side) { side == kLeft ? lean<kLeft>(link) : lean<kRight>(link); }

// From here up each returns whether the height of the whole tree has changed.
bool grown(Path& path) {
  while (!path.IsAtRoot()) {
    const int side = path.Ascend();
    Link& link = path.End();
    if (link->balance != 0) {
      lean(link, side);
      return false;
    }
    set_balance(*link, side);
  }
  return true;
}

bool shrunk(Path& path) {
  while (!path.IsAtRoot()) {
    const int side = path.Ascend();
    lean(path.End(), -side);
    if (path.End()->balance != 0) return false;
  }
  return true;
}

// Takes the node at the path's end out of the tree; the path then ends at the subtree that has become lower.
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
  tree->compare_set = tree->visit_set = tree->free_set = 1;
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
  // Field by field: the host's data may begin right behind the balance.
  Node& added = *static_cast<Node*>(item);
  added.left = added.right = nullptr;
  added.balance = 0;
  path.End() = &added;
  tree->height_changed = grown(path) ? 1 : 0;
  return item;
}

int bto_delete_item(bto_tree* tree, void* key) {
  if (tree == nullptr || tree->compare == nullptr || key == nullptr) return 0;
  Path path(tree->root);
  Node* const node = path.Find(tree->compare, key);
  tree->height_changed = 0;
  if (node == nullptr) return 0;
  unlink(path);
  tree->height_changed = shrunk(path) ? 1 : 0;
  node->left = node->right = nullptr;
  call(tree->free_item, node);
  return 0;
}

void* bto_get_item(bto_tree* tree, void* key) {
  if (tree == nullptr || tree->compare == nullptr || key == nullptr) return nullptr;
  const bto_compare_fn compare = tree->compare;
  Node* node = tree->root;
  for (std::ptrdiff_t level = 0; node != nullptr; ++level) {
    const Fork fork(*node, level);
    const int order = compare(node, key);
    if (order == 0) break;
    node = either(order > 0, fork.left, fork.right);
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
