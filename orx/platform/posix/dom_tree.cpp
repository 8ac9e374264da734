#include <orx/platform/posix/dom_tree.h>

#include <orx/platform/posix/dom_host.h>

#include <libxml/valid.h>

#include <algorithm>
#include <utility>

namespace orx::platform::dom {
namespace {

// Whether a host can still see the node or one below it. An element that declares namespaces counts as well:
// nodes that were cut out of it before may be of those namespaces. Only a parse makes such elements, so few
// are kept.
bool is_needed(xmlNode& top) {
  for (xmlNode* node = &top; node != nullptr; node = following(node, &top)) {
    if (node->_private != nullptr) return true;
    if (node->type != XML_ELEMENT_NODE) continue;
    if (node->nsDef != nullptr) return true;
    for (xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
      if (is_needed(*reinterpret_cast<xmlNode*>(attribute))) return true;
    }
  }
  return false;
}

}  // namespace

Tree::~Tree() {
  const HostAside host;
  for (xmlNode* node : removed_) xmlFreeNode(node);
  xmlFreeDoc(doc_);
}

void Tree::Release() {
  if (--references_ == 0) delete this;
}

Node* Tree::HandleOf(xmlNode* node) {
  if (node->_private == nullptr) return new Node(*this, node);
  Node* handle = static_cast<Node*>(node->_private);
  handle->AddRef();
  return handle;
}

void Tree::RemoveChildren(xmlNode& parent) {
  if (removed_.size() >= sweep_at_) Sweep();
  forget_id(parent);
  while (xmlNode* child = first_child(parent)) {
    const bool seen = lists_ > 0 || is_needed(*child);
    if (seen) removed_.push_back(child);
    xmlUnlinkNode(child);
    if (!seen) xmlFreeNode(child);
  }
}

// Runs when the number of removed nodes has doubled, so that it costs next to nothing a node.
void Tree::Sweep() {
  if (lists_ == 0) {
    std::erase_if(removed_, [](xmlNode* node) {
      if (is_needed(*node)) return false;
      xmlFreeNode(node);
      return true;
    });
  }
  sweep_at_ = std::max<std::size_t>(16, 2 * removed_.size());
}

unsigned long Node::Release() noexcept {
  const unsigned long left = --references_;
  if (left == 0) {
    Tree& owner = tree;
    node->_private = nullptr;
    delete this;
    owner.Release();
  }
  return left;
}

unsigned long List::Release() noexcept {
  const unsigned long left = --references_;
  if (left == 0) {
    Tree& owner = tree_;
    delete this;
    owner.ReleaseList();
  }
  return left;
}

Node* List::Next() {
  xmlNode* next = nullptr;
  if (parent_ == nullptr) {
    if (position_ < nodes_.size()) next = nodes_[position_++];
  } else if (last_ == nullptr) {
    next = first_child(*parent_);
  } else if (last_->parent == parent_) {  // it may have been removed since
    next = last_->next;
  }
  if (next == nullptr) return nullptr;
  last_ = next;
  return tree_.HandleOf(next);
}

unsigned long Document::Release() noexcept {
  const unsigned long left = --references_;
  if (left == 0) delete this;
  return left;
}

void Document::Hold(Tree* tree) {
  if (tree == nullptr) tree = NewTree();
  std::exchange(tree_, tree)->Release();
}

Tree* Document::NewTree() {
  initialise_parser();
  const HostAside host;
  DocumentPointer doc(host.Whole(xmlNewDoc(as_xml("1.0")), xmlFreeDoc), xmlFreeDoc);
  doc->encoding = xmlStrdup(as_xml("UTF-8"));  // what the tree holds, and what is written
  if (host.ran_out_of_memory()) throw std::bad_alloc();
  auto* tree = new Tree(doc.get());
  doc.release();
  return tree;
}

void forget_id(xmlNode& node) {
  if (node.type == XML_ATTRIBUTE_NODE) xmlRemoveID(node.doc, reinterpret_cast<xmlAttr*>(&node));
}

xmlNode* first_child(const xmlNode& node) {
  switch (node.type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:
    case XML_DOCUMENT_NODE:
      return node.children;
    default:
      return nullptr;
  }
}

xmlNode* following(xmlNode* node, const xmlNode* top) {
  if (xmlNode* child = first_child(*node)) return child;
  while (node != top) {
    if (node->next != nullptr) return node->next;
    node = node->parent;
  }
  return nullptr;
}

bool is_blank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

bool keeps_space(xmlNode& node) {
  // Only a document that uses the prefix "xml" has its namespace declared; that spares the others the way up.
  return node.doc->oldNs != nullptr && xmlNodeGetSpacePreserve(&node) == 1;
}

}  // namespace orx::platform::dom
