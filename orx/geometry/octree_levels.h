// Internal parts of the octree: locating an item, the boxes of octants, and the levels that have no nodes.
#pragma once

#include <orx/base/compiler.h>
#include <orx/base/errno_guard.h>
#include <orx/geometry/octree.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace orx {

inline constexpr int kOctants = 8;
inline constexpr int kAllAxes = kOctants - 1;

// The array of a leaf that has no array of its own yet: one slot, which is never filled.
inline void* no_items[1];

// Null when memory runs out.
template <class T>
T* allocated(std::size_t count) {
  const ErrnoGuard errno_guard;
  return new (std::nothrow) T[count];
}

// Items are scattered in memory, and each callback would wait for its item. This loads the first items at
// once, and with Advance(i) the items that follow item i. It must not be in an anonymous namespace: GCC would
// see that Advance has no effect on values, and drop the calls.
class Prefetcher {
 public:
  Prefetcher(void** items, int count) : items_(items), last_(count - 1) {
    for (int i = 0; i < std::min(kDistance, count); ++i) prefetch(items[i]);
  }
  void Advance(int i) const {
    if (i + kDistance <= last_) prefetch(items_[i + kDistance]);
  }

 private:
  static constexpr int kDistance = 8;
  void** items_;
  int last_;
};

inline CORXOcTreeBB octant_box(const CORXOcTreeBB& box, int octant) {
  const auto& [min, max, centre] = box;
  const bool low_x = (octant & 1) != 0, low_y = (octant & 2) != 0, low_z = (octant & 4) != 0;
  return {low_x ? min.x : centre.x, low_y ? min.y : centre.y, low_z ? min.z : centre.z,
          low_x ? centre.x : max.x, low_y ? centre.y : max.y, low_z ? centre.z : max.z};
}

// A path from a box down through octants of octants: the box at its end, and the sides that it takes.
struct OcTreePath {
  void Enter(int octant) {
    low |= octant;
    high |= ~octant & kAllAxes;
    box = octant_box(box, octant);
  }

  CORXOcTreeBB box;
  int low = 0, high = 0;  // the axes, as bits of an octant, on which a level takes the low or the high side
};

// The levels that a node skips: on each of them all items below the node lie in the same octant, so the tree
// keeps no nodes for them.
//
// The first level divides the box of the node, and every other level divides the octant of the level before.
// The children of the node divide the octant of the last level. `octants` has at least one entry.
struct OcTreeLevels {
  // Below this number, walking the levels costs no more than the two calls that pass them all.
  static constexpr int kMany = 4;
  bool AreMany() const { return count >= kMany; }
  int Octant(int level) const { return octants.get()[level]; }

  OcTreePath path;  // through all levels but the first, which a search checks by itself
  int count;
  std::unique_ptr<std::int8_t[]> octants;
};

}  // namespace orx

// Always inline: an exported class would export them from builds that do not optimise.
[[gnu::always_inline]] inline int CORXOcTreeGeneric::OctantAt(void* item,
                                                              const CORXOcTreeBB::Point& centre) const {
  if (locateFunc == nullptr) return 0;
  return locateFunc(item, centre.x, centre.y, centre.z) & orx::kAllAxes;
}

[[gnu::always_inline]] inline int CORXOcTreeGeneric::OctantOf(void* item) const {
  return OctantAt(item, bb.centre);
}

// Adds an item to a leaf, at its end. False when memory runs out.
[[gnu::always_inline]] inline bool CORXOcTreeGeneric::Append(void* item) {
  constexpr int kFirstSizeLog2 = 3;
  if (pointCount + 1 >= 1 << sizeLog2 && !Resize(std::max(sizeLog2 + 1, kFirstSizeLog2))) return false;
  points[pointCount++] = item;
  return true;
}
