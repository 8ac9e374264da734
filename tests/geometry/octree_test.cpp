#include <orx/geometry/octree.h>

#include <gtest/gtest.h>
#include <tests/support/failing_memory.h>

#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
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

int locate_count = 0, compare_count = 0;
int locate(void* item, double x, double y, double z) {
  ++locate_count;
  return (at(item).x < x ? 1 : 0) | (at(item).y < y ? 2 : 0) | (at(item).z < z ? 4 : 0);
}
int far_off(void* item, double x, double y, double z) { return locate(item, x, y, z) - 8000; }
int is_same(void* a, void* b) {
  ++compare_count;
  return at(a).x == at(b).x && at(a).y == at(b).y && at(a).z == at(b).z ? 5 : 0;
}
int is_close(void* a, void* b) {
  ++compare_count;
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
std::string calls_made() { return std::exchange(calls, std::ostringstream()).str(); }

std::multiset<void*> released;
void release(void** slot) { released.insert(*slot); }

void init(CORXOcTreeGeneric& tree, int limit, ORXOcTreeCompareFn compare = is_same,
          ORXOcTreeLocateFn locator = locate, double size = 8) {
  tree.SetFunctions(compare, locator, release);
  tree.SetPointLimit(limit);
  ASSERT_TRUE(tree.Init(0, 0, 0, size, size, size, 3));
}
void add(CORXOcTreeGeneric& tree, Items& items) {
  for (Item& item : items) EXPECT_EQ(tree.AddNode(&item), &item);
}

// The search, written out on what a node shows.
void* sought(CORXOcTreeGeneric& node, Item& item, ORXOcTreeCompareFn compare, bool across) {
  for (int i = 0; i < node.PointCount(); ++i)
    if (compare(&item, node.GetPoints()[i]) != 0) return node.GetPoints()[i];
  if (node.GetChild(0) == nullptr) return nullptr;
  static const char* const rows[] = {"124123154264", "035320540375", "306310367640", "217120267751",
                                     "560567015620", "471467104731", "742457732204", "653456326315"};
  const auto& [x, y, z] = node.GetBB()->centre;
  const double t = across ? node.GetTolerance() : 0, dx = item.x - x, dy = item.y - y, dz = item.z - z;
  const bool nx = t > std::fabs(dx), ny = t > std::fabs(dy), nz = t > std::fabs(dz);
  const std::size_t own = static_cast<std::size_t>(locate(&item, x, y, z));
  std::string order = std::to_string(own);
  if (nx && ny) order.append(rows[own], 3, 3);
  if (nx && !ny) order.append(rows[own], nz ? 6 : 0, nz ? 3 : 1);
  if (!nx && ny) order.append(rows[own], nz ? 9 : 1, nz ? 3 : 1);
  if (!nx && !ny && nz) order.append(rows[own], 2, 1);
  if (t > std::sqrt(dx * dx + dy * dy + dz * dz)) order = "01234567";
  for (const char octant : order)
    if (void* found = sought(*node.GetChild(octant - '0'), item, compare, across)) return found;
  return nullptr;
}

CORXOcTreeNode* tree_to_read = nullptr;  // by callbacks
void walk_to(void* item) {
  if (tree_to_read != nullptr) sought(*tree_to_read, *static_cast<Item*>(item), is_same, false);
}

Found all_of(CORXOcTreeGeneric& tree) {
  Found found;
  int counter = 10;
  const auto collect = [](int index, void* item, void* items) {
    static_cast<Found*>(items)->push_back(item);
    walk_to(item);
    EXPECT_EQ(index, static_cast<int>(static_cast<Found*>(items)->size()) + 9);
  };
  tree.Iterate(collect, &found, counter);
  EXPECT_EQ(counter, tree.GetCount() + 10);
  return found;
}

CORXOcTreeBB octant_box(const CORXOcTreeBB& box, int octant) {
  const auto& [a, b, c] = box;
  const bool x = (octant & 1) != 0, y = (octant & 2) != 0, z = (octant & 4) != 0;
  return {x ? a.x : c.x, y ? a.y : c.y, z ? a.z : c.z, x ? c.x : b.x, y ? c.y : b.y, z ? c.z : b.z};
}

// Whether no plane of the box separates the first `count` items of a leaf.
bool are_inseparable(CORXOcTreeGeneric& leaf, int count) {
  const auto splits = [](double a, double b, double c) { return (a < c && c < b) || (b < c && c < a); };
  CORXOcTreeBB box = *leaf.GetBB();
  while (true) {
    const auto& [a, b, c] = box;
    if (!splits(a.x, b.x, c.x) && !splits(a.y, b.y, c.y) && !splits(a.z, b.z, c.z)) return true;
    const int octant = locate(leaf.GetPoints()[0], c.x, c.y, c.z);
    for (int i = 1; i < count; ++i)
      if (locate(leaf.GetPoints()[i], c.x, c.y, c.z) != octant) return false;
    box = octant_box(box, octant);
  }
}

// Every node keeps its shape, and every item lies where its octants lead. `path` is that of the node.
using Path = std::vector<std::pair<CORXOcTreeBB::Point, int>>;
void check(CORXOcTreeGeneric& node, int limit, Path& path) {
  if (node.GetChild(0) == nullptr) {
    const int count = node.PointCount();
    ASSERT_TRUE(node.GetPoints() != nullptr && (count < limit || are_inseparable(node, (count + 1) / 2)));
    for (const auto& [centre, octant] : path) {
      for (int i = 0; i < count; ++i)
        ASSERT_EQ(locate(node.GetPoints()[i], centre.x, centre.y, centre.z), octant);
    }
    return;
  }
  EXPECT_TRUE(node.GetPoints() == nullptr && node.PointCount() == 0);
  for (int i = 0; i < 8; ++i) {
    CORXOcTreeGeneric& child = *node.GetChild(i);
    EXPECT_EQ(child.GetTolerance(), node.GetTolerance());
    const CORXOcTreeBB box = octant_box(*node.GetBB(), i);
    EXPECT_EQ(std::memcmp(child.GetBB(), &box, sizeof box), 0);
    path.emplace_back(node.GetBB()->centre, i);
    check(child, limit, path);
    path.pop_back();
  }
}

constexpr int kShapes = 8, kFar = 6;
// Coordinates of one kind each, for a box from 0 to 8, and from shape `kFar` on to 2^101.
Items shaped(int shape, std::mt19937& random) {
  std::uniform_real_distribution<double> uniform(0, 8);
  const double odd[] = {0, -0.0, 4, 8, HUGE_VAL, -HUGE_VAL, NAN, DBL_MAX, 0x1p-60};
  const auto value = [&] {
    if (shape == 1) return 6 + std::round(uniform(random)) / 100 + uniform(random) / 1e4;  // clustered
    if (shape == 2) return std::floor(uniform(random) * 4) / 4;  // on dividing planes, often coincident
    if (shape == 3) return 100 - 30 * uniform(random);           // mostly outside
    if (shape == 4) return odd[random() % std::size(odd)];
    if (shape == 5) {  // close together, beside dividing planes
      const double plane = random() % 2 == 0 ? 0.25 : 6.5;
      return plane + (random() % 2 == 0 ? 1e-3 : -1e-3) + uniform(random) / 1e8;
    }
    if (shape == kFar) return std::ldexp(uniform(random), static_cast<int>(random() % 98));
    if (shape == kFar + 1) return std::ldexp(std::round(uniform(random)), random() % 2 == 0 ? -9 : 60);
    return uniform(random);
  };
  Items items(200);
  for (Item& item : items) item = {value(), value(), value()};
  return items;
}

template <class Root>
void agree_with_brute_force(bool across) {
  std::mt19937 random(7);
  for (int run = 0; run < 80; ++run) {
    const int shape = run % kShapes, limit = run % 3 == 0 ? 64 : 2 + run % 5;
    SCOPED_TRACE("shape " + std::to_string(shape) + " limit " + std::to_string(limit));
    const ORXOcTreeCompareFn compare = run % 2 == 0 ? is_same : is_close;
    Items items = shaped(shape, random), probes = shaped(run % 11 == 0 ? 0 : shape, random);
    for (std::size_t i = 0; i < 20; ++i) probes[i].x -= 1;  // beside a cluster
    Root tree;
    const double size = shape < kFar ? 8 : std::ldexp(1, 101);
    tree.SetTolerance(run % 3 == 0 ? 1.5 : run % 3 == 1 ? 0.2 : 0.0012);
    init(tree, run % 11 < 3 ? 10 : limit, compare, run % 6 == 0 ? far_off : locate, size);
    const double left = run % 5 == 0 ? size : 0;  // sometimes x is reversed
    EXPECT_TRUE(tree.Init(left, 0, 0, size - left, size, size, 3));
    tree.SetPointLimit(limit);  // raised or lowered
    add(tree, items);
    const Found found = all_of(tree);
    EXPECT_EQ(std::set<void*>(found.begin(), found.end()).size(), items.size());
    probes.insert(probes.end(), items.begin(), items.end());
    Found matches;  // before GetChild has made the nodes of levels that were skipped
    for (Item& probe : probes) {
      int count = 0;
      for (Item& item : items) count += compare(&item, &probe) != 0 ? 1 : 0;
      EXPECT_EQ(tree.SuperFindNode(&probe), count);
      matches.push_back(tree.FindNode(&probe));
    }
    Path path;
    check(tree, limit, path);
    for (Item& probe : probes) {
      compare_count = 0;
      void* const match = sought(tree, probe, compare, across);
      const int compared = std::exchange(compare_count, 0);
      EXPECT_EQ(matches[static_cast<std::size_t>(&probe - probes.data())], match);
      EXPECT_EQ(tree.FindNode(&probe), match);
      EXPECT_EQ(compare_count, compared);
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
  init(tree, 2, logged_compare, logged_locate);
  Items close = {{1, 1, 1, 1}, {1.3, 1, 1, 2}};
  add(tree, close);  // level by level
  EXPECT_EQ(calls_made(),
            "1@4 2@4 1@4 1@2 2@2 1@2 1@1 2@1 1@1 1@1.5 2@1.5 1@1.5 1@1.25 2@1.25 1@1.25 1@1.125 2@1.375 ");
}

TEST(Octree, ReachesItemsInFewCallsInEveryRegion) {
  const double rows[][3] = {{0, 1e3, 1},     {-1e4, 1e4, 1},        {-1e5, 1e5, 1},
                            {-1e8, 1e8, 1},  {-1e15, 1e15, 1},      {0, DBL_MAX, 1e10},
                            {0, 1e30, 1e30}, {-1e300, 1e3, -1e300}, {-1e9, 1e10, 1e10}};
  for (const auto& [low, high, stray] : rows) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> uniform(0, 1000);
    Items items(20'000);
    for (Item& item : items) item = {uniform(random), uniform(random), uniform(random)};
    items[50].x = stray;
    CORXOcTreeNode tree;
    tree.SetFunctions(is_same, locate, nullptr);
    ASSERT_TRUE(tree.Init(low, low, low, high, high, high, 0));
    add(tree, items);
    locate_count = compare_count = 0;
    for (Item& item : items) EXPECT_EQ(tree.FindNode(&item), &item);
    EXPECT_LT(compare_count, 40 * 20'000) << low << ' ' << high;
    EXPECT_LT(locate_count, 14 * 20'000) << low << ' ' << high;
  }
}

TEST(Octree, TriesToPartCoincidentItemsSeldom) {
  for (const double place : {5.0, 0.0}) {  // a box beside 0 has a thousand levels
    CORXOcTreeGeneric tree;
    init(tree, 64);
    Items items(2000, Item{place, place, place});
    locate_count = 0;
    add(tree, items);
    EXPECT_LT(locate_count, 2000 * 500) << place;
    EXPECT_EQ(tree.PointCount(), 2000);
    Items others(2100, Item{7, 7, 7});
    add(tree, others);  // when there are twice as many, the two kinds part
    EXPECT_EQ(tree.PointCount(), 0);
    init(tree, 2);
    tree.AddNode(&items[0]);
    tree.AddNode(&others[0]);  // what the leaf had grown to is forgotten
    EXPECT_EQ(tree.PointCount(), 0);
  }
}

class Eager : public CORXOcTreeGeneric {
 public:
  using CORXOcTreeGeneric::Subdivide;
  void* AddNode(void* item) override {
    EXPECT_EQ(Subdivide(), octant >= 0);
    return CORXOcTreeGeneric::AddNode(item);
  }
};

TEST(Octree, SubdividesDegenerateNodes) {
  const double boxes[][2] = {{0, 8}, {8, 0}, {5, 5}, {NAN, NAN}, {-HUGE_VAL, HUGE_VAL}, {NAN, 1}};
  for (const auto& [low, high] : boxes) {
    for (const ORXOcTreeLocateFn locator : {locate, static_cast<ORXOcTreeLocateFn>(nullptr)}) {
      Items items(100, Item{5, 5, 5});
      Eager tree;
      tree.AddNode(&items[0]);  // not initialised
      init(tree, 4, is_same, locator);
      ASSERT_TRUE(tree.Init(low, low, low, high, high, high, 0));
      EXPECT_TRUE(tree.Subdivide() && tree.Subdivide());
      add(tree, items);
      EXPECT_TRUE(tree.GetCount() == 100 && tree.PointCount() == 0) << low << ' ' << high;
      EXPECT_EQ(tree.FindNode(&items[9]), &items[0]);
      tree.RemoveAll();
      EXPECT_FALSE(tree.Subdivide());
    }
  }
}

TEST(Octree, SearchesNeighboursInTheirOrder) {
  CORXOcTreeNode tree;
  tree.SetTolerance(0.5);
  init(tree, 2, logged_compare);
  Items items;
  for (int i = 0; i < 8; ++i)
    items.push_back({(i & 1) != 0 ? 2. : 6., (i & 2) != 0 ? 2. : 6., (i & 4) != 0 ? 2. : 6., i});
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

int reading_locate(void* item, double x, double y, double z) {
  CORXOcTreeNode* const tree = std::exchange(tree_to_read, nullptr);
  if (tree != nullptr) tree->FindNode(item);
  tree_to_read = tree;
  return locate(item, x, y, z);
}
int has_id(void* a, void* b) { return at(a).id == at(b).id ? 1 : 0; }
int walking_compare(void* a, void* b) {
  walk_to(a);
  return has_id(a, b);
}

TEST(Octree, CallbacksReadIt) {
  std::mt19937 random(1);
  for (int run = 0; run < 60; ++run) {
    Items items = shaped(5, random);
    items.resize(60);
    for (Item& item : items) item.id = static_cast<int>(&item - items.data()) % 12;
    CORXOcTreeNode tree, quiet;
    for (CORXOcTreeNode* const each : {&tree, &quiet}) each->SetTolerance(run % 2 == 0 ? 1.5 : 0.0012);
    init(quiet, 3, has_id);
    add(quiet, items);
    init(tree, 3);
    tree.SetFunctions(walking_compare, reading_locate, [](void**) { tree_to_read->GetCount(); });
    tree_to_read = &tree;
    add(tree, items);
    if (run % 3 == 0) all_of(tree);
    for (Item probe : items) {
      EXPECT_TRUE(run % 3 != 1 || tree.SuperFindNode(&probe) == 5);
      probe.id = (probe.id + 1) % 12;  // at the place of another item
      EXPECT_EQ(tree.FindNode(&probe), quiet.FindNode(&probe));
    }
  }
  tree_to_read = nullptr;
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
  const std::tuple<double, double, bool> cases[] = {{0, 8, true},         {8, 0, true},
                                                    {5, 5, false},        {1, std::nextafter(1.0, 2), false},
                                                    {0, HUGE_VAL, false}, {-HUGE_VAL, HUGE_VAL, false},
                                                    {NAN, 1, false},      {DBL_MAX / 1.5, DBL_MAX, false}};
  for (std::size_t i = 0; i < 3 * std::size(cases); ++i) {
    const auto& [low, high, splits] = cases[i / 3];
    double box[] = {5, 5, 5, 5, 5, 5};  // flat on the other two axes
    box[i % 3] = low;
    box[i % 3 + 3] = high;
    CORXOcTreeNode tree;
    tree.SetFunctions(is_same, locate, nullptr);
    ASSERT_TRUE(tree.Init(box[0], box[1], box[2], box[3], box[4], box[5], 0));
    Items items(i % 3 == 0 ? 40'000 : 100, Item{5, 5, 5});
    for (std::size_t k = 1; k < items.size(); k += 2) items[k] = {1, 1, 1};
    add(tree, items);
    EXPECT_EQ(tree.GetChild(0) != nullptr, splits) << low << ' ' << high;
    EXPECT_EQ(tree.FindNode(&items[9]), &items[1]);
    EXPECT_EQ(tree.SuperFindNode(&items[9]), tree.GetCount() / 2);
    EXPECT_EQ(static_cast<std::size_t>(tree.GetCount()), items.size());
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
  EXPECT_EQ(heap.PointCount(), 200);
  for (Item& item : items) EXPECT_EQ(heap.FindNode(&item), &item);
  int counter = INT_MAX;
  heap.Iterate(nullptr, nullptr, counter);
  heap.Iterate([](int, void*, void*) {}, nullptr, counter);
  EXPECT_EQ(counter, INT_MIN + 199);
  CORXOcTreeGeneric mute;
  init(mute, 500, nullptr);
  add(mute, items);
  EXPECT_TRUE(mute.FindNode(&items[0]) == nullptr && mute.SuperFindNode(&items[0]) == 0);
}

TEST(Octree, KeepsWhatItHasWhenMemoryRunsOut) {
  std::mt19937 random(11);
  for (int allowed = 0; allowed < 60; ++allowed) {
    Items items = shaped(allowed % 2 == 0 ? 1 : kFar, random);
    released.clear();
    std::multiset<void*> stored;
    {
      CORXOcTreeGeneric tree;
      tree.SetFunctions(is_same, locate, release);
      tree.SetPointLimit(2 + allowed % 9);
      orx::testing::allocations_left = allowed;
      errno = 7;
      EXPECT_EQ(tree.Init(0, 0, 0, items[0].x, 1e30, 8, 0), allowed > 0);
      for (Item& item : items) {
        const bool is_plenty = &item - items.data() > 130;
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
