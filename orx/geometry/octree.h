// CORXOcTreeGeneric and CORXOcTreeNode: an octree of the host's items.
//
// What an item is and where it lies, only the host's callbacks know; the tree stores the pointers, null
// included. A leaf that receives its `point limit`-th item splits at its centre into eight children, and goes
// on splitting, level by level, until its items part. Items may lie outside the box of the root, and have
// coordinates that are infinite or not numbers: an item is where the locating callback puts it.
//
// Items that no split can part stay in one leaf, which grows, and searches in it take longer: coincident
// items, and those that the planes of the box do not reach. A leaf that has grown tries to split again when
// it has doubled. A leaf also grows without a locating callback and when it runs out of memory.
//
// Octants are numbered 0 to 7: bit 0 is set on the low side of the centre in x, bit 1 in y, bit 2 in z. On
// which side an item on the dividing plane lies is up to the host.
//
// Where a split goes down many levels before its items part, the tree keeps no nodes for the levels between;
// it makes them when GetChild or another item asks for them. A search skips these levels after two calls of
// the locating callback, which must put an item that is on the low side of a plane on the low side of every
// higher plane too, and likewise for the high side.
//
//   SetFunctions -> SetPointLimit, SetTolerance -> Init -> AddNode -> searches and visits -> RemoveAll
//
// The items stay the host's, who gets them back through the releasing callback. Callbacks must not change the
// tree that calls them, and no exception may leave them while items are added or removed. Nothing here locks:
// a tree belongs to one thread at a time, different trees are independent.
#pragma once

#include <orx/compat/export.h>

#include <cstdint>

// Not zero when the items match.
using ORXOcTreeCompareFn = int (*)(void* a, void* b);
// The octant of the item seen from the centre; of a result that is not an octant the low three bits count.
using ORXOcTreeLocateFn = int (*)(void* item, double centre_x, double centre_y, double centre_z);
// Releases the item in a slot of the tree.
using ORXOcTreeFreeFn = void (*)(void** slot);
using ORXOcTreeVisitFn = void (*)(int index, void* item, void* user);

namespace orx {
struct OcTreeLevels;
struct OcTreeSides;
}  // namespace orx

// The box of a node. Nothing asks that the lower corner be below the upper.
class ORX_API CORXOcTreeBB {
 public:
  struct Point {
    double x, y, z;
  };

  CORXOcTreeBB() = default;  // values unset
  CORXOcTreeBB(double min_x, double min_y, double min_z, double max_x, double max_y, double max_z);

  Point min, max;
  Point centre;  // set by the constructor from six values alone
};

class ORX_API CORXOcTreeGeneric {
 public:
  // Takes the point limit and the callbacks of `parent`, which may be null. The node is empty until Init.
  explicit CORXOcTreeGeneric(CORXOcTreeGeneric* parent = nullptr);
  CORXOcTreeGeneric(const CORXOcTreeGeneric&) = delete;
  CORXOcTreeGeneric& operator=(const CORXOcTreeGeneric&) = delete;
  // Releases the items, as RemoveAll does.
  virtual ~CORXOcTreeGeneric();

  // Makes the node a leaf without items; what it held is released first. `octant` is the host's to choose
  // for a root. False when memory runs out; the node is then empty.
  virtual bool Init(double min_x, double min_y, double min_z, double max_x, double max_y, double max_z,
                    int octant);

  // The first match in the leaf where the item would be added; calls compare(item, stored item). Null when
  // there is none, or no comparing callback.
  virtual void* FindNode(void* item);

  // Always `item`. It is not stored in an empty node, nor when memory runs out: GetCount then stays as it is.
  virtual void* AddNode(void* item);

  // Calls the releasing callback, if there is one, for each item, and removes the children. The node is empty
  // then and keeps its settings.
  virtual void RemoveAll();
  virtual void Clear();

  // Copies the point limit and the callbacks, not the tolerance. Null: limit 64, no callbacks.
  void SetParent(CORXOcTreeGeneric* parent);

  // Settings hold for this node and for children made afterwards. Callbacks may be null. Without a locating
  // callback everything lies in octant 0.
  void SetFunctions(ORXOcTreeCompareFn compare, ORXOcTreeLocateFn locate, ORXOcTreeFreeFn release);
  // A leaf splits instead of holding more than limit - 1 items. Kept in 16 bits; less than 2 counts as 2.
  int GetPointLimit() const;
  void SetPointLimit(int limit);
  // How close to a dividing plane a search looks on its other side too, in the units of the coordinates.
  double GetTolerance() const;
  void SetTolerance(double distance);

  // The number of matches anywhere below this node; calls compare(stored item, item).
  int SuperFindNode(void* item);

  // Visits the items below this node, children in the order of their octants, items of a leaf as they came.
  // `counter` is the index of the first one, and counts on.
  void Iterate(ORXOcTreeVisitFn visit, void* user, int& counter);

  // The number of items below this node, and in this node alone.
  int GetCount() const;
  int PointCount() const;

  // The items of a leaf, PointCount() of them, valid until the next change; null in every other node.
  void** GetPoints() const;
  CORXOcTreeBB* GetBB();
  // Null in a leaf, in an empty node, and for an octant that does not exist. Null also when the level below
  // was skipped and there is no memory for its nodes.
  CORXOcTreeGeneric* GetChild(int octant);

 protected:
  // Splits a leaf by one level, whatever its box and its items. True when the node has children then, also
  // when it had them before. False for an empty node and when memory runs out; the node is as it was.
  bool Subdivide();

  CORXOcTreeBB bb{};
  std::int16_t pointLimit;

 private:
  std::int8_t doublings = 0;  // of the number of items at which the leaf tries to split
  std::int8_t sizeLog2 = 0;   // of `points`, which has a slot more than the leaf may hold

 protected:
  std::int32_t pointCount = 0;
  union {
    void** points = nullptr;     // of a leaf
    orx::OcTreeLevels* skipped;  // of an inner node: the levels above its children, null for none
  };
  CORXOcTreeGeneric* parent;  // that of the constructor: null in children that come from a split
  CORXOcTreeGeneric* children = nullptr;
  ORXOcTreeCompareFn compareFunc;
  ORXOcTreeLocateFn locateFunc;
  ORXOcTreeFreeFn freeFunc;
  double tolerance = 0.001;
  std::int8_t octant = -1;  // -1 until Init

 private:
  friend class CORXOcTreeNode;

  struct Parting;
  struct Place;

  int OctantAt(void* item, const CORXOcTreeBB::Point& centre) const;
  int OctantOf(void* item) const;
  bool IsInside(void* item, const CORXOcTreeBB& box, const orx::OcTreeSides& sides) const;
  bool SkipsLevels(void* item, int own) const;
  Place Follow(void* item, int own) const;
  void* FirstMatch(void* item) const;
  bool IsFull() const;
  bool Store(void* item);
  bool StoreInFullLeaf(void* item, int own);
  bool Append(void* item);
  bool Resize(int size_log2);
  CORXOcTreeGeneric* Separate(void* item, int own);
  Parting LocateAll(const CORXOcTreeBB& box) const;
  bool IsInseparable(void* item, const CORXOcTreeBB& top) const;
  CORXOcTreeGeneric* Split(const std::int8_t* path, int levels, const Parting& parting);
  CORXOcTreeGeneric* NewChildren(const CORXOcTreeBB& box);
  bool SplitBelow(const std::int8_t* octants, int count);
  bool Distribute(void** items, int count, const Parting& parting);
  void ForgetItems();
  bool MakeLevel(int level);
};

// A root whose FindNode looks across the dividing planes. The items must begin with three doubles x, y, z.
class ORX_API CORXOcTreeNode : public CORXOcTreeGeneric {
 public:
  explicit CORXOcTreeNode(CORXOcTreeGeneric* parent = nullptr);
  ~CORXOcTreeNode() override;

  // The first match in the item's octant and then, where the item is closer to a plane than the tolerance, in
  // those beyond it, on every level. Null for a null item.
  void* FindNode(void* item) override;

 protected:
  // Without `neighbours` this node's own planes are not looked across.
  void* FindNodeAndNeighbours(void* item, bool neighbours);

 private:
  static bool LooksInto(int number, const CORXOcTreeGeneric& node, const CORXOcTreeBB::Point& centre,
                        void* item);
  static bool LooksPastSkipped(const CORXOcTreeGeneric& node, void* item);
  static void* Search(const CORXOcTreeGeneric& top, void* item);
  static void* SearchAll(const CORXOcTreeGeneric& node, void* item);
};
