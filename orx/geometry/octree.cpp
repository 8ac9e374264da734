#include <orx/geometry/octree.h>

#include <orx/platform/kept_errno.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <new>
#include <utility>

namespace {

constexpr int kOctants = 8;
constexpr int kDefaultLimit = 64;
constexpr int kLeastLimit = 2;  // of a leaf that holds an item
constexpr int kMaxLevel = 20;

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
  const orx::platform::KeptErrno kept;
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

}  // namespace

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

int CORXOcTreeGeneric::OctantOf(void* item) const {
  if (locateFunc == nullptr) return 0;
  return locateFunc(item, bb.centre.x, bb.centre.y, bb.centre.z) & (kOctants - 1);
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
  return children == nullptr ? FirstMatch(item) : children[OctantOf(item)].FindNode(item);
}

void* CORXOcTreeGeneric::AddNode(void* item) {
  Store(item);
  return item;
}

bool CORXOcTreeGeneric::Store(void* item) {
  CORXOcTreeGeneric* node = this;
  while (true) {
    const int child = node->OctantOf(item);
    if (node->children == nullptr) {
      if (node->points == nullptr) return false;
      const bool is_full = node->pointCount + 1 >= std::max<int>(node->pointLimit, kLeastLimit);
      if (!is_full || !node->Subdivide()) return node->Append(item);
    }
    node = &node->children[child];
  }
}

bool CORXOcTreeGeneric::Append(void* item) {
  if (pointCount + 1 >= 1 << sizeLog2 && !Resize(std::max(sizeLog2 + 1, 3))) return false;
  points[pointCount++] = item;
  return true;
}

bool CORXOcTreeGeneric::Resize(int size_log2) {
  void** const resized = size_log2 < 31 ? allocated<void*>(std::size_t{1} << size_log2) : nullptr;
  if (resized == nullptr) return false;
  std::copy_n(points, pointCount, resized);
  delete_slots(points);
  points = resized;
  sizeLog2 = static_cast<std::int8_t>(size_log2);
  return true;
}

bool CORXOcTreeGeneric::CanSplit() const {
  return points != nullptr && locateFunc != nullptr && level < kMaxLevel &&
         (is_between(bb.centre.x, bb.min.x, bb.max.x) || is_between(bb.centre.y, bb.min.y, bb.max.y) ||
          is_between(bb.centre.z, bb.min.z, bb.max.z));
}

void CORXOcTreeGeneric::MakeChild(int child_octant) {
  const auto& [min, max, centre] = bb;
  const bool low_x = (child_octant & 1) != 0, low_y = (child_octant & 2) != 0,
             low_z = (child_octant & 4) != 0;
  CORXOcTreeGeneric& child = children[child_octant];
  child.SetParent(this);
  child.bb = CORXOcTreeBB(low_x ? min.x : centre.x, low_y ? min.y : centre.y, low_z ? min.z : centre.z,
                          low_x ? centre.x : max.x, low_y ? centre.y : max.y, low_z ? centre.z : max.z);
  child.level = static_cast<std::int8_t>(level + 1);
  child.points = no_items;
  child.tolerance = tolerance;
  child.octant = static_cast<std::int8_t>(child_octant);
}

bool CORXOcTreeGeneric::Subdivide() {
  if (!CanSplit()) return false;
  children = allocated<CORXOcTreeGeneric>(kOctants);
  if (children == nullptr) return false;
  for (int i = 0; i < kOctants; ++i) MakeChild(i);
  const Ahead ahead(points, pointCount);
  for (int i = 0; i < pointCount; ++i) {
    ahead.Of(i);
    if (!children[OctantOf(points[i])].Store(points[i])) {
      Forget();
      return false;
    }
  }
  delete_slots(points);
  points = nullptr;
  pointCount = 0;
  return true;
}

// Removes the children without releasing the items in them.
void CORXOcTreeGeneric::Forget() {
  for (int i = 0; children != nullptr && i < kOctants; ++i) {
    children[i].Forget();
    children[i].pointCount = 0;
  }
  delete[] children;
  children = nullptr;
}

void CORXOcTreeGeneric::RemoveAll() {
  for (int i = 0; freeFunc != nullptr && i < pointCount; ++i) freeFunc(&points[i]);
  delete_slots(points);
  points = nullptr;
  pointCount = 0;
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

void** CORXOcTreeGeneric::GetPoints() const { return points; }

CORXOcTreeBB* CORXOcTreeGeneric::GetBB() { return &bb; }

CORXOcTreeGeneric* CORXOcTreeGeneric::GetChild(int number) {
  return children != nullptr && number >= 0 && number < kOctants ? &children[number] : nullptr;
}

CORXOcTreeNode::CORXOcTreeNode(CORXOcTreeGeneric* above) : CORXOcTreeGeneric(above) {}

CORXOcTreeNode::~CORXOcTreeNode() = default;

void* CORXOcTreeNode::FindNode(void* item) { return FindNodeAndNeighbours(item, true); }

void* CORXOcTreeNode::FindNodeAndNeighbours(void* item, bool neighbours) {
  if (item == nullptr) return nullptr;
  if (neighbours || children == nullptr) return Search(*this, item);
  return Search(children[OctantOf(item)], item);
}

void* CORXOcTreeNode::Search(const CORXOcTreeGeneric& top, void* item) {
  const auto& position = *static_cast<const CORXOcTreeBB::Point*>(item);
  const CORXOcTreeGeneric* node = &top;
  while (node->children != nullptr) {
    const CORXOcTreeBB::Point& centre = node->bb.centre;
    const double x = position.x - centre.x, y = position.y - centre.y, z = position.z - centre.z;
    const double reach = node->tolerance;
    const int planes =
        (reach > std::fabs(x) ? 1 : 0) | (reach > std::fabs(y) ? 2 : 0) | (reach > std::fabs(z) ? 4 : 0);
    if (reach > std::sqrt(x * x + y * y + z * z)) return SearchAll(*node, item);
    const CORXOcTreeGeneric* const below = node->children;
    const int own = node->OctantOf(item);
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
