#include <orx/platform/posix/dom/node_maker.h>

#include <orx/platform/dom_rules.h>
#include <orx/platform/posix/dom/host.h>
#include <orx/platform/posix/dom/tree.h>

#include <libxml/parserInternals.h>

#include <cstring>
#include <new>
#include <type_traits>

namespace orx::platform::dom {
namespace {

constexpr std::string_view kXmlPrefix = "xml:";

// libxml2 passes attributes as nodes. xmlAttr begins with the same members as xmlNode, down to `ns`.
xmlNode* as_node(xmlAttr* attribute) { return reinterpret_cast<xmlNode*>(attribute); }
xmlAttr* as_attribute(xmlNode* node) { return reinterpret_cast<xmlAttr*>(node); }

// A zeroed object that libxml2 frees.
template <class T>
T* allocate() {
  static_assert(std::is_trivial_v<T>);
  void* block = xmlMalloc(sizeof(T));
  if (block == nullptr) throw std::bad_alloc();
  return new (block) T{};
}

template <class T>
T* allocate_node(xmlElementType type, xmlDoc& doc) {
  T* node = allocate<T>();
  node->type = type;
  node->doc = &doc;
  return node;
}

// The namespace of the prefix "xml", which libxml2 keeps in `oldNs`. It is made here, since libxml2 leaves
// out the prefix when memory runs out.
xmlNs* xml_namespace(xmlDoc& doc) {
  if (doc.oldNs != nullptr) return doc.oldNs;
  XmlText href(duplicate(as_text(XML_XML_NAMESPACE)), xmlFree);
  XmlText prefix(duplicate("xml"), xmlFree);
  auto* ns = allocate<xmlNs>();
  ns->type = XML_LOCAL_NAMESPACE;
  ns->href = href.release();
  ns->prefix = prefix.release();
  doc.oldNs = ns;
  return ns;
}

bool is_named(const xmlAttr& attribute, std::string_view name) {
  if (attribute.ns == nullptr || attribute.ns->prefix == nullptr) {
    // Most attributes differ in the first characters, so their length is not determined first.
    const char* own = as_text(attribute.name);
    return std::strncmp(own, name.data(), name.size()) == 0 && own[name.size()] == '\0';
  }
  const std::string_view prefix = view(attribute.ns->prefix);
  return name.size() > prefix.size() && name.starts_with(prefix) && name[prefix.size()] == ':' &&
         name.substr(prefix.size() + 1) == view(attribute.name);
}

}  // namespace

void NodeDeleter::operator()(xmlNode* node) const noexcept {
  const FreeCallbackGuard host;
  xmlFreeNode(node);
}

xmlChar* duplicate(std::string_view text) {
  auto* copy = static_cast<xmlChar*>(xmlMallocAtomic(text.size() + 1));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

NodePointer new_element(xmlDoc& doc, const char* name) {
  NodePointer element(allocate_node<xmlNode>(XML_ELEMENT_NODE, doc));
  element->name = duplicate(name);
  return element;
}

NodePointer new_text(xmlDoc& doc, std::string_view text) {
  NodePointer node(allocate_node<xmlNode>(XML_TEXT_NODE, doc));
  node->name = xmlStringText;
  node->content = duplicate(text);
  return node;
}

NodePointer new_attribute(xmlNode& element, std::string_view name) {
  xmlNs* ns = name.starts_with(kXmlPrefix) ? xml_namespace(*element.doc) : nullptr;
  if (ns != nullptr) name.remove_prefix(kXmlPrefix.size());
  NodePointer attribute(as_node(allocate_node<xmlAttr>(XML_ATTRIBUTE_NODE, *element.doc)));
  attribute->name = duplicate(name);
  as_attribute(attribute.get())->ns = ns;
  return attribute;
}

void append_attribute(xmlNode& element, xmlAttr* last, NodePointer attribute) {
  xmlAttr* added = as_attribute(attribute.release());
  added->parent = &element;
  added->prev = last;
  if (last != nullptr) {
    last->next = added;
  } else {
    element.properties = added;
  }
}

std::string qualified_name(const xmlChar* name, const xmlNs* ns) {
  if (ns == nullptr || ns->prefix == nullptr) return std::string(view(name));
  std::string qualified(view(ns->prefix));
  return qualified.append(1, ':').append(view(name));
}

xmlAttr* find_attribute(const xmlNode& element, std::string_view name) {
  xmlAttr* attribute = element.properties;
  while (attribute != nullptr && !is_named(*attribute, name)) attribute = attribute->next;
  return attribute;
}

const xmlNs* find_namespace(const xmlNode& element, std::string_view name) {
  if (!declares_namespace(name)) return nullptr;
  const std::size_t colon = name.find(':');
  const std::string_view prefix = colon == std::string_view::npos ? "" : name.substr(colon + 1);
  for (const xmlNs* ns = element.nsDef; ns != nullptr; ns = ns->next) {
    if (prefix == view(ns->prefix)) return ns;
  }
  return nullptr;
}

}  // namespace orx::platform::dom
