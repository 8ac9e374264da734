#include <orx/containers/generic_list.h>

#include <gtest/gtest.h>
#include <tests/support/failing_memory.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <random>
#include <utility>
#include <vector>

using namespace orx::testing;

namespace {

struct Item {
  int key;
};
using Items = std::vector<Item*>;

std::vector<std::pair<void*, void*>> calls;  // of compare: two items; of release: an item and null

int order(void* a, void* b) {
  calls.emplace_back(a, b);
  return static_cast<Item*>(a)->key - static_cast<Item*>(b)->key;
}

int swap(void* a, void* b) {
  std::swap(*static_cast<Item*>(a), *static_cast<Item*>(b));
  return -1;
}

void release(void* item) { calls.emplace_back(item, nullptr); }

using Result = const void*;
Result number(std::uintptr_t n) { return reinterpret_cast<Result>(n); }

// The model of a list: a vector. It calls `order` and `release` in the same order as the list.
struct Model {
  Items items;
  Item* current = nullptr;

  Item* At(std::size_t i) const { return i < items.size() ? items[i] : nullptr; }
  std::size_t Find(Item* key) const {
    std::size_t i = 0;
    while (i < items.size() && order(items[i], key) != 0) ++i;
    return i;
  }
  Item* Next() const {
    const auto place = std::find(items.begin(), items.end(), current);
    return current == nullptr || place + 1 == items.end() ? nullptr : place[1];
  }
  Item* Neighbour(Item* key, std::size_t step, bool wrap) const {
    const std::size_t found = Find(key), next = found + step, n = items.size();
    if (found == n) return nullptr;
    return next < n || !wrap ? At(next) : items[(next + n) % n];
  }
  Result Select(Item* item) { return current = item; }
  Result SelectIndex(int n) {
    Select(At(static_cast<std::size_t>(std::max(n, 0))));
    return n < 0 ? nullptr : current;
  }
  Result Add(Item* item) {
    items.push_back(item);
    return nullptr;
  }
  Result Insert(Item* item) {
    std::size_t place = 0;
    if (!items.empty() && order(item, items[0]) > 0) place = items.size();
    const bool in_the_middle = place > 0 && order(item, items.back()) < 0;
    while (in_the_middle && order(item, items[place - 1]) < 0) --place;
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(place), item);
    return nullptr;
  }
  Result Delete(Item* key) {
    const bool was_empty = items.empty();
    Remove(Find(key));
    return number(was_empty);
  }
  void Remove(std::size_t place) {
    if (place >= items.size()) return;
    release(items[place]);
    if (current == items[place]) current = Next();
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(place));
  }
};

// Does the same to the list and then to its model, and returns both results. `item` is in neither, but its
// key occurs in both.
std::pair<Result, Result> take_step(std::size_t step, genlist* l, Model& m, Item* item, int n) {
  const bool wrap = (n & 2) != 0;
  if (step == 0) return {number(genlist_add(l, item) != 0), m.Add(item)};
  if (step == 1) return {number(genlist_insert(l, item) != 0), m.Insert(item)};
  if (step == 2) return {number(genlist_delete(l, item) != 0), m.Delete(item)};
  if (step == 3) return {genlist_find(l, item), m.At(m.Find(item))};
  if (step == 4) return {genlist_get_first_node(l), m.Select(m.At(0))};
  if (step == 5) return {genlist_get_next_node(l), m.Select(m.Next())};
  if (step == 6) return {genlist_get_node_by_index(l, n), m.SelectIndex(n)};
  if (step == 7) return {genlist_get_following_node(l, item, n & 2), m.Neighbour(item, 1, wrap)};
  if (step == 8) return {genlist_get_preceeding_node(l, item, n & 2), m.Neighbour(item, SIZE_MAX, wrap)};
  return {number(genlist_get_num_nodes(l)), number(m.items.size())};
}

// The list has made the first half of the calls, the model the second.
bool calls_agree() {
  const auto half = calls.begin() + static_cast<std::ptrdiff_t>(calls.size() / 2);
  return std::equal(calls.begin(), half, half, calls.end());
}

TEST(GenericList, AgreesWithItsModelCallByCall) {
  constexpr unsigned kSeed = 20240305;
  std::mt19937 random(kSeed);
  std::deque<Item> pool;
  Model model;
  genlist* const list = genlist_new(order, swap, release);
  for (int round = 0; round < 40000; ++round) {
    const auto choice = random() % 400, step = choice % 10;
    Item* const item = &pool.emplace_back(Item{static_cast<int>(random() % 40)});
    const int n = static_cast<int>(random() % (model.items.size() + 3)) - 1;
    calls.clear();
    if (choice == 0) {
      EXPECT_EQ(genlist_delete_nodes(list), list);
      while (!model.items.empty()) model.Remove(0);
      ASSERT_TRUE(calls_agree());
      model.current = nullptr;
    } else if (choice < 5) {
      std::vector<int> keys;
      for (const Item* i : model.items) keys.push_back(i->key);
      std::sort(keys.begin(), keys.end());
      ASSERT_EQ(genlist_sort(list), keys.size() < 2);
      for (std::size_t i = 0; i < keys.size(); ++i) ASSERT_EQ(model.items[i]->key, keys[i]);
    } else {
      const auto [result, expected] = take_step(step, list, model, item, n);
      ASSERT_EQ(result, expected) << "step " << step << ", seed " << kSeed << ", round " << round;
      ASSERT_TRUE(calls_agree()) << "step " << step << ", seed " << kSeed << ", round " << round;
    }
  }
  calls.clear();
  EXPECT_EQ(genlist_free(list), nullptr);
  for (Item* item : model.items) release(item);
  EXPECT_TRUE(calls_agree());
}

TEST(GenericList, OutOfMemoryLeavesItUnchanged) {
  EXPECT_EQ(without_memory([] { return genlist_new(order, swap, release); }), nullptr);
  for (const auto grow : {genlist_add, genlist_insert}) {
    for (int n = 1; n < 6; ++n) {
      std::deque<Item> pool{{0}};
      genlist* const list = genlist_new(order, swap, nullptr);
      const auto fill = [&] {
        while (grow(list, &pool.back()) == 0) pool.push_back({static_cast<int>(pool.size()) * 7 % 5});
        calls.clear();
        EXPECT_EQ(grow(list, &pool.back()), 1);
        Items items;
        for (void* i = genlist_get_first_node(list); i != nullptr; i = genlist_get_next_node(list))
          items.push_back(static_cast<Item*>(i));
        EXPECT_EQ(items.size(), pool.size() - 1);
        EXPECT_EQ(genlist_get_num_nodes(list), items.size());
        EXPECT_EQ(genlist_sort(list), 1);
        EXPECT_TRUE(calls.empty());

        genlist_delete_nodes(list);  // keeps the memory for as many items
        for (Item* item : items) EXPECT_EQ(grow(list, item), 0);
        EXPECT_EQ(genlist_get_num_nodes(list), items.size());
        return grow(list, &pool.back());
      };
      EXPECT_EQ(without_memory(fill, n - 1), 1);
      genlist_free(list);
    }
  }
}

TEST(GenericList, AllocatesInLargeBlocks) {
  Item item{1};
  allocations_left = INT_MAX;
  genlist* const list = genlist_new(order, swap, nullptr);
  for (int i = 0; i < 100000; ++i) genlist_add(list, &item);
  EXPECT_LT(INT_MAX - allocations_left, 100);
  genlist_free(list);
}

void expect_sorted_by(int (*compare)(void*, void*)) {
  Item items[] = {{3}, {1}, {2}};
  genlist* const list = genlist_new(compare, swap, nullptr);
  for (Item& item : items) genlist_add(list, &item);
  EXPECT_EQ(genlist_sort(list), 0);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(items[i].key, i + 1);
  genlist_free(list);
}

TEST(GenericList, CallbacksMaySortAnotherList) {
  expect_sorted_by([](void* a, void* b) {
    expect_sorted_by(order);
    return order(a, b);
  });
}

TEST(GenericList, NullListAndNullCallbacksDoNothing) {
  Item item{1};
  genlist* const bare = genlist_new(nullptr, nullptr, nullptr);
  genlist* const no_swap = genlist_new(order, nullptr, nullptr);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(genlist_add(bare, &item) + genlist_add(no_swap, &item), 0);
  for (genlist* list : {bare, static_cast<genlist*>(nullptr)}) {
    EXPECT_TRUE(genlist_insert(list, &item) == 1 && genlist_sort(list) == 1 &&
                genlist_delete(list, &item) == 0);
    for (void* found : {genlist_find(list, &item), genlist_get_following_node(list, &item, 1),
                        genlist_get_preceeding_node(list, &item, 1)})
      EXPECT_EQ(found, nullptr);
  }
  EXPECT_EQ(genlist_sort(no_swap), 1);
  EXPECT_EQ(genlist_get_num_nodes(bare), 2U);
  EXPECT_EQ(genlist_add(nullptr, &item), 1);
  EXPECT_EQ(genlist_get_num_nodes(nullptr), 0U);
  for (void* found : {genlist_get_first_node(nullptr), genlist_get_next_node(nullptr),
                      genlist_get_node_by_index(nullptr, 0)})
    EXPECT_EQ(found, nullptr);
  EXPECT_EQ(genlist_delete_nodes(nullptr), nullptr);
  for (genlist* list : {bare, no_swap, static_cast<genlist*>(nullptr)})
    EXPECT_EQ(genlist_free(list), nullptr);
}

}  // namespace
