// Makes single nodes, and finds attributes by their qualified names.
//
// The functions return complete nodes or raise std::bad_alloc, and do not call the host's callbacks.
// libxml2's own constructors call them, and return a node without its name or text when memory runs out.
// libxml2 frees these nodes like its own.
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

// A text of libxml2, released with xmlFree.
using XmlText = std::unique_ptr<xmlChar, decltype(xmlFree)>;

// A copy that the caller releases with xmlFree.
xmlChar* duplicate(std::string_view text);

NodePointer new_element(xmlDoc& doc, const char* name);
NodePointer new_text(xmlDoc& doc, std::string_view text);

// An attribute without a value that can be appended to the element. A name with the prefix "xml" gets the
// namespace of that prefix; any other prefix stays a part of the name.
NodePointer new_attribute(xmlNode& element, std::string_view name);
// Appends an attribute. `last` is the last attribute of the element, null when it has no attributes.
void append_attribute(xmlNode& element, xmlAttr* last, NodePointer attribute);

// "prefix:name", or the name alone without a prefix. `ns` may be null.
std::string qualified_name(const xmlChar* name, const xmlNs* ns);

// The attribute with a qualified name. Null when the element does not have it.
xmlAttr* find_attribute(const xmlNode& element, std::string_view name);
// The declaration "xmlns" or "xmlns:prefix" of the element, which libxml2 does not keep as an attribute. Null
// for any other name, and when the element does not declare that prefix.
const xmlNs* find_namespace(const xmlNode& element, std::string_view name);

}  // namespace orx::platform::dom
