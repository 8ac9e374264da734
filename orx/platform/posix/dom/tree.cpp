#include <orx/platform/posix/dom/tree.h>

#include <orx/platform/posix/dom/host.h>
#include <orx/platform/posix/dom/node_maker.h>

#include <libxml/valid.h>

#include <algorithm>
#include <utility>

namespace orx::platform::dom {
namespace {

// Whether a removed subtree must be kept: a host holds a handle of a node in it, or an element in it declares
// a namespace. A node that was removed from that element earlier may still use the namespace. Only a parse
// makes elements with declarations, so few are kept for that reason.
bool is_in_use(xmlNode& top) {
  for (xmlNode* node = &top; node != nullptr; node = next_below(node, &top)) {
    if (node->_private != nullptr) return true;
    if (node->type != XML_ELEMENT_NODE) continue;
    if (node->nsDef != nullptr) return true;
    for (xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
      if (is_in_use(*reinterpret_cast<xmlNode*>(attribute))) return true;
    }
  }
  return false;
}

}  // namespace

void DocDeleter::operator()(xmlDoc* doc) const noexcept {
  const FreeCallbackGuard host;
  xmlFreeDoc(doc);
}

Tree::~Tree() {
  const FreeCallbackGuard host;
  for (xmlNode* node : removed_) xmlFreeNode(node);
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

void Tree::SetText(xmlNode& parent, std::string_view text) {
  NodePointer added = text.empty() ? nullptr : new_text(*parent.doc, text);
  if (first_child(parent) != nullptr) RemoveChildren(parent);
  if (added != nullptr) xmlAddChild(&parent, added.release());  // allocates nothing without other children
}

void Tree::RemoveChildren(xmlNode& parent) {
  if (removed_.size() >= sweep_at_) Sweep();
  std::size_t children = 0;
  for (const xmlNode* child = first_child(parent); child != nullptr; child = child->next) ++children;
  // Reserves the space first, so that nothing throws once children are removed. Doubles the capacity, because
  // reserve alone would grow it by a few nodes at each call.
  if (children > removed_.capacity() - removed_.size())
    removed_.reserve(std::max(2 * removed_.size(), removed_.size() + children));
  forget_ids(parent);
  const FreeCallbackGuard host;
  while (xmlNode* child = first_child(parent)) {
    const bool keep = lists_ > 0 || is_in_use(*child);  // a list may refer to any node
    if (keep) removed_.push_back(child);
    xmlUnlinkNode(child);
    if (!keep) xmlFreeNode(child);
  }
}

// Frees the removed nodes that nothing needs any more. Runs each time the number of removed nodes has
// doubled, so that the cost per node is constant.
void Tree::Sweep() {
  if (lists_ == 0) {
    const FreeCallbackGuard host;
    std::erase_if(removed_, [](xmlNode* node) {
      if (is_in_use(*node)) return false;
      xmlFreeNode(node);
      return true;
    });
  }
  sweep_at_ = std::max(kFirstSweep, 2 * removed_.size());
}

unsigned long Node::Release() noexcept {
  const unsigned long left = --references_;
  if (left == 0) {
    Tree& owner = tree;  // outlives this handle
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
    if (position_ < nodes_.size()) next = nodes_[position_];
  } else if (last_ == nullptr) {
    next = first_child(*parent_);
  } else if (last_->parent == parent_) {  // the list ends when its last child has been removed
    next = last_->next;
  }
  if (next == nullptr) return nullptr;
  Node* handle = tree_.HandleOf(next);
  last_ = next;
  ++position_;
  return handle;
}

unsigned long Document::Release() noexcept {
  const unsigned long left = --references_;
  if (left == 0) delete this;
  return left;
}

Document::Document() {
  prepare_libxml2();
  const HostSettingsGuard host;
  DocPointer doc(throw_if_null(xmlNewDoc(as_xml("1.0"))));
  host.CheckMemory();
  tree_ = new Tree(std::move(doc));
}

void Document::ReplaceTree(Tree* tree) noexcept { std::exchange(tree_, tree)->Release(); }

void forget_ids(xmlNode& top) {
  if (top.doc->ids == nullptr) return;
  const HostSettingsGuard host;
  const auto forget = [&host](xmlAttr* attribute) {
    if (attribute->atype != XML_ATTRIBUTE_ID) return;
    xmlRemoveID(attribute->doc, attribute);
    host.CheckMemory();
    attribute->atype = {};
  };
  if (top.type == XML_ATTRIBUTE_NODE) forget(reinterpret_cast<xmlAttr*>(&top));
  for (xmlNode* node = &top; node != nullptr; node = next_below(node, &top)) {
    if (node->type != XML_ELEMENT_NODE) continue;
    for (xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next)
      forget(attribute);
  }
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

xmlNode* next_below(xmlNode* node, const xmlNode* top) {
  if (xmlNode* child = first_child(*node)) return child;
  while (node != top) {
    if (node->next != nullptr) return node->next;
    node = node->parent;
  }
  return nullptr;
}

bool is_blank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

std::optional<bool> own_space_setting(const xmlNode& element) {
  // libxml2 makes the namespace of the prefix "xml" when a document first uses it. Without it there is no
  // xml:space, and the search is not needed.
  if (element.doc->oldNs == nullptr) return {};
  const xmlAttr* space = find_attribute(element, "xml:space");
  const xmlNode* text = space != nullptr ? space->children : nullptr;
  if (text == nullptr || text->content == nullptr) return {};
  if (xmlStrEqual(text->content, as_xml("preserve"))) return true;
  if (xmlStrEqual(text->content, as_xml("default"))) return false;
  return {};
}

bool keeps_space(const xmlNode& node) {
  for (const xmlNode* at = &node; at != nullptr && at->type == XML_ELEMENT_NODE; at = at->parent) {
    if (const std::optional<bool> keeps = own_space_setting(*at)) return *keeps;
  }
  return false;
}

}  // namespace orx::platform::dom
