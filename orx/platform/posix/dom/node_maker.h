// Makes single nodes, and finds attributes by their qualified names.
//
// libxml2's own constructors call the host's callbacks, and go on without a name or text for which they have
// no memory. These return whole nodes or raise std::bad_alloc. libxml2 frees them like its own.
#pragma once

#include <libxml/globals.h>
#include <libxml/tree.h>

#include <memory>
#include <string>
#include <string_view>

namespace orx::platform::dom {

struct NodeDeleter {
  void operator()(xmlNode* node) const noexcept;
};
using NodePointer = std::unique_ptr<xmlNode, NodeDeleter>;

using XmlText = std::unique_ptr<xmlChar, decltype(xmlFree)>;

// A copy that is freed with xmlFree.
xmlChar* duplicate(std::string_view text);

NodePointer new_element(xmlDoc& doc, const char* name);
NodePointer new_text(xmlDoc& doc, std::string_view text);

// Makes an attribute without a value, not yet part of the element. A name with the prefix "xml" gets its
// namespace.
NodePointer new_attribute(xmlNode& element, std::string_view name);
// Appends it. `last` is the element's last attribute, null for none.
void append_attribute(xmlNode& element, xmlAttr* last, NodePointer attribute);

std::string qualified_name(const xmlChar* name, const xmlNs* ns);

// Null when there is none.
xmlAttr* find_attribute(const xmlNode& element, std::string_view name);
// A declaration "xmlns" or "xmlns:prefix" of the element, which libxml2 keeps apart from its attributes.
const xmlNs* find_namespace(const xmlNode& element, std::string_view name);

}  // namespace orx::platform::dom
