#include <orx/containers/binary_tree.h>

#include <gtest/gtest.h>
#include <tests/support/failing_memory.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace {

struct Item : bto_base_object {
  int key;
};

int key_of(void* item) { return static_cast<Item*>(item)->key; }

Item* made(int key) {
  Item* item = static_cast<Item*>(std::malloc(sizeof(Item)));
  *item = {{nullptr, nullptr, 1}, key};  // the balance of an item that was in a tree before
  return item;
}

// What the callbacks have been called with.
std::vector<int> compared_first, compared_second, visited, released;
bto_tree* read_by_callbacks = nullptr;

int compare(void* a, void* b) {
  compared_first.push_back(key_of(a));
  compared_second.push_back(key_of(b));
  return key_of(a) - key_of(b);
}

// A callback that makes use of the tree.
void look_up(void* item) {
  if (read_by_callbacks != nullptr) bto_get_item(read_by_callbacks, item);
}

int visit(void* item) {
  visited.push_back(key_of(item));
  look_up(item);
  return 1;
}

int release(void* item) {
  released.push_back(key_of(item));
  look_up(item);
  return bto_free_base_object(item);
}

void forget_calls() {
  for (auto* calls : {&compared_first, &compared_second, &visited, &released}) calls->clear();
}

bto_tree* tree_of(const std::vector<int>& keys) {
  bto_tree* tree = bto_new();
  EXPECT_EQ(bto_init_all_functions(tree, compare, visit, release), 0);
  for (const int key : keys) bto_add_item(tree, made(key));
  forget_calls();
  return tree;
}

void erase(bto_tree* tree, int key) {
  Item probe{{}, key};
  EXPECT_EQ(bto_delete_item(tree, &probe), 0);
}

// (left key right) with + or - behind a key whose balance is not 0.
std::string shape(const bto_base_object* node) {
  if (node == nullptr) return "";
  const char* const balance = node->balance == 0 ? "" : node->balance > 0 ? "+" : "-";
  return "(" + shape(node->left) + std::to_string(static_cast<const Item*>(node)->key) + balance +
         shape(node->right) + ")";
}

TEST(BinaryTree, HasTheShapesOfItsRotations) {
  using Row = std::tuple<std::vector<int>, std::vector<int>, const char*>;
  for (const auto& [added, erased, expected] :
       {Row{{1, 2, 3}, {}, "((1)2(3))"}, Row{{3, 2, 1}, {}, "((1)2(3))"}, Row{{3, 1, 2}, {}, "((1)2(3))"},
        Row{{1, 3, 2}, {}, "((1)2(3))"}, Row{{2, 1, 5, 4, 6, 3}, {}, "(((1)2(3))4(5+(6)))"},
        Row{{5, 2, 6, 1, 3, 4}, {}, "(((1)2-)3((4)5(6)))"}, Row{{2, 1, 3, 2, 1}, {}, "((1)2(3))"},
        Row{{4, 2, 6, 1, 3}, {4}, "(((1)2-)3-(6))"},
        Row{{4, 2, 6, 1, 3}, {6}, "((1)2+((3)4-))"},  // the heir is level: the height stays
        Row{{4, 2, 6, 5, 7}, {2}, "((4+(5))6-(7))"},
        Row{{4, 2, 6, 1}, {4}, "((1)2(6))"},  // the predecessor is the left child
        Row{{4, 2, 6, 3}, {6}, "((2)3(4))"}, Row{{4, 2, 6, 5}, {2}, "((4)5(6))"},
        Row{{5, 2, 8, 1, 4, 7, 9, 3}, {1, 5}, "(((2)3-)4((7)8(9)))"},
        Row{{5, 2, 8, 1, 3, 7, 9, 6, 4, 10, 11}, {5, 4, 3}, "(((1)2+((6)7-))8-((9)10(11)))"},
        Row{{2, 1}, {2, 3}, "(1)"}, Row{{2}, {2}, ""}}) {
    bto_tree* tree = tree_of(added);
    for (const int key : erased) erase(tree, key);
    EXPECT_EQ(shape(tree->root), expected);
    bto_free(tree);
  }
}

// The height; fails where a balance is not the difference of the heights below it, or not that of an AVL
// tree.
int checked_height(const bto_base_object* node) {
  if (node == nullptr) return 0;
  const int left = checked_height(node->left), right = checked_height(node->right);
  EXPECT_EQ(node->balance, right - left);
  EXPECT_LE(std::abs(right - left), 1);
  return 1 + std::max(left, right);
}

// The keys that a search for `key` meets.
std::vector<int> way_to(const bto_base_object* node, int key) {
  std::vector<int> way;
  while (node != nullptr) {
    way.push_back(static_cast<const Item*>(node)->key);
    if (way.back() == key) break;
    node = key < way.back() ? node->left : node->right;
  }
  return way;
}

TEST(BinaryTree, DoesWhatAModelDoes) {
  constexpr unsigned kSeed = 20240305;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  std::map<int, void*> model;
  bto_tree* tree = read_by_callbacks = tree_of({});
  for (int step = 0; step < 20000 && !HasFailure(); ++step) {
    // Grows and shrinks by turns, so that the tree is large at times and empty at others.
    const int key = static_cast<int>(random() % 300), operation = static_cast<int>(random() % 8);
    const std::vector<int> way = way_to(tree->root, key);
    const int height = checked_height(tree->root);
    void* const item_before = model.count(key) == 0 ? nullptr : model[key];
    Item probe{{}, key};
    forget_calls();
    if (operation == 0) {
      EXPECT_EQ(bto_get_item(tree, &probe), item_before);
      EXPECT_EQ(compared_first, way);
    } else {
      read_by_callbacks = nullptr;
      if ((operation < 3) != (step / 2000 % 2 == 0)) {
        Item* item = made(key);
        EXPECT_EQ(bto_add_item(tree, item), item);
        model.emplace(key, item);
      } else {
        erase(tree, key);
        model.erase(key);
      }
      read_by_callbacks = tree;
      EXPECT_EQ(compared_second, way);
      EXPECT_EQ(released, item_before == nullptr ? std::vector<int>{} : std::vector<int>{key});
      EXPECT_EQ(tree->height_changed != 0, checked_height(tree->root) != height);
    }
    EXPECT_EQ(bto_traverse_tree(tree), 0);
    const auto has_key = [](int seen, const auto& entry) { return seen == entry.first; };
    EXPECT_TRUE(std::ranges::equal(visited, model, has_key)) << "step " << step;
  }
  bto_free(tree);
  read_by_callbacks = nullptr;
}

TEST(BinaryTree, IsReleasedFromBelow) {
  bto_tree* tree = read_by_callbacks = tree_of({4, 2, 6, 1, 3, 5, 7});
  EXPECT_EQ(bto_free(tree), 0);
  EXPECT_EQ(released, (std::vector<int>{1, 3, 2, 5, 7, 6, 4}));
  EXPECT_TRUE(compared_first.empty());  // to the callback the tree is empty
  read_by_callbacks = nullptr;
}

TEST(BinaryTree, NeedsWhatItWorksWith) {
  Item item{{}, 1};
  bto_tree* tree = bto_new();
  for (bto_tree* handle : {static_cast<bto_tree*>(nullptr), tree}) {
    EXPECT_EQ(bto_add_item(handle, &item), &item);
    EXPECT_EQ(bto_delete_item(handle, &item), 0);
    EXPECT_EQ(bto_get_item(handle, &item), nullptr);
    EXPECT_EQ(bto_traverse_tree(handle), handle == nullptr ? 1 : 0);
  }
  EXPECT_EQ(bto_init_all_functions(nullptr, compare, visit, release), 1);

  bto_init_all_functions(tree, compare, nullptr, nullptr);
  forget_calls();
  EXPECT_EQ(bto_add_item(tree, nullptr), nullptr);
  EXPECT_EQ(bto_add_item(tree, &item), &item);
  EXPECT_EQ(bto_add_item(tree, &item), &item);
  EXPECT_EQ(bto_get_item(tree, nullptr), nullptr);
  EXPECT_EQ(bto_delete_item(tree, nullptr), 0);
  EXPECT_EQ(bto_traverse_tree(tree), 0);
  EXPECT_EQ(tree->root, &item);
  EXPECT_EQ(compared_first.size(), 1U);
  EXPECT_EQ(bto_free(tree), 0);
  EXPECT_EQ(bto_free(nullptr), 0);
  EXPECT_EQ(bto_free_base_object(nullptr), 0);
  EXPECT_EQ(orx::testing::without_memory(bto_new), nullptr);
}

}  // namespace
