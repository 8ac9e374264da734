// Trees of libxml2 nodes, and the counted handles through which hosts hold their nodes.
//
// A node has at most one Node handle at a time; the node's `_private` points to it. A Tree lives as long as a
// document, a node handle or a list refers to it. Nodes that are cut out while somebody could still see them
// are set aside in the tree and freed when nobody can, so that a handle never dangles and a document that is
// edited for days does not grow.
//
// Out of memory raises std::bad_alloc, and leaves everything as it was.
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

template <class T>
T* allocated(T* pointer) {
  if (pointer == nullptr) throw std::bad_alloc();
  return pointer;
}

inline const xmlChar* as_xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
inline const char* as_text(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

struct DocDeleter {
  void operator()(xmlDoc* doc) const noexcept;
};
using DocPointer = std::unique_ptr<xmlDoc, DocDeleter>;

class Node;

class Tree {
 public:
  explicit Tree(DocPointer doc) : doc_(std::move(doc)) {}
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  xmlDoc* doc() const { return doc_.get(); }
  void AddRef() { ++references_; }
  void Release();
  bool HasHandles() const { return references_ > 1; }  // asked by the document, which is one

  void AddList() { ++lists_, AddRef(); }
  void ReleaseList() { --lists_, Release(); }

  // The handle of a node, with a reference of the caller.
  Node* HandleOf(xmlNode* node);

  // Replaces all children of an element or attribute by one text; the empty text leaves none.
  void SetText(xmlNode& parent, std::string_view text);

  bool declared = false;  // begins with an XML declaration
  bool laid_out = false;  // is written one element a line

 private:
  ~Tree();
  void RemoveChildren(xmlNode& parent);
  void Sweep();

  const DocPointer doc_;
  std::size_t references_ = 1;
  std::size_t lists_ = 0;  // a list refers to nodes that have no handle
  std::vector<xmlNode*> removed_;
  std::size_t sweep_at_ = 16;
};

struct TreeReleaser {
  void operator()(Tree* tree) const { tree->Release(); }
};
using TreePointer = std::unique_ptr<Tree, TreeReleaser>;

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

// Either the nodes that were found once, or the children of a node as they come and go.
class List final : public IXMLDOMNodeList {
 public:
  List(Tree& tree, std::vector<xmlNode*> nodes) : tree_(tree), nodes_(std::move(nodes)) { tree_.AddList(); }
  List(Tree& tree, xmlNode& parent) : tree_(tree), parent_(&parent) { tree_.AddList(); }

  unsigned long AddRef() noexcept override { return ++references_; }
  unsigned long Release() noexcept override;

  // With a reference of the caller; null at the end.
  Node* Next();

 private:
  ~List() = default;

  Tree& tree_;
  std::vector<xmlNode*> nodes_;
  std::size_t position_ = 0;
  xmlNode* parent_ = nullptr;
  xmlNode* last_ = nullptr;
  unsigned long references_ = 1;
};

class Document final : public IXMLDOMDocument {
 public:
  Document();

  unsigned long AddRef() noexcept override { return ++references_; }
  unsigned long Release() noexcept override;

  Tree& tree() const { return *tree_; }
  void Hold(Tree* tree) noexcept;  // takes the caller's reference over

 private:
  ~Document() { tree_->Release(); }

  Tree* tree_;
  unsigned long references_ = 1;
};

// The children of an element, attribute or document; nothing else has children that a host may see.
xmlNode* first_child(const xmlNode& node);

// Removes the attributes at and below the node from the IDs of the document. To be called before they are cut
// out or their values change: libxml2 finds an entry by its value, and may leave it behind when it frees the
// attribute.
void forget_ids(xmlNode& node);

// The next node in document order below `top`, or null.
xmlNode* following(xmlNode* node, const xmlNode* top);

bool is_blank(std::string_view text);

// What an element itself says by xml:space, which holds below it; nothing when it does not say.
std::optional<bool> says_to_keep_space(const xmlNode& element);

// Whether white space counts below the node.
bool keeps_space(const xmlNode& node);

}  // namespace orx::platform::dom
