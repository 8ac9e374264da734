// Trees of libxml2 nodes, and the counted handles through which hosts hold nodes.
//
// Invariants:
// - A node has at most one Node handle at a time. The node's `_private` points to it.
// - A Tree lives as long as a document, a Node or a List refers to it. So a handle never dangles, even after
//   the document is closed.
// - A node that is removed while a host could still reach it is kept in the tree's list of removed nodes
// until
//   no handle or list needs it. So a document that is edited for days does not grow.
//
// Out of memory raises std::bad_alloc and leaves everything as it was.
#pragma once

#include <orx/compat/dom.h>

#include <libxml/tree.h>

#include <cstddef>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace orx::platform::dom {

// The result of a function of libxml2, which is null when memory runs out.
template <class T>
T* throw_if_null(T* pointer) {
  if (pointer == nullptr) throw std::bad_alloc();
  return pointer;
}

inline const xmlChar* as_xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
inline const char* as_text(const xmlChar* text) { return reinterpret_cast<const char*>(text); }
inline std::string_view view(const xmlChar* text) {
  return text != nullptr ? as_text(text) : std::string_view();
}

struct DocDeleter {
  void operator()(xmlDoc* doc) const noexcept;
};
using DocPointer = std::unique_ptr<xmlDoc, DocDeleter>;

class Node;

// A libxml2 document with its references, its lists and its removed nodes.
class Tree {
 public:
  explicit Tree(DocPointer doc) : doc_(std::move(doc)) {}
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  xmlDoc* doc() const { return doc_.get(); }
  void AddRef() { ++references_; }
  void Release();

  // Whether a node or list refers to the tree. Only for the document that holds the tree, which is one
  // reference itself.
  bool HasHandles() const { return references_ > 1; }

  // A list is a reference to the tree, too. Lists are also counted on their own, because they refer to nodes
  // that have no handle.
  void AddList() {
    ++lists_;
    AddRef();
  }
  void ReleaseList() {
    --lists_;
    Release();
  }

  // The handle of a node, with a reference for the caller. Makes the handle if the node has none.
  Node* HandleOf(xmlNode* node);

  // Replaces all children of an element or attribute by one text node. The empty text leaves no children.
  void SetText(xmlNode& parent, std::string_view text);

  bool has_declaration = false;  // written with an XML declaration
  bool is_indented = false;      // written with one element per line

 private:
  static constexpr std::size_t kFirstSweep = 16;

  ~Tree();
  void RemoveChildren(xmlNode& parent);
  void Sweep();

  const DocPointer doc_;
  std::size_t references_ = 1;
  std::size_t lists_ = 0;
  std::vector<xmlNode*> removed_;       // no longer in the document, freed with the tree or by a sweep
  std::size_t sweep_at_ = kFirstSweep;  // the number of removed nodes at which the next sweep runs
};

struct TreeReleaser {
  void operator()(Tree* tree) const { tree->Release(); }
};
using TreePointer = std::unique_ptr<Tree, TreeReleaser>;

// The handle of one node of any type. The type of the libxml2 node says whether it is an element.
class Node final : public IXMLDOMElement {
 public:
  Node(Tree& owner, xmlNode* target) : tree(owner), node(target) {
    tree.AddRef();
    node->_private = this;
  }

  unsigned long AddRef() noexcept override { return ++references_; }
  unsigned long Release() noexcept override;

  Tree& tree;
  xmlNode* const node;

 private:
  ~Node() = default;

  unsigned long references_ = 1;
};

// A list of nodes: either the result of a query, which is fixed, or the children of a node, which follow the
// changes of the tree.
class List final : public IXMLDOMNodeList {
 public:
  List(Tree& tree, std::vector<xmlNode*> nodes) : tree_(tree), nodes_(std::move(nodes)) { tree_.AddList(); }
  List(Tree& tree, xmlNode& parent) : tree_(tree), parent_(&parent) { tree_.AddList(); }

  unsigned long AddRef() noexcept override { return ++references_; }
  unsigned long Release() noexcept override;

  // The next node, with a reference for the caller. Null at the end.
  Node* Next();

 private:
  ~List() = default;

  Tree& tree_;
  std::vector<xmlNode*> nodes_;  // of a query
  std::size_t position_ = 0;     // in nodes_
  xmlNode* parent_ = nullptr;    // of the children; null in the result of a query
  xmlNode* last_ = nullptr;      // the child that Next returned last
  unsigned long references_ = 1;
};

class Document final : public IXMLDOMDocument {
 public:
  Document();

  unsigned long AddRef() noexcept override { return ++references_; }
  unsigned long Release() noexcept override;

  Tree& tree() const { return *tree_; }

  // Replaces the content. Takes over the caller's reference to `tree`.
  void ReplaceTree(Tree* tree) noexcept;

 private:
  ~Document() { tree_->Release(); }

  Tree* tree_;
  unsigned long references_ = 1;
};

// The first child of an element, attribute or document. Null for every other node, although libxml2 gives
// some of them children: hosts do not see these.
xmlNode* first_child(const xmlNode& node);

// The node after `node` in document order, within the subtree of `top`. Null after the last node.
xmlNode* next_below(xmlNode* node, const xmlNode* top);

// Removes the attributes at and below `top` from the document's table of IDs. Call this before the attributes
// are removed from the tree or their values change: libxml2 finds an entry of the table by its value, and may
// keep the entry when it frees the attribute.
void forget_ids(xmlNode& top);

// Whether a text is empty or only white space.
bool is_blank(std::string_view text);

// The xml:space attribute of the element itself: true for "preserve", false for "default", and no value when
// the attribute is missing or has another value.
std::optional<bool> own_space_setting(const xmlNode& element);

// Whether white space in the node is significant, by the nearest xml:space at or above the node.
bool keeps_space(const xmlNode& node);

}  // namespace orx::platform::dom
