#include <orx/platform/dom.h>

#include <orx/base/utf8.h>
#include <orx/platform/code_page.h>
#include <orx/platform/dom_rules.h>
#include <orx/platform/posix/dom/host.h>
#include <orx/platform/posix/dom/node_maker.h>
#include <orx/platform/posix/dom/tree.h>
#include <orx/platform/variant_text.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <string>
#include <string_view>
#include <utility>

namespace orx::platform::dom {
namespace {

constexpr const char* kBlanks = " \t\r\n";

Node& handle_of(IXMLDOMNode& node) { return static_cast<Node&>(node); }
xmlNode& node_of(IXMLDOMNode& node) { return *handle_of(node).node; }

// Whether a child of `parent` stays within the limit of nested elements.
bool accept_depth(const xmlNode& parent, Reason& reason) {
  int depth = 1;
  for (const xmlNode* node = &parent; node != nullptr && depth <= kMaxDepth; node = node->parent) {
    if (node->type == XML_ELEMENT_NODE) ++depth;
  }
  return depth <= kMaxDepth || refuse(reason, kTooDeep);
}

// The value of an attribute or of a namespace declaration. False, with an empty text, when it is missing.
bool read_attribute(const xmlNode& element, const char* name, CStringA& text) {
  const xmlAttr* attribute = find_attribute(element, name);
  if (attribute == nullptr) {
    const xmlNs* ns = find_namespace(element, name);
    text = ns != nullptr ? as_text(ns->href) : nullptr;
    return ns != nullptr;
  }
  const xmlNode* child = attribute->children;
  if (child == nullptr) {
    text.Empty();
  } else if (child->next == nullptr && child->type == XML_TEXT_NODE) {
    text = as_text(child->content);  // almost every attribute, without a copy by libxml2
  } else {
    const HostSettingsGuard host;
    const XmlText value(xmlNodeListGetString(element.doc, child, 1), xmlFree);
    host.CheckMemory();
    text = as_text(value.get());
  }
  return true;
}

// Appends an attribute. One pass over the attributes finds the last one and checks the limit.
bool add_attribute(Tree& tree, xmlNode& element, const char* name, const char* text, Reason& reason) {
  xmlAttr* last = element.properties;
  for (int count = 1; last != nullptr && last->next != nullptr; last = last->next) {
    if (++count == kMaxAttributes) return refuse(reason, kTooManyAttributes);
  }
  NodePointer attribute = new_attribute(element, name);
  tree.SetText(*attribute, text);
  append_attribute(element, last, std::move(attribute));
  return true;
}

// Whether a node of this type can be written with the text and read again. The text must not end the node,
// and a parser must not change it: parsers turn carriage returns into line feeds, and drop white space at the
// beginning of a processing instruction.
bool can_hold(xmlElementType type, std::string_view text) {
  const bool has_return = text.find('\r') != text.npos;
  switch (type) {
    case XML_COMMENT_NODE:
      return !has_return && text.find("--") == text.npos && !text.ends_with('-');
    case XML_PI_NODE:
      return !has_return && text.find("?>") == text.npos && text.find_first_of(kBlanks) != 0;
    case XML_CDATA_SECTION_NODE:
      return !has_return && text.find("]]>") == text.npos;
    default:
      return true;
  }
}

// The attribute that the node is, or whose value the node is a part of. Null for other nodes.
const xmlNode* attribute_of(const xmlNode& node) {
  const xmlNode* owner = node.type == XML_TEXT_NODE ? node.parent : &node;
  const bool is_attribute = owner != nullptr && owner->type == XML_ATTRIBUTE_NODE;
  return is_attribute ? owner : nullptr;
}

// Replaces the content of a node that has no children. The copy is made first, so that the old content stays
// when memory runs out.
void replace_content(xmlNode& node, const std::string& text) {
  XmlText content(duplicate(text), xmlFree);
  if (node.type == XML_TEXT_NODE && node.parent != nullptr) forget_ids(*node.parent);
  xmlNodeSetContent(&node, nullptr);
  node.content = content.release();
}

// Replaces the text of a node of any type.
bool replace_text(const Node& handle, const std::string& text, Reason& reason) {
  xmlNode& node = *handle.node;
  const xmlNode* attribute = attribute_of(node);
  const std::string name = attribute != nullptr ? qualified_name(attribute->name, attribute->ns) : "";
  if (!accept_value(name, text, reason)) return false;
  if (!can_hold(node.type, text)) return refuse(reason, "a node of this kind cannot hold this text");
  switch (node.type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:
      handle.tree.SetText(node, text);
      return true;
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
      replace_content(node, text);
      return true;
    default:
      return refuse(reason, "a node of this kind has no text");
  }
}

}  // namespace

bool append_element(IXMLDOMDocument&, IXMLDOMElement& parent, const char* name, IXMLDOMElement** child,
                    Reason& reason) {
  *child = nullptr;
  const Node& owner = handle_of(parent);
  if (!accept_name(name, reason) || !accept_depth(*owner.node, reason)) return false;
  NodePointer element = new_element(*owner.node->doc, name);
  // Makes the handle first: when that runs out of memory, the document stays as it was.
  *child = owner.tree.HandleOf(element.get());
  xmlAddChild(owner.node, element.release());
  return true;
}

IXMLDOMElement* as_element(IXMLDOMNode& node) {
  return node_of(node).type == XML_ELEMENT_NODE ? &handle_of(node) : nullptr;
}

bool get_name(IXMLDOMNode& node, CStringA& name, Reason&) {
  const xmlNode& target = node_of(node);
  switch (target.type) {
    case XML_TEXT_NODE:
      name = "#text";
      break;
    case XML_CDATA_SECTION_NODE:
      name = "#cdata-section";
      break;
    case XML_COMMENT_NODE:
      name = "#comment";
      break;
    case XML_DOCUMENT_NODE:
      name = "#document";
      break;
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:  // the members of both types are the same down to `ns`
      name = qualified_name(target.name, target.ns).c_str();
      break;
    default:  // processing instructions, entity references, the document type
      name = as_text(target.name);
  }
  return true;
}

// Joins the text below the element, and removes white space at both ends. White space stays in CDATA sections
// and where xml:space preserves it: nothing from `first_kept` to `last_kept` is removed.
bool get_text(IXMLDOMElement& element, CStringA& text, Reason&) {
  xmlNode& top = node_of(element);
  const bool keeps_all = keeps_space(top);
  std::string all;
  std::size_t first_kept = keeps_all ? 0 : std::string::npos;
  std::size_t last_kept = 0;
  for (xmlNode* node = next_below(&top, &top); node != nullptr; node = next_below(node, &top)) {
    const bool is_cdata = node->type == XML_CDATA_SECTION_NODE;
    if ((!is_cdata && node->type != XML_TEXT_NODE) || node->content == nullptr) continue;
    if (is_cdata) first_kept = std::min(first_kept, all.size());
    all += as_text(node->content);
    if (is_cdata) last_kept = all.size();
  }
  if (keeps_all) last_kept = all.size();
  const std::size_t begin = std::min(all.find_first_not_of(kBlanks), first_kept);
  const std::size_t end = std::max(all.find_last_not_of(kBlanks) + 1, last_kept);
  text = begin < end ? CStringA(all.data() + begin, static_cast<int>(end - begin)) : CStringA();
  return true;
}

bool set_text(IXMLDOMNode& node, const wchar_t* text, Reason& reason) {
  std::string narrow;
  if (text != nullptr && !utf8::from_wide(text, narrow)) {
    return refuse(reason, "the text has a code that is not a character");
  }
  return replace_text(handle_of(node), narrow, reason);
}

bool get_attribute(IXMLDOMElement& element, const char* name, bool& exists, CStringA& text, Reason& reason) {
  CStringA value;
  exists = read_attribute(node_of(element), name, value);
  if (!exists && !accept_name(name, reason)) return false;  // an invalid name is a failure
  text = std::move(value);
  return true;
}

bool get_attribute(IXMLDOMElement& element, const char* name, VARIANT* value, Reason& reason) {
  VariantInit(value);
  value->vt = VT_NULL;
  CStringA text;
  bool exists = false;
  if (!get_attribute(element, name, exists, text, reason)) return false;
  if (exists) {
    value->bstrVal = widen(text);
    value->vt = VT_BSTR;
  }
  return true;
}

bool set_attribute(IXMLDOMElement& element, const char* name, const char* text, Reason& reason) {
  if (!accept_name(name, reason) || !accept_value(name, text, reason)) return false;
  const Node& handle = handle_of(element);
  if (xmlAttr* attribute = find_attribute(*handle.node, name)) {
    handle.tree.SetText(*reinterpret_cast<xmlNode*>(attribute), text);
    return true;
  }
  const xmlNs* ns = find_namespace(*handle.node, name);
  if (ns == nullptr) return add_attribute(handle.tree, *handle.node, name, text, reason);
  if (std::strcmp(text, as_text(ns->href)) == 0) return true;
  return refuse(reason, "the namespace of an element cannot be changed");
}

bool set_attribute(IXMLDOMElement& element, const char* name, const VARIANT& value, Reason& reason) {
  std::string text;
  if (variant_text(value, text) >= 0) return set_attribute(element, name, text.c_str(), reason);
  reason = "a value of type " + std::to_string(value.vt) + " cannot be written as text";
  return false;
}

}  // namespace orx::platform::dom
