// CORXOcTreeGeneric and CORXOcTreeNode: an octree of the host's items.
//
// The tree stores pointers to items, null included, and never reads an item itself: callbacks of the host say
// in which octant of a node an item lies and whether two items match. Items may lie outside the box of the
// root, and may have coordinates that are infinite or NaN: an item is where the locating callback puts it.
//
// Octants are numbered 0 to 7: bit 0 is set on the low side of the centre in x, bit 1 in y, bit 2 in z. The
// host decides on which side an item on the dividing plane lies.
//
// A leaf that would hold as many items as the point limit splits at its centre into eight children. It splits
// level by level until its items lie in different octants. Some items cannot be separated: coincident items,
// and items that the dividing planes do not reach. They stay in one leaf, which grows, and searches in it
// take longer. The leaf tries to split again when its number of items has doubled. A leaf also grows when
// there is no locating callback and when memory runs out.
//
// A split may go down many levels before the items separate. The tree keeps no nodes for the levels in
// between; GetChild makes them, and so does an item that needs them. A search passes these levels with two
// calls of the locating callback. The callback must therefore be consistent: an item on the low side of a
// plane is on the low side of every higher plane, and an item on the high side is on the high side of every
// lower plane.
//
//   SetFunctions -> SetPointLimit, SetTolerance -> Init -> AddNode -> searches and visits -> RemoveAll
//
// The host owns the items; the releasing callback gives them back. Callbacks may read the tree that calls
// them. They must not change it, and must not throw while items are added or removed. A tree belongs to one
// thread at a time; different trees are independent.
#pragma once

#include <orx/compat/export.h>

#include <cstdint>

// Not zero when the items match.
using ORXOcTreeCompareFn = int (*)(void* a, void* b);
// The octant of the item relative to the centre. Only the low three bits of the result count.
using ORXOcTreeLocateFn = int (*)(void* item, double centre_x, double centre_y, double centre_z);
// Releases the item in a slot of the tree.
using ORXOcTreeFreeFn = void (*)(void** slot);
using ORXOcTreeVisitFn = void (*)(int index, void* item, void* user);

namespace orx {
struct OcTreeLevels;
struct OcTreePath;
}  // namespace orx

// The box of a node. `min` may be above `max`.
class ORX_API CORXOcTreeBB {
 public:
  struct Point {
    double x, y, z;
  };

  CORXOcTreeBB() = default;  // values unset
  CORXOcTreeBB(double min_x, double min_y, double min_z, double max_x, double max_y, double max_z);

  Point min, max;
  Point centre;  // only the constructor from six values computes it
};

class ORX_API CORXOcTreeGeneric {
 public:
  // Takes the point limit and the callbacks of the node `above`, which may be null. The node is empty until
  // Init.
  explicit CORXOcTreeGeneric(CORXOcTreeGeneric* above = nullptr);
  CORXOcTreeGeneric(const CORXOcTreeGeneric&) = delete;
  CORXOcTreeGeneric& operator=(const CORXOcTreeGeneric&) = delete;
  // Releases the items, as RemoveAll does.
  virtual ~CORXOcTreeGeneric();

  // Makes the node a leaf without items, after releasing the items that it held. The host chooses the
  // octant `number` of a root. False when memory runs out; the node is then empty.
  virtual bool Init(double min_x, double min_y, double min_z, double max_x, double max_y, double max_z,
                    int number);

  // The first match in the leaf where the item would be added; calls compare(item, stored item). Null when
  // nothing matches or there is no comparing callback.
  virtual void* FindNode(void* item);

  // Always `item`. It is not stored in an empty node, nor when memory runs out: GetCount then stays as it is.
  virtual void* AddNode(void* item);

  // Calls the releasing callback, if there is one, for each item, and removes the children. The node is then
  // empty and keeps its settings.
  virtual void RemoveAll();
  virtual void Clear();

  // Copies the point limit and the callbacks of the node `above`, not its tolerance. Null: limit 64, no
  // callbacks.
  void SetParent(CORXOcTreeGeneric* above);

  // Settings apply to this node and to children made afterwards. Callbacks may be null. Without a locating
  // callback all items lie in octant 0.
  void SetFunctions(ORXOcTreeCompareFn compare, ORXOcTreeLocateFn locate, ORXOcTreeFreeFn release);
  // A leaf splits instead of holding more than limit - 1 items. Stored in 16 bits; less than 2 counts as 2.
  int GetPointLimit() const;
  void SetPointLimit(int limit);
  // A search closer to a dividing plane than this also looks beyond the plane. In units of the coordinates.
  double GetTolerance() const;
  void SetTolerance(double distance);

  // The number of matches anywhere below this node; calls compare(stored item, item).
  int SuperFindNode(void* item);

  // Visits the items below this node: children in the order of their octants, the items of a leaf in the
  // order of insertion. `counter` is the index of the first item, and goes up by one for each item.
  void Iterate(ORXOcTreeVisitFn visit, void* user, int& counter);

  // The number of items below this node, and in this node alone.
  int GetCount() const;
  int PointCount() const;

  // The items of a leaf, PointCount() of them, valid until the next change; null in every other node.
  void** GetPoints() const;
  CORXOcTreeBB* GetBB();
  // Null in a leaf, in an empty node, for a number that is not an octant, and when the level below has no
  // nodes yet and memory runs out. The locating callback must not call it: it may make nodes.
  CORXOcTreeGeneric* GetChild(int number);

 protected:
  // Splits a leaf by one level, whatever its box and its items are. True when the node now has children, also
  // when it had them before. False for an empty node and when memory runs out; the node is then unchanged.
  bool Subdivide();

  CORXOcTreeBB bb{};
  std::int16_t pointLimit;
  std::int8_t doublings = 0;  // the leaf tries to split at pointLimit << doublings items
  std::int8_t sizeLog2 = 0;   // `points` has 1 << sizeLog2 slots; the last one stays unused
  std::int32_t pointCount = 0;
  // A node with children uses `skipped`, every other node `points`; one union keeps the node small. A class
  // of the host always sees null in its own node with children: only nodes that come from a split skip
  // levels.
  union {
    void** points = nullptr;
    orx::OcTreeLevels* skipped;  // the levels between this node and `children`; null for none
  };
  CORXOcTreeGeneric* parent;  // as passed to the constructor; null in nodes that come from a split
  CORXOcTreeGeneric* children = nullptr;
  ORXOcTreeCompareFn compareFunc;
  ORXOcTreeLocateFn locateFunc;
  ORXOcTreeFreeFn freeFunc;
  double tolerance = 0.001;
  std::int8_t octant = -1;  // -1 until Init

 private:
  friend class CORXOcTreeNode;

  struct Place {
    int level, octant;
  };
  struct Separation;

  int OctantAt(void* item, const CORXOcTreeBB::Point& centre) const;
  int OctantOf(void* item) const;
  void* FirstMatch(void* item) const;
  Place DescendSkipped(void* item, int own) const;
  bool IsPastSkipped(void* item, int own) const;
  bool IsInside(void* item, const orx::OcTreePath& path) const;
  int LeafLimit() const;
  bool IsFull() const;
  bool Store(void* item);
  bool StoreInLeaf(void* item, int own);
  bool Append(void* item);
  bool Resize(int size_log2);
  void DeletePoints();
  CORXOcTreeGeneric* SplitFullLeaf(void* item, int own);
  Separation LocateItems(const CORXOcTreeBB& box) const;
  bool IsInseparable(void* item, const CORXOcTreeBB& top) const;
  CORXOcTreeGeneric* Split(const std::int8_t* path, int levels, const Separation& separation);
  bool SplitBelow(const std::int8_t* octants, int count);
  CORXOcTreeGeneric* NewChildren(const CORXOcTreeBB& box);
  bool Distribute(void** items, int count, const Separation& separation);
  void ForgetItems();
  bool MakeLevel(int level);
};

// A root whose FindNode also looks beyond the dividing planes. The items must begin with three doubles x, y,
// z.
class ORX_API CORXOcTreeNode : public CORXOcTreeGeneric {
 public:
  explicit CORXOcTreeNode(CORXOcTreeGeneric* above = nullptr);
  ~CORXOcTreeNode() override;

  // The first match in the item's octant and then in the octants beyond the planes that are closer to the
  // item than the tolerance, on every level. Null for a null item.
  void* FindNode(void* item) override;

 protected:
  // Without `neighbours` the search does not look beyond the planes of this node itself.
  void* FindNodeAndNeighbours(void* item, bool neighbours);

 private:
  static void* Search(const CORXOcTreeGeneric& top, void* item);
  static void* SearchBeyond(const CORXOcTreeGeneric& node, int own, int planes, void* item);
  static void* SearchAll(const CORXOcTreeGeneric& node, void* item);
  static bool ReachesChildren(const CORXOcTreeGeneric& node, void* item);
  static bool Enters(int number, const CORXOcTreeGeneric& node, const CORXOcTreeBB::Point& centre,
                     void* item);
};
