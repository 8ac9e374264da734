#include <orx/geometry/octree.h>

#include <orx/base/errno_guard.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr int kOctants = 8;
constexpr int kDefaultLimit = 64;
constexpr int kLeastLimit = 2;  // of a leaf that holds an item
constexpr int kAllAxes = kOctants - 1;
// Halvings from the widest box, 2^1025, to the narrowest, 2^-1074, and some for rounding.
constexpr int kMostLevels = 2112;
// Items that have not parted on so many levels seldom do further down, but a box beside 0 has a thousand
// levels.
constexpr int kPatience = 100;
// Fewer levels are not worth the two calls that find out whether an item is inside of all of them.
constexpr int kManyLevels = 4;

// What a leaf without an array of its own has in the place of one: a slot that is never filled.
void* no_items[1];

// A row for each octant. Its entries 0, 1, 2 are the octants beyond the x, the y and the z plane; 3 to 5
// those beyond both the x and the y plane, 6 to 8 beyond x and z, 9 to 11 beyond y and z. The order within a
// row decides which of several matches is found, and follows no rule.
constexpr std::int8_t kOctantNeighbours[kOctants][12] = {
    {1, 2, 4, 1, 2, 3, 1, 5, 4, 2, 6, 4}, {0, 3, 5, 3, 2, 0, 5, 4, 0, 3, 7, 5},
    {3, 0, 6, 3, 1, 0, 3, 6, 7, 6, 4, 0}, {2, 1, 7, 1, 2, 0, 2, 6, 7, 7, 5, 1},
    {5, 6, 0, 5, 6, 7, 0, 1, 5, 6, 2, 0}, {4, 7, 1, 4, 6, 7, 1, 0, 4, 7, 3, 1},
    {7, 4, 2, 4, 5, 7, 7, 3, 2, 2, 0, 4}, {6, 5, 3, 4, 5, 6, 3, 2, 6, 3, 1, 5}};

// Which entries of a row to search when an item is near some of the planes: x counts 1, y 2, z 4. Near all
// three, but not near the centre itself, z does not count.
constexpr struct {
  std::int8_t first, count;
} kNearPlanes[kOctants] = {{0, 0}, {0, 1}, {1, 1}, {3, 3}, {2, 1}, {6, 3}, {9, 3}, {3, 3}};

// Null when memory runs out.
template <class T>
T* allocated(std::size_t count) {
  const orx::ErrnoGuard errno_guard;
  return new (std::nothrow) T[count];
}

void delete_slots(void** points) {
  if (points != no_items) delete[] points;
}

// Items lie all over the memory, and the callbacks wait for them: these are on their way before their turn.
class Ahead {
 public:
  Ahead(void** items, int count) : items_(items), last_(count - 1) {
    for (int i = 0; i < std::min(kDistance, count); ++i) __builtin_prefetch(items[i]);
  }
  void Of(int i) const {
    if (i + kDistance <= last_) __builtin_prefetch(items_[i + kDistance]);
  }

 private:
  static constexpr int kDistance = 8;
  void** items_;
  int last_;
};

// Has the array of a leaf on its way while the leaf before it is visited.
void fetch(void** items, int count) {
  constexpr int kItemsOfALine = 64 / sizeof(void*);
  for (int i = 0; i < count; i += kItemsOfALine) __builtin_prefetch(items + i);
}

int least_size_log2(int slots) { return static_cast<int>(std::bit_width(static_cast<unsigned>(slots - 1))); }

// The index after this one; the host may let the last one overflow.
int after(int index) { return static_cast<int>(static_cast<unsigned>(index) + 1U); }

bool is_between(double value, double a, double b) {
  return (a < value && value < b) || (b < value && value < a);
}

// Whether a number is left between the faces on some axis.
bool can_split(const CORXOcTreeBB& box) {
  return is_between(box.centre.x, box.min.x, box.max.x) || is_between(box.centre.y, box.min.y, box.max.y) ||
         is_between(box.centre.z, box.min.z, box.max.z);
}

bool is_ordered(const CORXOcTreeBB& box) {
  return box.min.x <= box.max.x && box.min.y <= box.max.y && box.min.z <= box.max.z;
}

// The axes, a bit for each, on which the position is closer to the plane through `centre` than `reach`.
int near_planes(const CORXOcTreeBB::Point& position, const CORXOcTreeBB::Point& centre, double reach) {
  const double x = position.x - centre.x, y = position.y - centre.y, z = position.z - centre.z;
  return (reach > std::fabs(x) ? 1 : 0) | (reach > std::fabs(y) ? 2 : 0) | (reach > std::fabs(z) ? 4 : 0);
}

double distance(const CORXOcTreeBB::Point& a, const CORXOcTreeBB::Point& b) {
  const double x = a.x - b.x, y = a.y - b.y, z = a.z - b.z;
  return std::sqrt(x * x + y * y + z * z);
}

CORXOcTreeBB box_of_child(const CORXOcTreeBB& box, int octant) {
  const auto& [min, max, centre] = box;
  const bool low_x = (octant & 1) != 0, low_y = (octant & 2) != 0, low_z = (octant & 4) != 0;
  return {low_x ? min.x : centre.x, low_y ? min.y : centre.y, low_z ? min.z : centre.z,
          low_x ? centre.x : max.x, low_y ? centre.y : max.y, low_z ? centre.z : max.z};
}

}  // namespace

// On which sides of its planes a path of several levels goes: a bit for each axis, as in an octant.
struct orx::OcTreeSides {
  void Add(int octant) {
    low |= octant;
    high |= ~octant & kAllAxes;
  }
  int low = 0, high = 0;
};

// Levels without nodes of their own: on each, all items below the node lie in one octant.
struct orx::OcTreeLevels {
  std::int8_t* Octants() { return reinterpret_cast<std::int8_t*>(this + 1); }

  CORXOcTreeBB box;   // the one that the children divide
  OcTreeSides sides;  // of all planes but the first
  int count;
};

namespace {

struct DeleteLevels {
  void operator()(orx::OcTreeLevels* levels) const { delete[] reinterpret_cast<std::byte*>(levels); }
};
using Levels = std::unique_ptr<orx::OcTreeLevels, DeleteLevels>;

// Null when `count` is 0 or memory runs out.
Levels make_levels(const CORXOcTreeBB& top, const std::int8_t* octants, int count) {
  const std::size_t size = sizeof(orx::OcTreeLevels) + static_cast<std::size_t>(count);
  std::byte* const memory = count > 0 ? allocated<std::byte>(size) : nullptr;
  if (memory == nullptr) return nullptr;
  Levels levels(new (memory) orx::OcTreeLevels{box_of_child(top, octants[0]), {}, count});
  std::copy_n(octants, count, levels->Octants());
  for (int i = 1; i < count; ++i) {
    levels->box = box_of_child(levels->box, octants[i]);
    levels->sides.Add(octants[i]);
  }
  return levels;
}

}  // namespace

// Where the items of a leaf part: the first `together` of them lie in `octant`, the item after them in
// `next`.
struct CORXOcTreeGeneric::Parting {
  CORXOcTreeBB::Point centre;
  int together, octant, next;
};

// The octant of an item on one of the levels below a node.
struct CORXOcTreeGeneric::Place {
  int level, octant;
};

CORXOcTreeBB::CORXOcTreeBB(double min_x, double min_y, double min_z, double max_x, double max_y, double max_z)
    : min{min_x, min_y, min_z},
      max{max_x, max_y, max_z},
      centre{(min_x + max_x) / 2.0, (min_y + max_y) / 2.0, (min_z + max_z) / 2.0} {}

CORXOcTreeGeneric::CORXOcTreeGeneric(CORXOcTreeGeneric* above) : parent(above) { SetParent(above); }

CORXOcTreeGeneric::~CORXOcTreeGeneric() { CORXOcTreeGeneric::RemoveAll(); }

bool CORXOcTreeGeneric::Init(double min_x, double min_y, double min_z, double max_x, double max_y,
                             double max_z, int number) {
  CORXOcTreeGeneric::RemoveAll();  // an override need not leave the node empty
  octant = static_cast<std::int8_t>(number);
  bb = CORXOcTreeBB(min_x, min_y, min_z, max_x, max_y, max_z);
  return Resize(least_size_log2(std::max<int>(pointLimit, kLeastLimit)));
}

int CORXOcTreeGeneric::OctantAt(void* item, const CORXOcTreeBB::Point& centre) const {
  if (locateFunc == nullptr) return 0;
  return locateFunc(item, centre.x, centre.y, centre.z) & kAllAxes;
}

int CORXOcTreeGeneric::OctantOf(void* item) const { return OctantAt(item, bb.centre); }

// Whether the item lies on the same sides of all planes of a path as the box at its end. On each axis the
// faces of this box are the nearest planes. With the corners of a box in reverse they are the farthest, but
// then an item that is on the right side of the plane before the path is on the right side of all.
bool CORXOcTreeGeneric::IsInside(void* item, const CORXOcTreeBB& box, const orx::OcTreeSides& sides) const {
  return (OctantAt(item, box.min) & sides.high) == 0 && (~OctantAt(item, box.max) & sides.low) == 0;
}

// Whether an item whose octant in this node is `own` gets past the skipped levels.
// False also when only the walk through the levels can tell.
bool CORXOcTreeGeneric::SkipsLevels(void* item, int own) const {
  const bool has_many = skipped->count >= kManyLevels && own == skipped->Octants()[0];
  return has_many && IsInside(item, skipped->box, skipped->sides);
}

// Where an item whose octant in this node is `own` leaves the skipped levels, or lies on the children's
// level.
auto CORXOcTreeGeneric::Follow(void* item, int own) const -> Place {
  const int count = skipped->count;
  if (SkipsLevels(item, own)) return {count, OctantAt(item, skipped->box.centre)};
  const std::int8_t* const octants = skipped->Octants();
  CORXOcTreeBB box = bb;
  int level = 0;
  while (level < count && own == octants[level]) {
    box = box_of_child(box, own);
    own = OctantAt(item, box.centre);
    ++level;
  }
  return {level, own};
}

void* CORXOcTreeGeneric::FirstMatch(void* item) const {
  if (compareFunc == nullptr) return nullptr;
  const Ahead ahead(points, pointCount);
  for (int i = 0; i < pointCount; ++i) {
    ahead.Of(i);
    if (compareFunc(item, points[i]) != 0) return points[i];
  }
  return nullptr;
}

void* CORXOcTreeGeneric::FindNode(void* item) {
  const CORXOcTreeGeneric* node = this;
  while (node->children != nullptr) {
    int own = node->OctantOf(item);
    if (node->skipped != nullptr) {
      const Place place = node->Follow(item, own);
      if (place.level < node->skipped->count) return nullptr;
      own = place.octant;
    }
    node = &node->children[own];
  }
  return node->FirstMatch(item);
}

void* CORXOcTreeGeneric::AddNode(void* item) {
  Store(item);
  return item;
}

bool CORXOcTreeGeneric::IsFull() const {
  const std::int64_t limit = std::max<int>(pointLimit, kLeastLimit);
  return pointCount + 1 >= limit << doublings;
}

bool CORXOcTreeGeneric::Store(void* item) {
  CORXOcTreeGeneric* node = this;
  while (true) {
    int own = node->OctantOf(item);
    if (node->children == nullptr) {
      if (node->points == nullptr) return false;
      return node->IsFull() ? node->StoreInFullLeaf(item, own) : node->Append(item);
    }
    if (node->skipped != nullptr) {
      const Place place = node->Follow(item, own);
      if (place.level < node->skipped->count && !node->MakeLevel(place.level)) return false;
      own = place.octant;
    }
    node = &node->children[own];
  }
}

bool CORXOcTreeGeneric::StoreInFullLeaf(void* item, int own) {
  CORXOcTreeGeneric* const child = Separate(item, own);
  return child != nullptr ? child->Store(item) : Append(item);
}

bool CORXOcTreeGeneric::Append(void* item) {
  if (pointCount + 1 >= 1 << sizeLog2 && !Resize(std::max(sizeLog2 + 1, 3))) return false;
  points[pointCount++] = item;
  return true;
}

// Not inline, so that Append is: it is on the path of every item that is added.
[[gnu::noinline]] bool CORXOcTreeGeneric::Resize(int size_log2) {
  void** const resized = size_log2 < 31 ? allocated<void*>(std::size_t{1} << size_log2) : nullptr;
  if (resized == nullptr) return false;
  std::copy_n(points, pointCount, resized);
  delete_slots(points);
  points = resized;
  sizeLog2 = static_cast<std::int8_t>(size_log2);
  return true;
}

// Splits a full leaf, level by level until its items and `item` part, and gives back the child where `item`
// lies. Null when they do not part or memory runs out; the leaf is then as it was, and has twice the limit.
CORXOcTreeGeneric* CORXOcTreeGeneric::Separate(void* item, int own) {
  std::array<std::int8_t, kMostLevels> path;
  int levels = 0;
  CORXOcTreeBB box = bb;
  while (locateFunc != nullptr && levels < kMostLevels && can_split(box)) {
    if (levels == kPatience && IsInseparable(item, box)) break;
    const Parting parting = LocateAll(box);
    if (parting.together < pointCount || parting.octant != own) {
      CORXOcTreeGeneric* const end = Split(path.data(), levels, parting);
      if (end == nullptr) break;
      return &end->children[own];
    }
    path[static_cast<std::size_t>(levels++)] = static_cast<std::int8_t>(parting.octant);
    box = box_of_child(box, parting.octant);
    own = OctantAt(item, box.centre);
  }
  while (IsFull()) ++doublings;
  return nullptr;
}

// Locates the items of the leaf in `box`, until one parts from those before it. Hosts may rely on the order
// of calls: an item is located in the box, and again in its octant there, as it is added to a child.
auto CORXOcTreeGeneric::LocateAll(const CORXOcTreeBB& box) const -> Parting {
  const Ahead ahead(points, pointCount);
  const int first = OctantAt(points[0], box.centre);
  const CORXOcTreeBB::Point centre = box_of_child(box, first).centre;
  for (int i = 1; i < pointCount; ++i) {
    ahead.Of(i);
    OctantAt(points[i - 1], centre);
    const int next = OctantAt(points[i], box.centre);
    if (next != first) return {box.centre, i, first, next};
  }
  OctantAt(points[pointCount - 1], centre);
  return {box.centre, pointCount, first, first};
}

// Whether all items follow the first one, down to where no number is left between the faces. Takes two calls
// an item and one a level.
bool CORXOcTreeGeneric::IsInseparable(void* item, const CORXOcTreeBB& top) const {
  if (!is_ordered(top)) return false;
  CORXOcTreeBB box = top;
  orx::OcTreeSides sides;
  while (can_split(box)) {
    const int own = OctantAt(points[0], box.centre);
    sides.Add(own);
    box = box_of_child(box, own);
  }
  const auto is_inside = [&](void* other) { return IsInside(other, box, sides); };
  return is_inside(item) && std::all_of(points, points + pointCount, is_inside);
}

// Splits a leaf and then the child at the end of a path of several levels, moves the items to the children
// there, and gives back their parent. Null when memory runs out; the leaf is then as it was.
CORXOcTreeGeneric* CORXOcTreeGeneric::Split(const std::int8_t* path, int levels, const Parting& parting) {
  children = NewChildren(bb);
  if (children == nullptr) return nullptr;
  CORXOcTreeGeneric* const end = levels > 0 ? &children[path[0]] : this;
  const bool is_split = levels == 0 || end->SplitBelow(path + 1, levels - 1);
  if (!is_split || !end->Distribute(points, pointCount, parting)) {
    for (int i = 0; i < kOctants; ++i) children[i].ForgetItems();
    delete[] children;
    children = nullptr;
    return nullptr;
  }
  delete_slots(points);
  skipped = nullptr;
  pointCount = 0;
  return end;
}

// Gives a new leaf children that are `count` levels further down than its own octants. False when memory runs
// out.
bool CORXOcTreeGeneric::SplitBelow(const std::int8_t* octants, int count) {
  Levels levels = make_levels(bb, octants, count);
  if (levels == nullptr && count > 0) return false;
  const auto* const last = levels.get();
  children = NewChildren(last != nullptr ? last->box : bb);
  if (children != nullptr) skipped = levels.release();
  return children != nullptr;
}

// Eight leaves that divide the box. Null when memory runs out.
CORXOcTreeGeneric* CORXOcTreeGeneric::NewChildren(const CORXOcTreeBB& box) {
  CORXOcTreeGeneric* const leaves = allocated<CORXOcTreeGeneric>(kOctants);
  for (int i = 0; leaves != nullptr && i < kOctants; ++i) {
    CORXOcTreeGeneric& leaf = leaves[i];
    leaf.SetParent(this);
    leaf.bb = box_of_child(box, i);
    leaf.points = no_items;
    leaf.tolerance = tolerance;
    leaf.octant = static_cast<std::int8_t>(i);
  }
  return leaves;
}

// Adds the items to the children. Those that LocateAll has located are not located again.
bool CORXOcTreeGeneric::Distribute(void** items, int count, const Parting& parting) {
  const int fitting = std::min(parting.together, std::max<int>(pointLimit, kLeastLimit) - 1);
  for (int i = 0; i < fitting; ++i) {
    if (!children[parting.octant].Append(items[i])) return false;
  }
  const Ahead ahead(items, count);
  for (int i = fitting; i < count; ++i) {
    ahead.Of(i);
    int number = i < parting.together ? parting.octant : parting.next;
    if (i > parting.together) number = OctantAt(items[i], parting.centre);
    if (!children[number].Store(items[i])) return false;
  }
  return true;
}

bool CORXOcTreeGeneric::Subdivide() {
  if (children != nullptr) return true;
  if (points == nullptr) return false;
  const int first = pointCount > 0 ? OctantOf(points[0]) : 0;
  return Split(nullptr, 0, {bb.centre, 0, first, first}) != nullptr;
}

// Leaves no items for RemoveAll to release.
void CORXOcTreeGeneric::ForgetItems() {
  pointCount = 0;
  for (int i = 0; children != nullptr && i < kOctants; ++i) children[i].ForgetItems();
}

// Makes the nodes that divide this node, or a box that it skips `level` levels below it. False when memory
// runs out.
bool CORXOcTreeGeneric::MakeLevel(int level) {
  const std::int8_t* const octants = skipped->Octants();
  const int own = octants[level];
  const int count_below = skipped->count - level - 1;
  Levels above = make_levels(bb, octants, level);
  const auto* const last = above.get();
  CORXOcTreeBB box = last != nullptr ? last->box : bb;
  Levels below = make_levels(box_of_child(box, own), octants + level + 1, count_below);
  const bool has_levels = (above != nullptr || level == 0) && (below != nullptr || count_below == 0);
  CORXOcTreeGeneric* const nodes = has_levels ? NewChildren(box) : nullptr;
  if (nodes == nullptr) return false;
  nodes[own].children = children;
  nodes[own].skipped = below.release();
  children = nodes;
  Levels(skipped).reset();
  skipped = above.release();
  return true;
}

void CORXOcTreeGeneric::RemoveAll() {
  for (int i = 0; freeFunc != nullptr && i < pointCount; ++i) freeFunc(&points[i]);
  if (children == nullptr) {
    delete_slots(points);
  } else {
    DeleteLevels()(skipped);
  }
  points = nullptr;
  pointCount = 0;
  doublings = 0;
  delete[] children;
  children = nullptr;
}

void CORXOcTreeGeneric::Clear() { RemoveAll(); }

void CORXOcTreeGeneric::SetParent(CORXOcTreeGeneric* above) {
  pointLimit = above != nullptr ? above->pointLimit : std::int16_t{kDefaultLimit};
  compareFunc = above != nullptr ? above->compareFunc : nullptr;
  locateFunc = above != nullptr ? above->locateFunc : nullptr;
  freeFunc = above != nullptr ? above->freeFunc : nullptr;
}

void CORXOcTreeGeneric::SetFunctions(ORXOcTreeCompareFn compare, ORXOcTreeLocateFn locate,
                                     ORXOcTreeFreeFn release) {
  compareFunc = compare;
  locateFunc = locate;
  freeFunc = release;
}

int CORXOcTreeGeneric::GetPointLimit() const { return pointLimit; }

void CORXOcTreeGeneric::SetPointLimit(int limit) { pointLimit = static_cast<std::int16_t>(limit); }

double CORXOcTreeGeneric::GetTolerance() const { return tolerance; }

void CORXOcTreeGeneric::SetTolerance(double distance) { tolerance = distance; }

int CORXOcTreeGeneric::SuperFindNode(void* item) {
  if (compareFunc == nullptr) return 0;
  int matches = 0;
  for (int i = 0; i < pointCount; ++i) matches += compareFunc(points[i], item) != 0 ? 1 : 0;
  for (int i = 0; children != nullptr && i < kOctants; ++i) matches += children[i].SuperFindNode(item);
  return matches;
}

void CORXOcTreeGeneric::Iterate(ORXOcTreeVisitFn visit, void* user, int& counter) {
  if (visit == nullptr) return;
  for (int i = 0; i < pointCount; ++i) visit(std::exchange(counter, after(counter)), points[i], user);
  for (int i = 0; children != nullptr && i < kOctants; ++i) {
    if (i + 1 < kOctants) fetch(children[i + 1].points, children[i + 1].pointCount);
    children[i].Iterate(visit, user, counter);
  }
}

int CORXOcTreeGeneric::GetCount() const {
  int count = pointCount;
  for (int i = 0; children != nullptr && i < kOctants; ++i) count += children[i].GetCount();
  return count;
}

int CORXOcTreeGeneric::PointCount() const { return pointCount; }

void** CORXOcTreeGeneric::GetPoints() const { return children == nullptr ? points : nullptr; }

CORXOcTreeBB* CORXOcTreeGeneric::GetBB() { return &bb; }

CORXOcTreeGeneric* CORXOcTreeGeneric::GetChild(int number) {
  if (children == nullptr || number < 0 || number >= kOctants) return nullptr;
  if (skipped != nullptr && !MakeLevel(0)) return nullptr;
  return &children[number];
}

CORXOcTreeNode::CORXOcTreeNode(CORXOcTreeGeneric* above) : CORXOcTreeGeneric(above) {}

CORXOcTreeNode::~CORXOcTreeNode() = default;

void* CORXOcTreeNode::FindNode(void* item) { return FindNodeAndNeighbours(item, true); }

void* CORXOcTreeNode::FindNodeAndNeighbours(void* item, bool neighbours) {
  if (item == nullptr) return nullptr;
  if (neighbours || children == nullptr) return Search(*this, item);
  return Search(children[OctantOf(item)], item);
}

// Whether the search for an item at a node with this centre goes into the octant.
bool CORXOcTreeNode::LooksInto(int number, const CORXOcTreeGeneric& node, const CORXOcTreeBB::Point& centre,
                               void* item) {
  const auto& position = *static_cast<const CORXOcTreeBB::Point*>(item);
  if (node.tolerance > distance(position, centre)) return true;
  const int own = node.OctantAt(item, centre);
  const auto [first, count] = kNearPlanes[near_planes(position, centre, node.tolerance)];
  const std::int8_t* const beyond = kOctantNeighbours[own] + first;
  return own == number || std::find(beyond, beyond + count, number) != beyond + count;
}

// Whether the search for an item gets past the skipped levels. Their other octants hold nothing to find.
bool CORXOcTreeNode::LooksPastSkipped(const CORXOcTreeGeneric& node, void* item) {
  if (node.skipped->count >= kManyLevels && node.SkipsLevels(item, node.OctantOf(item))) return true;
  const std::int8_t* const octants = node.skipped->Octants();
  CORXOcTreeBB box = node.bb;
  for (int i = 0; i < node.skipped->count; ++i) {
    if (!LooksInto(octants[i], node, box.centre, item)) return false;
    box = box_of_child(box, octants[i]);
  }
  return true;
}

void* CORXOcTreeNode::Search(const CORXOcTreeGeneric& top, void* item) {
  const auto& position = *static_cast<const CORXOcTreeBB::Point*>(item);
  const CORXOcTreeGeneric* node = &top;
  while (node->children != nullptr) {
    const CORXOcTreeBB* box = &node->bb;
    if (node->skipped != nullptr) {
      if (!LooksPastSkipped(*node, item)) return nullptr;
      box = &node->skipped->box;
    }
    const double reach = node->tolerance;
    const int planes = near_planes(position, box->centre, reach);
    if (reach > distance(position, box->centre)) return SearchAll(*node, item);
    const CORXOcTreeGeneric* const below = node->children;
    const int own = node->OctantAt(item, box->centre);
    const auto [first, count] = kNearPlanes[planes];
    if (count == 0) {
      node = &below[own];
      continue;
    }
    void* found = Search(below[own], item);
    for (int i = first; found == nullptr && i < first + count; ++i) {
      found = Search(below[kOctantNeighbours[own][i]], item);
    }
    return found;
  }
  return node->FirstMatch(item);
}

void* CORXOcTreeNode::SearchAll(const CORXOcTreeGeneric& node, void* item) {
  void* found = nullptr;
  for (int i = 0; found == nullptr && i < kOctants; ++i) found = Search(node.children[i], item);
  return found;
}
