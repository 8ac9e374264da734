// The search of CORXOcTreeNode, which also looks beyond the dividing planes near the item.
#include <orx/geometry/octree_levels.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

// A row for each octant. Its entries 0, 1, 2 are the octants beyond the x, the y and the z plane; 3 to 5
// those beyond both the x and the y plane, 6 to 8 beyond x and z, 9 to 11 beyond y and z. The order within a
// row decides which of several matches is found. It follows no rule and must not change.
constexpr std::int8_t kOctantNeighbours[orx::kOctants][12] = {
    {1, 2, 4, 1, 2, 3, 1, 5, 4, 2, 6, 4}, {0, 3, 5, 3, 2, 0, 5, 4, 0, 3, 7, 5},
    {3, 0, 6, 3, 1, 0, 3, 6, 7, 6, 4, 0}, {2, 1, 7, 1, 2, 0, 2, 6, 7, 7, 5, 1},
    {5, 6, 0, 5, 6, 7, 0, 1, 5, 6, 2, 0}, {4, 7, 1, 4, 6, 7, 1, 0, 4, 7, 3, 1},
    {7, 4, 2, 4, 5, 7, 7, 3, 2, 2, 0, 4}, {6, 5, 3, 4, 5, 6, 3, 2, 6, 3, 1, 5}};

// The entries of a row to search when an item is near some of the planes: x counts 1, y 2, z 4. Near all
// three planes, but not near the centre, the z plane does not count.
constexpr struct {
  std::int8_t first, count;
} kNearPlanes[orx::kOctants] = {{0, 0}, {0, 1}, {1, 1}, {3, 3}, {2, 1}, {6, 3}, {9, 3}, {3, 3}};

// The axes, a bit for each, on which the position is closer to the plane through `centre` than `reach`.
int near_planes(const CORXOcTreeBB::Point& position, const CORXOcTreeBB::Point& centre, double reach) {
  const double x = position.x - centre.x, y = position.y - centre.y, z = position.z - centre.z;
  return (reach > std::fabs(x) ? 1 : 0) | (reach > std::fabs(y) ? 2 : 0) | (reach > std::fabs(z) ? 4 : 0);
}

double distance(const CORXOcTreeBB::Point& a, const CORXOcTreeBB::Point& b) {
  const double x = a.x - b.x, y = a.y - b.y, z = a.z - b.z;
  return std::sqrt(x * x + y * y + z * z);
}

const CORXOcTreeBB::Point& position_of(void* item) { return *static_cast<const CORXOcTreeBB::Point*>(item); }

}  // namespace

CORXOcTreeNode::CORXOcTreeNode(CORXOcTreeGeneric* above) : CORXOcTreeGeneric(above) {}

CORXOcTreeNode::~CORXOcTreeNode() = default;

void* CORXOcTreeNode::FindNode(void* item) { return FindNodeAndNeighbours(item, true); }

void* CORXOcTreeNode::FindNodeAndNeighbours(void* item, bool neighbours) {
  if (item == nullptr) return nullptr;
  if (neighbours || children == nullptr) return Search(*this, item);
  return Search(children[OctantOf(item)], item);  // a host's own node skips no levels
}

void* CORXOcTreeNode::Search(const CORXOcTreeGeneric& top, void* item) {
  const CORXOcTreeBB::Point& position = position_of(item);
  const CORXOcTreeGeneric* node = &top;
  while (node->children != nullptr) {
    if (node->skipped != nullptr && !ReachesChildren(*node, item)) return nullptr;
    const CORXOcTreeBB& box = node->skipped != nullptr ? node->skipped->path.box : node->bb;
    const int planes = near_planes(position, box.centre, node->tolerance);
    if (node->tolerance > distance(position, box.centre)) return SearchAll(*node, item);
    const int own = node->OctantAt(item, box.centre);
    if (planes != 0) return SearchBeyond(*node, own, planes, item);
    node = &node->children[own];
  }
  return node->FirstMatch(item);
}

// Searches the octant of the item, then those beyond the planes near it.
void* CORXOcTreeNode::SearchBeyond(const CORXOcTreeGeneric& node, int own, int planes, void* item) {
  const CORXOcTreeGeneric* const below = node.children;  // as they are: the callback may call GetChild
  const auto [first, count] = kNearPlanes[planes];
  void* found = Search(below[own], item);
  for (int i = first; found == nullptr && i < first + count; ++i) {
    found = Search(below[kOctantNeighbours[own][i]], item);
  }
  return found;
}

void* CORXOcTreeNode::SearchAll(const CORXOcTreeGeneric& node, void* item) {
  const CORXOcTreeGeneric* const below = node.children;
  void* found = nullptr;
  for (int i = 0; found == nullptr && i < orx::kOctants; ++i) found = Search(below[i], item);
  return found;
}

// Whether a search for the item gets past the skipped levels of a node. On each of them only one octant holds
// items, so the search reaches the children or finds nothing.
bool CORXOcTreeNode::ReachesChildren(const CORXOcTreeGeneric& node, void* item) {
  const orx::OcTreeLevels& levels = *node.skipped;
  if (levels.AreMany() && node.IsPastSkipped(item, node.OctantOf(item))) return true;
  CORXOcTreeBB box = node.bb;
  for (int i = 0; i < levels.count; ++i) {
    if (!Enters(levels.Octant(i), node, box.centre, item)) return false;
    box = orx::octant_box(box, levels.Octant(i));
  }
  return true;
}

// Whether a search for the item enters the octant `number` of a node with this centre.
bool CORXOcTreeNode::Enters(int number, const CORXOcTreeGeneric& node, const CORXOcTreeBB::Point& centre,
                            void* item) {
  const CORXOcTreeBB::Point& position = position_of(item);
  if (node.tolerance > distance(position, centre)) return true;
  const int own = node.OctantAt(item, centre);
  const auto [first, count] = kNearPlanes[near_planes(position, centre, node.tolerance)];
  const std::int8_t* const beyond = kOctantNeighbours[own] + first;
  return own == number || std::find(beyond, beyond + count, number) != beyond + count;
}
