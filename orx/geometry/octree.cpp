#include <orx/geometry/octree_levels.h>

#include <algorithm>
#include <bit>
#include <utility>

namespace {

constexpr int kDefaultLimit = 64;
constexpr int kMinLimit = 2;  // of a leaf that holds an item

// Loads the array of a leaf while the leaf before it is visited.
void prefetch_array(void** items, int count) {
  constexpr int kItemsPerLine = 64 / sizeof(void*);
  for (int i = 0; i < count; i += kItemsPerLine) orx::prefetch(items + i);
}

int least_size_log2(int slots) { return static_cast<int>(std::bit_width(static_cast<unsigned>(slots - 1))); }

// The index after this one; the host may let the last one overflow.
int next_index(int index) { return static_cast<int>(static_cast<unsigned>(index) + 1U); }

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
  return Resize(least_size_log2(LeafLimit()));
}

// Gives a leaf an array of 2^size_log2 slots. False when memory runs out; the leaf is then as it was.
// Not inline, so that Append is: every new item passes through Append, few through here.
[[gnu::noinline]] bool CORXOcTreeGeneric::Resize(int size_log2) {
  void** const resized = size_log2 < 31 ? orx::allocated<void*>(std::size_t{1} << size_log2) : nullptr;
  if (resized == nullptr) return false;
  std::copy_n(points, pointCount, resized);
  DeletePoints();
  points = resized;
  sizeLog2 = static_cast<std::int8_t>(size_log2);
  return true;
}

void CORXOcTreeGeneric::DeletePoints() {
  if (points != orx::no_items) delete[] points;
}

void CORXOcTreeGeneric::RemoveAll() {
  for (int i = 0; freeFunc != nullptr && i < pointCount; ++i) freeFunc(&points[i]);
  if (children == nullptr) {
    DeletePoints();
  } else {
    delete skipped;
  }
  points = nullptr;
  pointCount = 0;
  doublings = 0;
  delete[] std::exchange(children, nullptr);  // the releasing callback must not see them
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

int CORXOcTreeGeneric::LeafLimit() const { return std::max<int>(pointLimit, kMinLimit); }

double CORXOcTreeGeneric::GetTolerance() const { return tolerance; }

void CORXOcTreeGeneric::SetTolerance(double distance) { tolerance = distance; }

void* CORXOcTreeGeneric::FindNode(void* item) {
  const CORXOcTreeGeneric* node = this;
  while (node->children != nullptr) {
    int own = node->OctantOf(item);
    if (node->skipped != nullptr) {
      const Place place = node->DescendSkipped(item, own);
      if (place.level < node->skipped->count) return nullptr;
      own = place.octant;
    }
    node = &node->children[own];
  }
  return node->FirstMatch(item);
}

void* CORXOcTreeGeneric::FirstMatch(void* item) const {
  if (compareFunc == nullptr) return nullptr;
  const orx::Prefetcher prefetcher(points, pointCount);  // the first items are enough: the match comes soon
  for (int i = 0; i < pointCount; ++i) {
    if (compareFunc(item, points[i]) != 0) return points[i];
  }
  return nullptr;
}

void* CORXOcTreeGeneric::AddNode(void* item) {
  Store(item);
  return item;
}

// Adds an item below this node. False when the node is empty and when memory runs out.
bool CORXOcTreeGeneric::Store(void* item) {
  CORXOcTreeGeneric* node = this;
  while (true) {
    int own = node->OctantOf(item);
    if (node->children == nullptr) return node->StoreInLeaf(item, own);
    if (node->skipped != nullptr) {
      const Place place = node->DescendSkipped(item, own);
      if (place.level < node->skipped->count && !node->MakeLevel(place.level)) return false;
      own = place.octant;
    }
    node = &node->children[own];
  }
}

bool CORXOcTreeGeneric::StoreInLeaf(void* item, int own) {
  if (points == nullptr) return false;
  CORXOcTreeGeneric* const child = IsFull() ? SplitFullLeaf(item, own) : nullptr;
  return child != nullptr ? child->Store(item) : Append(item);
}

bool CORXOcTreeGeneric::IsFull() const { return pointCount + 1 >= std::int64_t{LeafLimit()} << doublings; }

// Finds where an item whose octant in this node is `own` leaves the skipped levels. An item that leaves none
// of them is on the level of the children.
auto CORXOcTreeGeneric::DescendSkipped(void* item, int own) const -> Place {
  const orx::OcTreeLevels& levels = *skipped;
  if (levels.AreMany() && IsPastSkipped(item, own)) {
    return {levels.count, OctantAt(item, levels.path.box.centre)};
  }
  CORXOcTreeBB box = bb;
  int level = 0;
  while (level < levels.count && own == levels.Octant(level)) {
    box = orx::octant_box(box, own);
    own = OctantAt(item, box.centre);
    ++level;
  }
  return {level, own};
}

// Whether an item follows the path through all skipped levels. `own` is its octant in this node.
bool CORXOcTreeGeneric::IsPastSkipped(void* item, int own) const {
  return own == skipped->Octant(0) && IsInside(item, skipped->path);
}

// Whether the item lies on the same side as the path at every plane that the path passes.
//
// Two calls answer for all planes. On each axis, the path passes planes on their high side and planes on
// their low side. The nearest of these are the lower and the upper face of the box at the end of the path. An
// item above the lower face is above all planes below that face, and likewise for the upper face.
//
// Where `min` is above `max` on an axis, the faces are the farthest planes. The answer then holds only if the
// item and the path are on the same side of the plane before the path. Both are then on one side of all
// further planes.
bool CORXOcTreeGeneric::IsInside(void* item, const orx::OcTreePath& path) const {
  const bool is_above = (OctantAt(item, path.box.min) & path.high) == 0;
  return is_above && (~OctantAt(item, path.box.max) & path.low) == 0;
}

int CORXOcTreeGeneric::SuperFindNode(void* item) {
  if (compareFunc == nullptr) return 0;
  int matches = 0;
  for (int i = 0; i < pointCount; ++i) matches += compareFunc(points[i], item) != 0 ? 1 : 0;
  CORXOcTreeGeneric* const below = children;  // as they are: the callback may call GetChild
  for (int i = 0; below != nullptr && i < orx::kOctants; ++i) matches += below[i].SuperFindNode(item);
  return matches;
}

void CORXOcTreeGeneric::Iterate(ORXOcTreeVisitFn visit, void* user, int& counter) {
  if (visit == nullptr) return;
  for (int i = 0; i < pointCount; ++i) visit(std::exchange(counter, next_index(counter)), points[i], user);
  CORXOcTreeGeneric* const below = children;  // as they are: the callback may call GetChild
  for (int i = 0; below != nullptr && i < orx::kOctants; ++i) {
    if (i + 1 < orx::kOctants) prefetch_array(below[i + 1].points, below[i + 1].pointCount);
    below[i].Iterate(visit, user, counter);
  }
}

int CORXOcTreeGeneric::GetCount() const {
  int count = pointCount;
  for (int i = 0; children != nullptr && i < orx::kOctants; ++i) count += children[i].GetCount();
  return count;
}

int CORXOcTreeGeneric::PointCount() const { return pointCount; }

void** CORXOcTreeGeneric::GetPoints() const { return children == nullptr ? points : nullptr; }

CORXOcTreeBB* CORXOcTreeGeneric::GetBB() { return &bb; }

CORXOcTreeGeneric* CORXOcTreeGeneric::GetChild(int number) {
  if (children == nullptr || number < 0 || number >= orx::kOctants) return nullptr;
  if (skipped != nullptr && !MakeLevel(0)) return nullptr;
  return &children[number];
}
