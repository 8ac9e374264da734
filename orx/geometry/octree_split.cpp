// How a full leaf splits.
//
// The leaf follows its items down, level by level, until they lie in different octants of a level. Only then
// are nodes made: the octants of the leaf itself, and the octants of the level that separates the items. The
// levels in between have no nodes: the node above skips them (OcTreeLevels). A node that splits always gets
// its own octants as children. Therefore only nodes that come from a split skip levels, and never a node of
// the host.
//
// A skipped level gets its nodes when GetChild asks for them, or when a new item leaves the path there.
#include <orx/geometry/octree_levels.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

// Halvings from the widest box, 2^1025, to the narrowest, 2^-1074, and some for rounding.
constexpr int kMaxLevels = 2112;
// Items that share this many levels seldom part further down, but a box beside 0 has a thousand levels.
constexpr int kLevelsBeforeShortcut = 100;

using Levels = std::unique_ptr<orx::OcTreeLevels>;

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

// Makes a record of `count` levels below the box `top`; none for no levels. False when memory runs out.
bool make_levels(const CORXOcTreeBB& top, const std::int8_t* octants, int count, Levels& levels) {
  if (count == 0) return true;
  std::unique_ptr<std::int8_t[]> copy(orx::allocated<std::int8_t>(static_cast<std::size_t>(count)));
  if (copy == nullptr) return false;
  std::copy_n(octants, count, copy.get());
  orx::OcTreePath path{orx::octant_box(top, octants[0])};
  for (int i = 1; i < count; ++i) path.Enter(octants[i]);
  const orx::ErrnoGuard errno_guard;
  levels.reset(new (std::nothrow) orx::OcTreeLevels{path, count, std::move(copy)});
  return levels != nullptr;
}

// The box below the skipped levels; without levels it is `top`.
const CORXOcTreeBB& box_below(const orx::OcTreeLevels* levels, const CORXOcTreeBB& top) {
  return levels != nullptr ? levels->path.box : top;
}

}  // namespace

// The items of a leaf in the octants of a box: the first `together` of them lie in `octant`, the item after
// them in `next_octant`.
struct CORXOcTreeGeneric::Separation {
  CORXOcTreeBB::Point centre;
  int together, octant, next_octant;
};

// Splits a full leaf where its items and the new `item` separate, and returns the child for `item`. `own` is
// the octant of `item` in this leaf. Null when nothing separates them or memory runs out; the leaf then keeps
// its items and is full again when it has doubled.
CORXOcTreeGeneric* CORXOcTreeGeneric::SplitFullLeaf(void* item, int own) {
  std::array<std::int8_t, kMaxLevels> path;
  int levels = 0;
  CORXOcTreeBB box = bb;
  while (locateFunc != nullptr && levels < kMaxLevels && can_split(box)) {
    if (levels == kLevelsBeforeShortcut && IsInseparable(item, box)) break;
    const Separation separation = LocateItems(box);
    if (separation.together < pointCount || separation.octant != own) {
      CORXOcTreeGeneric* const end = Split(path.data(), levels, separation);
      if (end == nullptr) break;
      return &end->children[own];
    }
    path[static_cast<std::size_t>(levels++)] = static_cast<std::int8_t>(own);
    box = orx::octant_box(box, own);
    own = OctantAt(item, box.centre);
  }
  while (IsFull()) ++doublings;
  return nullptr;
}

// Locates the items of the leaf in `box`, up to the first item that lies in another octant than those before
// it. Each item is located in its octant too, although the result is not used: hosts may rely on the calls
// and their order, which are those of adding the item to a child.
auto CORXOcTreeGeneric::LocateItems(const CORXOcTreeBB& box) const -> Separation {
  const orx::Prefetcher prefetcher(points, pointCount);
  const int first = OctantAt(points[0], box.centre);
  const CORXOcTreeBB::Point child_centre = orx::octant_box(box, first).centre;
  for (int i = 1; i < pointCount; ++i) {
    prefetcher.Advance(i);
    OctantAt(points[i - 1], child_centre);
    const int next = OctantAt(points[i], box.centre);
    if (next != first) return {box.centre, i, first, next};
  }
  OctantAt(points[pointCount - 1], child_centre);
  return {box.centre, pointCount, first, first};
}

// Whether no level below `top` separates the items of the leaf and `item`. Follows the first item down until
// no number is left between the faces, and checks that all other items follow the same path. Calls the
// locating callback twice for each item and once for each level.
bool CORXOcTreeGeneric::IsInseparable(void* item, const CORXOcTreeBB& top) const {
  if (!is_ordered(top)) return false;  // rare: the walk down all levels answers, too
  orx::OcTreePath path{top};
  while (can_split(path.box)) path.Enter(OctantAt(points[0], path.box.centre));
  const auto is_inside = [&](void* other) { return IsInside(other, path); };
  return is_inside(item) && std::all_of(points, points + pointCount, is_inside);
}

// Splits the leaf, and then the child at the end of a path of several levels. Moves the items to the children
// there and returns their parent. Null when memory runs out; the leaf is then as it was.
CORXOcTreeGeneric* CORXOcTreeGeneric::Split(const std::int8_t* path, int levels,
                                            const Separation& separation) {
  children = NewChildren(bb);
  if (children == nullptr) return nullptr;
  // The locating callback may read the tree: from here on, this is a node with children and no items.
  void** const items = points;
  skipped = nullptr;
  const int count = std::exchange(pointCount, 0);
  CORXOcTreeGeneric* const end = levels > 0 ? &children[path[0]] : this;
  const bool is_split = levels == 0 || end->SplitBelow(path + 1, levels - 1);
  if (!is_split || !end->Distribute(items, count, separation)) {
    for (int i = 0; i < orx::kOctants; ++i) children[i].ForgetItems();
    delete[] std::exchange(children, nullptr);
    points = items;
    pointCount = count;
    return nullptr;
  }
  if (items != orx::no_items) delete[] items;
  return end;
}

// Gives a new leaf the children that lie `count` levels below its own octants. False when memory runs out.
bool CORXOcTreeGeneric::SplitBelow(const std::int8_t* octants, int count) {
  Levels levels;
  if (!make_levels(bb, octants, count, levels)) return false;
  children = NewChildren(box_below(levels.get(), bb));
  if (children != nullptr) skipped = levels.release();
  return children != nullptr;
}

// Makes eight leaves that divide the box. Null when memory runs out.
CORXOcTreeGeneric* CORXOcTreeGeneric::NewChildren(const CORXOcTreeBB& box) {
  CORXOcTreeGeneric* const leaves = orx::allocated<CORXOcTreeGeneric>(orx::kOctants);
  for (int i = 0; leaves != nullptr && i < orx::kOctants; ++i) {
    CORXOcTreeGeneric& leaf = leaves[i];
    leaf.SetParent(this);
    leaf.bb = orx::octant_box(box, i);
    leaf.points = orx::no_items;
    leaf.tolerance = tolerance;
    leaf.octant = static_cast<std::int8_t>(i);
  }
  return leaves;
}

// Moves the items of a leaf to the children. The items that LocateItems has located are not located again.
// False when memory runs out.
bool CORXOcTreeGeneric::Distribute(void** items, int count, const Separation& separation) {
  const int fitting = std::min(separation.together, LeafLimit() - 1);
  for (int i = 0; i < fitting; ++i) {
    if (!children[separation.octant].Append(items[i])) return false;
  }
  const orx::Prefetcher prefetcher(items, count);
  for (int i = fitting; i < count; ++i) {
    prefetcher.Advance(i);
    int number = i < separation.together ? separation.octant : separation.next_octant;
    if (i > separation.together) number = OctantAt(items[i], separation.centre);
    if (!children[number].Store(items[i])) return false;
  }
  return true;
}

// Empties this node without releasing its items.
void CORXOcTreeGeneric::ForgetItems() {
  pointCount = 0;
  for (int i = 0; children != nullptr && i < orx::kOctants; ++i) children[i].ForgetItems();
}

bool CORXOcTreeGeneric::Subdivide() {
  if (children != nullptr) return true;
  if (points == nullptr) return false;
  const int first = pointCount > 0 ? OctantOf(points[0]) : 0;
  return Split(nullptr, 0, {bb.centre, 0, first, first}) != nullptr;
}

// Makes the nodes of a skipped level. This node still skips the levels above it, and the new node on the path
// skips the levels below it. False when memory runs out; the tree is then unchanged.
bool CORXOcTreeGeneric::MakeLevel(int level) {
  const std::int8_t* const octants = skipped->octants.get();
  const int own = skipped->Octant(level);
  Levels above, below;
  if (!make_levels(bb, octants, level, above)) return false;
  const CORXOcTreeBB box = box_below(above.get(), bb);
  const int count_below = skipped->count - level - 1;
  if (!make_levels(orx::octant_box(box, own), octants + level + 1, count_below, below)) return false;
  CORXOcTreeGeneric* const nodes = NewChildren(box);
  if (nodes == nullptr) return false;
  nodes[own].children = children;
  nodes[own].skipped = below.release();
  children = nodes;
  delete skipped;
  skipped = above.release();
  return true;
}
