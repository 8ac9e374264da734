// The document object model behind the XML wrapper.
//
// Arguments are never null, but for texts where it is said; texts are narrow. Pointers that come back carry a
// reference of the caller. An operation that fails is false and says why in `reason` (a short phrase, without
// the file's name), which is else left alone, and its outputs are null or unchanged. "Nothing found" is no
// failure.
//
// Duties of a backend: white-space-only text between elements is dropped by the loads; a node or list keeps
// its tree alive whatever becomes of the document, and stays readable when it is cut out of the tree; nothing
// that is loaded reaches for another file or the network; a text that the document could not hold when
// written and read again (characters or names that XML does not know, text that is not valid in its encoding)
// is refused.
#pragma once

#include <orx/compat/dom.h>
#include <orx/compat/string_a.h>
#include <orx/compat/variant.h>

#include <cstddef>
#include <functional>
#include <string>

namespace orx::platform::dom {

using Reason = std::string;
using Sink = std::function<bool(const char* bytes, std::size_t size)>;  // false stops the writing

// An empty document, or null when the system has no DOM.
IXMLDOMDocument* create_document();

// Each fills an empty document, which stays empty after a failure.
bool create_root(IXMLDOMDocument& document, const char* name, IXMLDOMElement** root, Reason& reason);
bool load_file(IXMLDOMDocument& document, const char* path, IXMLDOMElement** root, Reason& reason);
bool load_text(IXMLDOMDocument& document, const char* text, IXMLDOMElement** root, Reason& reason);

// The whole document as narrow text.
bool write_text(IXMLDOMDocument& document, const Sink& sink, Reason& reason);
// The whole document in the bytes of a file. An empty document is refused, and so is one that a load would
// not accept; some of its bytes may have gone to the sink then.
bool write_file(IXMLDOMDocument& document, const Sink& sink, Reason& reason);

// Lays the document out one element a line. Nodes and lists handed out before belong to the old content
// afterwards.
bool indent(IXMLDOMDocument& document, Reason& reason);

bool append_element(IXMLDOMDocument& document, IXMLDOMElement& parent, const char* name,
                    IXMLDOMElement** child, Reason& reason);

// The same node, or null when it is not an element; no reference is added.
IXMLDOMElement* as_element(IXMLDOMNode& node);

bool get_name(IXMLDOMNode& node, CStringA& name, Reason& reason);
bool get_text(IXMLDOMElement& element, CStringA& text, Reason& reason);
bool set_text(IXMLDOMNode& node, const wchar_t* text, Reason& reason);  // null: the empty text

// A missing attribute: `exists` is false and the text empty; the variant becomes VT_NULL. The variant is
// overwritten.
bool get_attribute(IXMLDOMElement& element, const char* name, bool& exists, CStringA& text, Reason& reason);
bool get_attribute(IXMLDOMElement& element, const char* name, VARIANT* value, Reason& reason);
bool set_attribute(IXMLDOMElement& element, const char* name, const char* text, Reason& reason);
// Values become text as the platform's automation does it.
bool set_attribute(IXMLDOMElement& element, const char* name, const VARIANT& value, Reason& reason);

// From a document (null context) or a node. A query that is not well-formed fails.
bool select_single(IXMLDOMDocument& document, const char* query, IXMLDOMNode** node, Reason& reason);
bool select_single(IXMLDOMNode& context, const char* query, IXMLDOMNode** node, Reason& reason);
bool select(IXMLDOMNode& context, const char* query, IXMLDOMNodeList** list, Reason& reason);

// The list follows later changes of the children.
bool child_nodes(IXMLDOMNode& node, IXMLDOMNodeList** list, Reason& reason);
bool has_children(IXMLDOMNode& node);

// Null at the end of the list.
IXMLDOMNode* next_node(IXMLDOMNodeList& list);

}  // namespace orx::platform::dom
