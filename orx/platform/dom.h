// The document object model (DOM) under the XML wrapper.
//
// Pointer arguments are never null, except a text whose comment allows it. Narrow text is in the encoding of
// the process. Every pointer that a function returns or stores carries a reference that the caller owns,
// unless its comment says otherwise. A document, its nodes and its lists belong to one thread at a time.
//
// A function that fails returns false and sets `reason` to a short phrase without the file's name; otherwise
// `reason` stays as it was. Its outputs are null or unchanged after a failure. Finding nothing is not a
// failure. Out of memory raises std::bad_alloc or CAtlException and leaves the document as it was.
//
// Duties of a backend:
// - A load drops text between elements that is only white space.
// - A load opens no other file and does not use the network.
// - A node or list keeps its tree alive after the document is gone, and stays readable after it is removed
//   from the tree.
// - A text that would not survive a save and a load is refused: characters and names that XML does not allow,
//   and text that is not valid in its encoding.
#pragma once

#include <orx/compat/dom.h>
#include <orx/compat/string_a.h>
#include <orx/compat/variant.h>

#include <cstddef>
#include <functional>
#include <string>

namespace orx::platform::dom {

using Reason = std::string;

// Receives the next bytes of a written document. A false result stops the writing; the sink sets the reason.
using Sink = std::function<bool(const char* bytes, std::size_t size)>;

// An empty document. Null when the system has no DOM.
IXMLDOMDocument* create_document();

// These fill an empty document, and store its document element. The document is empty after a failure.
bool create_root(IXMLDOMDocument& document, const char* name, IXMLDOMElement** root, Reason& reason);
bool load_file(IXMLDOMDocument& document, const char* path, IXMLDOMElement** root, Reason& reason);
bool load_text(IXMLDOMDocument& document, const char* text, IXMLDOMElement** root, Reason& reason);

// Writes the whole document as narrow text. An empty document gives no text.
bool write_text(IXMLDOMDocument& document, const Sink& sink, Reason& reason);

// Writes the whole document as the bytes of a file. Fails for an empty document, and for a document that a
// load would refuse; some bytes may have gone to the sink by then.
bool write_file(IXMLDOMDocument& document, const Sink& sink, Reason& reason);

// Lays the document out with one element per line. Nodes and lists handed out before belong to the old
// content afterwards, and no longer to the document.
bool indent(IXMLDOMDocument& document, Reason& reason);

// Appends a new element to the children of `parent`.
bool append_element(IXMLDOMDocument& document, IXMLDOMElement& parent, const char* name,
                    IXMLDOMElement** child, Reason& reason);

// The same node, without a new reference. Null when the node is not an element.
IXMLDOMElement* as_element(IXMLDOMNode& node);

bool get_name(IXMLDOMNode& node, CStringA& name, Reason& reason);
bool get_text(IXMLDOMElement& element, CStringA& text, Reason& reason);
bool set_text(IXMLDOMNode& node, const wchar_t* text, Reason& reason);  // null is the empty text

// A missing attribute succeeds: `exists` is false and the text empty, or the variant is VT_NULL. The variant
// is overwritten without being cleared.
bool get_attribute(IXMLDOMElement& element, const char* name, bool& exists, CStringA& text, Reason& reason);
bool get_attribute(IXMLDOMElement& element, const char* name, VARIANT* value, Reason& reason);

// Sets an attribute, or adds it. A variant becomes the text into which the platform's automation converts it.
bool set_attribute(IXMLDOMElement& element, const char* name, const char* text, Reason& reason);
bool set_attribute(IXMLDOMElement& element, const char* name, const VARIANT& value, Reason& reason);

// The nodes that match a query, relative to the document or to a node. No match gives a null node or an empty
// list. A query that is not well-formed fails. A list does not follow later changes.
bool select_single(IXMLDOMDocument& document, const char* query, IXMLDOMNode** node, Reason& reason);
bool select_single(IXMLDOMNode& context, const char* query, IXMLDOMNode** node, Reason& reason);
bool select(IXMLDOMNode& context, const char* query, IXMLDOMNodeList** list, Reason& reason);

// This list follows later changes of the children.
bool child_nodes(IXMLDOMNode& node, IXMLDOMNodeList** list, Reason& reason);
bool has_children(IXMLDOMNode& node);

// The next node of the list. Null at the end.
IXMLDOMNode* next_node(IXMLDOMNodeList& list);

}  // namespace orx::platform::dom
