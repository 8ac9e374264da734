#include <orx/geometry/octree.h>

#include <gtest/gtest.h>
#include <tests/support/failing_memory.h>

#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

static_assert(!std::is_copy_constructible_v<CORXOcTreeGeneric> && !std::is_copy_assignable_v<CORXOcTreeNode>);

struct Item {
  double x, y, z;
  int id = 0;
};
using Items = std::vector<Item>;
using Found = std::vector<void*>;

const Item& at(void* item) { return *static_cast<Item*>(item); }

int octant_of(const Item& item, double x, double y, double z) {
  return (item.x < x ? 1 : 0) | (item.y < y ? 2 : 0) | (item.z < z ? 4 : 0);
}
int locate(void* item, double x, double y, double z) { return octant_of(at(item), x, y, z); }
int far_off(void* item, double x, double y, double z) { return locate(item, x, y, z) - 8000; }
int is_same(void* a, void* b) {
  return at(a).x == at(b).x && at(a).y == at(b).y && at(a).z == at(b).z ? 5 : 0;
}
int is_close(void* a, void* b) {
  return std::hypot(at(a).x - at(b).x, at(a).y - at(b).y, at(a).z - at(b).z) < 1.5 ? -1 : 0;
}

std::ostringstream calls;  // what these two have been called with
int logged_locate(void* item, double x, double y, double z) {
  calls << at(item).id << '@' << x << ' ';
  return locate(item, x, y, z);
}
int logged_compare(void* a, void* b) {
  calls << at(a).id << '=' << at(b).id << ' ';
  return is_same(a, b);
}
std::string calls_made() {
  std::string made = calls.str();
  calls.str("");
  return made;
}

std::multiset<void*> released;
void release(void** slot) { released.insert(*slot); }

Found all_of(CORXOcTreeGeneric& tree) {
  Found found;
  int counter = 10;
  const auto collect = [](int index, void* item, void* items) {
    static_cast<Found*>(items)->push_back(item);
    EXPECT_EQ(index, static_cast<int>(static_cast<Found*>(items)->size()) + 9);
  };
  tree.Iterate(collect, &found, counter);
  EXPECT_EQ(counter, tree.GetCount() + 10);
  return found;
}

void init(CORXOcTreeGeneric& tree, int limit, ORXOcTreeCompareFn compare = is_same,
          ORXOcTreeLocateFn locator = locate) {
  tree.SetFunctions(compare, locator, release);
  tree.SetPointLimit(limit);
  ASSERT_TRUE(tree.Init(0, 0, 0, 8, 8, 8, 3));
}
void add(CORXOcTreeGeneric& tree, Items& items) {
  for (Item& item : items) EXPECT_EQ(tree.AddNode(&item), &item);
}

// The search, written out on what a node shows.
void* sought(CORXOcTreeGeneric& node, Item& item, ORXOcTreeCompareFn compare, bool across) {
  for (int i = 0; i < node.PointCount(); ++i) {
    if (compare(&item, node.GetPoints()[i]) != 0) return node.GetPoints()[i];
  }
  if (node.GetChild(0) == nullptr) return nullptr;
  static const char* const rows[] = {"124123154264", "035320540375", "306310367640", "217120267751",
                                     "560567015620", "471467104731", "742457732204", "653456326315"};
  const auto& [x, y, z] = node.GetBB()->centre;
  const double t = across ? node.GetTolerance() : 0, dx = item.x - x, dy = item.y - y, dz = item.z - z;
  const bool nx = t > std::fabs(dx), ny = t > std::fabs(dy), nz = t > std::fabs(dz);
  const std::size_t own = static_cast<std::size_t>(octant_of(item, x, y, z));
  std::string order = std::to_string(own);
  if (nx && ny) order.append(rows[own], 3, 3);
  if (nx && !ny) order.append(rows[own], nz ? 6 : 0, nz ? 3 : 1);
  if (!nx && ny) order.append(rows[own], nz ? 9 : 1, nz ? 3 : 1);
  if (!nx && !ny && nz) order.append(rows[own], 2, 1);
  if (t > std::sqrt(dx * dx + dy * dy + dz * dz)) order = "01234567";
  for (const char octant : order) {
    if (void* found = sought(*node.GetChild(octant - '0'), item, compare, across)) return found;
  }
  return nullptr;
}

// Every node keeps its shape, and every item lies where its octants lead.
void check(CORXOcTreeGeneric& node, int limit, int level = 0) {
  if (node.GetChild(0) == nullptr) {
    EXPECT_TRUE(node.GetPoints() != nullptr && (node.PointCount() < limit || level == 20));
    return;
  }
  EXPECT_TRUE(node.GetPoints() == nullptr && node.PointCount() == 0 && level < 20);
  const auto& [min, max, centre] = *node.GetBB();
  for (int i = 0; i < 8; ++i) {
    CORXOcTreeGeneric& child = *node.GetChild(i);
    EXPECT_EQ(child.GetTolerance(), node.GetTolerance());
    const bool x = (i & 1) != 0, y = (i & 2) != 0, z = (i & 4) != 0;
    const auto& [low, high, unused] = *child.GetBB();
    EXPECT_EQ(std::tuple(low.x, low.y, low.z, high.x, high.y, high.z),
              std::tuple(x ? min.x : centre.x, y ? min.y : centre.y, z ? min.z : centre.z,
                         x ? centre.x : max.x, y ? centre.y : max.y, z ? centre.z : max.z));
    for (void* item : all_of(child)) EXPECT_EQ(locate(item, centre.x, centre.y, centre.z), i);
    check(child, limit, level + 1);
  }
}

// Coordinates of one kind each, for a box from 0 to 8.
Items shaped(int shape, std::mt19937& random) {
  std::uniform_real_distribution<double> uniform(0, 8);
  const double odd[] = {0, -0.0, 4, 8, HUGE_VAL, -HUGE_VAL, NAN, DBL_MAX, DBL_MIN};
  const auto value = [&] {
    if (shape == 1) return 4 + std::round(uniform(random)) / 100 + uniform(random) / 1e4;  // clustered
    if (shape == 2) return std::floor(uniform(random) * 4) / 4;  // on dividing planes, often coincident
    if (shape == 3) return 100 - 30 * uniform(random);           // mostly outside
    if (shape == 4) return odd[random() % std::size(odd)];
    return uniform(random);
  };
  Items items(300);
  for (Item& item : items) item = {value(), value(), value()};
  return items;
}

template <class Root>
void agree_with_brute_force(bool across) {
  std::mt19937 random(7);
  for (int run = 0; run < 40; ++run) {
    const int shape = run % 5, limit = run % 3 == 0 ? 64 : 2 + run % 4;
    SCOPED_TRACE("shape " + std::to_string(shape) + " limit " + std::to_string(limit));
    const ORXOcTreeCompareFn compare = run % 2 == 0 ? is_same : is_close;
    Items items = shaped(shape, random), probes = shaped(run % 7 == 0 ? 0 : shape, random);
    Root tree;
    tree.SetTolerance(run % 4 == 0 ? 1.5 : 0.2);
    init(tree, run % 11 < 3 ? 10 : limit, compare, run % 6 == 0 ? far_off : locate);
    tree.SetPointLimit(limit);  // raised or lowered
    add(tree, items);
    check(tree, limit);
    const Found found = all_of(tree);
    EXPECT_EQ(std::set<void*>(found.begin(), found.end()).size(), items.size());
    probes.insert(probes.end(), items.begin(), items.end());
    for (Item& probe : probes) {
      int matches = 0;
      for (Item& item : items) matches += compare(&item, &probe) != 0 ? 1 : 0;
      EXPECT_EQ(tree.SuperFindNode(&probe), matches);
      EXPECT_EQ(tree.FindNode(&probe), sought(tree, probe, compare, across));
    }
  }
}

TEST(Octree, AgreesWithBruteForce) {
  agree_with_brute_force<CORXOcTreeGeneric>(false);
  agree_with_brute_force<CORXOcTreeNode>(true);
}

TEST(Octree, CallsBackInOrder) {
  CORXOcTreeGeneric tree;
  init(tree, 4, logged_compare, logged_locate);
  Items items = {{1, 1, 1, 1}, {7, 7, 7, 2}, {1, 2, 1, 3}, {7, 7, 7, 4}};
  add(tree, items);
  EXPECT_EQ(calls_made(), "1@4 2@4 3@4 4@4 1@4 1@2 2@4 2@6 3@4 3@2 4@6 ");  // the split, then the new one
  Item probe = {7, 7, 7, 9}, next_door = {7, 7, 3.9, 8};
  EXPECT_EQ(tree.FindNode(&probe), &items[1]);
  EXPECT_EQ(tree.FindNode(&next_door), nullptr);
  EXPECT_EQ(calls_made(), "9@4 9=2 8@4 ");
  EXPECT_EQ(tree.SuperFindNode(&probe), 2);
  EXPECT_EQ(calls_made(), "2=9 4=9 1=9 3=9 ");
  EXPECT_EQ(all_of(tree), (Found{&items[1], &items[3], &items[0], &items[2]}));
}

TEST(Octree, SearchesNeighboursInTheirOrder) {
  CORXOcTreeNode tree;
  tree.SetTolerance(0.5);
  init(tree, 2, logged_compare);
  Items items;
  for (int i = 0; i < 8; ++i) {
    items.push_back({(i & 1) != 0 ? 2. : 6., (i & 2) != 0 ? 2. : 6., (i & 4) != 0 ? 2. : 6., i});
  }
  add(tree, items);
  const double values[] = {3, 3.5, 3.6, 3.9, 4, 4.4};
  for (int i = 0; i < 6 * 6 * 6; ++i) {
    Item probe = {values[i % 6], values[i / 6 % 6], values[i / 36], i};
    tree.FindNode(&probe);
    const std::string made = calls_made();
    sought(tree, probe, logged_compare, true);
    EXPECT_EQ(made, calls_made());
  }
}

TEST(Octree, SplitsAtItsLimit) {
  for (const auto& [limit, split] : std::map<int, int>{
           {-5, 2}, {0, 2}, {1, 2}, {2, 2}, {4, 4}, {64, 64}, {100, 100}, {32767, 32767}, {65536 + 4, 4}}) {
    CORXOcTreeGeneric tree;
    init(tree, limit);
    Items items(static_cast<std::size_t>(split) - 1);
    for (Item& item : items) item.x = 8.0 * static_cast<double>(&item - items.data()) / split;
    add(tree, items);
    EXPECT_TRUE(tree.GetChild(0) == nullptr && tree.PointCount() == split - 1) << limit;
    Item last = {7, 7, 7};
    tree.AddNode(&last);
    EXPECT_TRUE(tree.GetChild(0) != nullptr && tree.GetCount() == split) << limit;
  }
}

TEST(Octree, GrowsWhereItCannotSplit) {
  const struct {
    double low, high;
    bool splits;
  } cases[] = {{0, 8, true},
               {8, 0, true},
               {5, 5, false},
               {1, std::nextafter(1.0, 2), false},
               {-HUGE_VAL, HUGE_VAL, false},
               {0, INFINITY, false},
               {DBL_MAX / 1.5, DBL_MAX, false},
               {NAN, 1, false}};
  for (std::size_t i = 0; i < 3 * std::size(cases); ++i) {
    const auto& [low, high, splits] = cases[i / 3];
    double box[] = {5, 5, 5, 5, 5, 5};  // flat but for one axis
    box[i % 3] = low;
    box[i % 3 + 3] = high;
    CORXOcTreeNode tree;
    tree.SetFunctions(is_same, locate, nullptr);
    ASSERT_TRUE(tree.Init(box[0], box[1], box[2], box[3], box[4], box[5], 0));
    Items items(i % 3 == 0 ? 40'000 : 100, Item{5, 5, 5});
    const int count = static_cast<int>(items.size());
    add(tree, items);
    EXPECT_EQ(tree.GetCount(), count) << low << ' ' << high;
    EXPECT_EQ(tree.GetChild(0) != nullptr, splits) << low << ' ' << high;
    EXPECT_EQ(tree.FindNode(&items[9]), &items[0]);
    EXPECT_EQ(tree.SuperFindNode(&items[9]), count);
  }
}

TEST(Octree, IsEmptyBeforeInitAndAfterRemoveAll) {
  CORXOcTreeNode tree;
  Items items = {{1, 2, 3}, {7, 7, 7}};
  for (int round = 0; round < 2; ++round) {
    add(tree, items);
    EXPECT_EQ(tree.FindNode(&items[0]), nullptr);
    EXPECT_EQ(tree.SuperFindNode(&items[0]) + tree.GetCount() + tree.PointCount(), 0);
    EXPECT_TRUE(all_of(tree).empty() && tree.GetPoints() == nullptr && tree.GetChild(7) == nullptr);
    init(tree, 2);
    add(tree, items);
    EXPECT_EQ(tree.FindNode(&items[0]), &items[0]);
    EXPECT_EQ(tree.FindNode(nullptr), nullptr);
    EXPECT_TRUE(tree.GetChild(-1) == nullptr && tree.GetChild(8) == nullptr);
    released.clear();
    init(tree, 2);  // again, with what it holds
    EXPECT_EQ(released, (std::multiset<void*>{&items[0], &items[1]}));
    EXPECT_EQ(tree.GetCount(), 0);
    tree.Clear();
  }
}

TEST(Octree, TakesCallbacksThatAreMissing) {
  std::mt19937 random(5);
  Items items = shaped(0, random);
  CORXOcTreeNode heap;
  init(heap, 4, is_same, nullptr);
  add(heap, items);
  EXPECT_EQ(heap.PointCount(), 300);
  for (Item& item : items) EXPECT_EQ(heap.FindNode(&item), &item);
  int counter = INT_MAX;
  heap.Iterate(nullptr, nullptr, counter);
  heap.Iterate([](int, void*, void*) {}, nullptr, counter);
  EXPECT_EQ(counter, INT_MIN + 299);
  CORXOcTreeGeneric mute;
  init(mute, 500, nullptr);
  add(mute, items);
  EXPECT_TRUE(mute.FindNode(&items[0]) == nullptr && mute.SuperFindNode(&items[0]) == 0);
}

TEST(Octree, KeepsWhatItHasWhenMemoryRunsOut) {
  std::mt19937 random(11);
  Items items = shaped(1, random);
  for (int allowed = 0; allowed < 60; ++allowed) {
    released.clear();
    std::multiset<void*> stored;
    {
      CORXOcTreeGeneric tree;
      tree.SetFunctions(is_same, locate, release);
      tree.SetPointLimit(2 + allowed % 9);
      orx::testing::allocations_left = allowed;
      errno = 7;
      EXPECT_EQ(tree.Init(0, 0, 0, 8, 8, 8, 0), allowed > 0);
      for (Item& item : items) {
        const bool is_plenty = &item - items.data() > 200;
        if (is_plenty) orx::testing::allocations_left = INT_MAX;
        const int before = tree.GetCount();
        EXPECT_EQ(tree.AddNode(&item), &item);
        if (tree.GetCount() > before) stored.insert(&item);
        EXPECT_TRUE(tree.GetCount() == before + 1 || allowed == 0 || !is_plenty);
      }
      const Found found = all_of(tree);
      EXPECT_EQ(std::multiset<void*>(found.begin(), found.end()), stored);
      for (void* item : stored) EXPECT_NE(tree.FindNode(item), nullptr);
      EXPECT_EQ(errno, 7);
    }
    EXPECT_EQ(released, stored);
  }
}

}  // namespace
