#include <orx/platform/dom.h>

#include <orx/platform/code_page.h>
#include <orx/platform/posix/dom_host.h>
#include <orx/platform/posix/dom_limits.h>
#include <orx/platform/posix/dom_parse.h>
#include <orx/platform/posix/dom_tree.h>
#include <orx/platform/posix/utf8.h>
#include <orx/platform/posix/variant_text.h>

#include <libxml/xmlsave.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace orx::platform::dom {
namespace {

constexpr const char* kBlanks = " \t\r\n";

using XmlText = std::unique_ptr<xmlChar, decltype(xmlFree)>;

Tree& tree_of(IXMLDOMDocument& document) { return static_cast<Document&>(document).tree(); }
Node& handle_of(IXMLDOMNode& node) { return static_cast<Node&>(node); }
xmlNode& node_of(IXMLDOMNode& node) { return *handle_of(node).node; }

std::size_t written_size(std::string_view text) {
  constexpr std::size_t kLongestEscape = 6;
  if (text.size() <= kMaxTextBytes / kLongestEscape) return text.size();
  std::size_t size = text.size();
  for (const char c : text) {
    if (std::strchr("\t\n\r<>&\"", c) != nullptr) size += kLongestEscape - 1;
  }
  return size;
}

bool accept_text(std::string_view text, Reason& reason) {
  if (written_size(text) > kMaxTextBytes) {
    reason = "the text is larger than 9.9 MB when it is written";
    return false;
  }
  if (is_text(text)) return true;
  reason = "the text holds characters that XML does not allow, or is not valid UTF-8";
  return false;
}

bool accept_name(const char* name, Reason& reason) {
  if (std::strlen(name) > kMaxNameBytes) {
    reason = "the name is too long";
    return false;
  }
  // libxml2's own check reads beyond a character that is cut short.
  if (is_text(name) && xmlValidateQName(as_xml(name), 0) == 0) return true;
  reason =
      is_text(name) ? "\"" + std::string(name) + "\" is not a name of XML" : "the name is not a text of XML";
  return false;
}

bool accept_depth(const xmlNode& parent, Reason& reason) {
  int depth = 1;
  for (const xmlNode* node = &parent; node != nullptr && depth <= kMaxDepth; node = node->parent) {
    if (node->type == XML_ELEMENT_NODE) ++depth;
  }
  if (depth <= kMaxDepth) return true;
  reason = "the element would be nested too deep";
  return false;
}

bool take(Document& document, Tree* tree, IXMLDOMElement** root) {
  document.Hold(tree);
  *root = tree == nullptr ? nullptr : tree->HandleOf(xmlDocGetRootElement(tree->doc()));
  return tree != nullptr;
}

std::string qualified_name(const xmlChar* name, const xmlNs* ns) {
  if (ns == nullptr || ns->prefix == nullptr) return as_text(name);
  return std::string(as_text(ns->prefix)) + ':' + as_text(name);
}

xmlAttr* find_attribute(const xmlNode& element, const char* name) {
  for (xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
    const bool matches = attribute->ns == nullptr ? std::strcmp(as_text(attribute->name), name) == 0
                                                  : qualified_name(attribute->name, attribute->ns) == name;
    if (matches) return attribute;
  }
  return nullptr;
}

// A declaration "xmlns" or "xmlns:prefix" of the element, which libxml2 keeps apart from its attributes.
const xmlNs* find_namespace(const xmlNode& element, std::string_view name) {
  if (!name.starts_with("xmlns") || (name.size() > 5 && name[5] != ':')) return nullptr;
  const std::string prefix(name.size() > 5 ? name.substr(6) : std::string_view());
  for (const xmlNs* ns = element.nsDef; ns != nullptr; ns = ns->next) {
    if (prefix == (ns->prefix != nullptr ? as_text(ns->prefix) : "")) return ns;
  }
  return nullptr;
}

bool read_attribute(const xmlNode& element, const char* name, CStringA& text) {
  if (const xmlAttr* attribute = find_attribute(element, name)) {
    const xmlNode* child = attribute->children;
    if (child != nullptr && child->next == nullptr && child->type == XML_TEXT_NODE) {
      text = as_text(child->content);
    } else {
      const HostAside host;
      const XmlText value(xmlNodeListGetString(element.doc, child, 1), xmlFree);
      if (host.ran_out_of_memory()) throw std::bad_alloc();
      text = as_text(value.get());
    }
    return true;
  }
  const xmlNs* ns = find_namespace(element, name);
  text = ns != nullptr ? as_text(ns->href) : nullptr;
  return ns != nullptr;
}

xmlNode* new_element(xmlDoc* doc, const char* name) {
  const HostAside host;
  return host.Whole(xmlNewDocNode(doc, nullptr, as_xml(name), nullptr), xmlFreeNode);
}

// Before the node is in the document: an element that cannot be handed out is not part of it.
Node* handle_or_free(Tree& tree, xmlNode* node) {
  try {
    return tree.HandleOf(node);
  } catch (const std::bad_alloc&) {
    const HostAside host;
    xmlFreeNode(node);
    throw;
  }
}

void add_attribute(xmlNode& element, const char* name, const char* text) {
  const HostAside host;
  host.Whole(xmlNewProp(&element, as_xml(name), as_xml(text)), xmlRemoveProp);
}

void replace_children(Tree& tree, xmlNode& parent, const char* text) {
  const HostAside host;
  xmlNode* child = *text != '\0' ? host.Whole(xmlNewDocText(parent.doc, as_xml(text)), xmlFreeNode) : nullptr;
  tree.RemoveChildren(parent);
  if (child != nullptr) xmlAddChild(&parent, child);
}

bool put_text(const Node& handle, const std::string& text, Reason& reason) {
  xmlNode& node = *handle.node;
  switch (node.type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:
      replace_children(handle.tree, node, text.c_str());
      return true;
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
      if (text.find(node.type == XML_PI_NODE ? "?>" : "--") == text.npos &&
          (node.type == XML_PI_NODE || !text.ends_with('-')))
        break;
      reason = "the text would end its node";
      return false;
    case XML_TEXT_NODE:
      if (node.parent != nullptr) forget_id(*node.parent);
      break;
    case XML_CDATA_SECTION_NODE:
      break;
    default:
      reason = "a node of this kind has no text";
      return false;
  }
  const HostAside host;
  xmlNodeSetContent(&node, as_xml(text.c_str()));
  if (host.ran_out_of_memory()) throw std::bad_alloc();
  return true;
}

struct Writing {
  const Sink& sink;
  bool goes_on = true;
  std::exception_ptr failure;
};

// libxml2 reports a failed write on the standard error stream, so it is never told of one. No exception may
// pass through it.
int write_chunk(void* context, const char* bytes, int size) {
  auto& writing = *static_cast<Writing*>(context);
  if (!writing.goes_on) return size;
  try {
    writing.goes_on = writing.sink(bytes, static_cast<std::size_t>(size));
  } catch (const std::exception&) {
    writing.goes_on = false;
    writing.failure = std::current_exception();
  }
  return size;
}

bool write_tree(const Tree& tree, const Sink& sink) {
  const SettingsAside settings;
  const HostAside host;
  Writing writing{.sink = sink, .failure = nullptr};
  const int options = XML_SAVE_AS_XML | XML_SAVE_NO_XHTML | (tree.declared ? 0 : XML_SAVE_NO_DECL) |
                      (tree.laid_out ? XML_SAVE_FORMAT : 0);
  xmlSaveCtxt* context = allocated(xmlSaveToIO(write_chunk, nullptr, &writing, "UTF-8", options));
  xmlSaveDoc(context, tree.doc());
  xmlSaveClose(context);
  if (writing.failure != nullptr) std::rethrow_exception(writing.failure);
  if (host.ran_out_of_memory()) throw std::bad_alloc();
  return writing.goes_on;
}

// The document as it would be read again. False when it is too large, or when an edit made it a document that
// a load refuses.
bool accept_document(const Tree& tree, Reason& reason) {
  std::string text;
  write_tree(tree, [&text](const char* bytes, std::size_t size) { return text.append(bytes, size), true; });
  Tree* copy = parse_text(text, reason);
  if (copy != nullptr) copy->Release();
  return copy != nullptr;
}

bool accept_nodes(Tree& tree, Reason& reason) {
  if (tree.nodes < kMaxNodes) return true;
  reason = "the document would have too many nodes";
  return false;
}

bool accept_attribute(const xmlNode& element, Reason& reason) {
  int count = 1;
  for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next)
    ++count;
  if (count <= kMaxAttributes) return true;
  reason = "the element would have too many attributes";
  return false;
}

bool declares_namespace(std::string_view name) { return name == "xmlns" || name.starts_with("xmlns:"); }

}  // namespace

IXMLDOMDocument* create_document() { return new Document; }

bool create_root(IXMLDOMDocument& document, const char* name, IXMLDOMElement** root, Reason& reason) {
  *root = nullptr;
  auto& target = static_cast<Document&>(document);
  target.Hold(nullptr);
  if (!accept_name(name, reason)) return false;
  xmlDoc* doc = target.tree().doc();
  xmlNode* node = new_element(doc, name);
  Node* handle = handle_or_free(target.tree(), node);
  xmlDocSetRootElement(doc, node);
  *root = handle;
  return true;
}

bool load_file(IXMLDOMDocument& document, const char* path, IXMLDOMElement** root, Reason& reason) {
  return take(static_cast<Document&>(document), parse_file(path, reason), root);
}

bool load_text(IXMLDOMDocument& document, const char* text, IXMLDOMElement** root, Reason& reason) {
  return take(static_cast<Document&>(document), parse_text(text, reason), root);
}

bool write_text(IXMLDOMDocument& document, const Sink& sink, Reason&) {
  const Tree& tree = tree_of(document);
  return xmlDocGetRootElement(tree.doc()) == nullptr || write_tree(tree, sink);
}

bool write_file(IXMLDOMDocument& document, const Sink& sink, Reason& reason) {
  const Tree& tree = tree_of(document);
  if (xmlDocGetRootElement(tree.doc()) == nullptr) {
    reason = "the document is empty";
    return false;
  }
  if (tree.is_doubtful && !accept_document(tree, reason)) return false;
  std::size_t written = 0;
  return write_tree(tree, [&](const char* bytes, std::size_t size) {
    written += size;
    if (written <= kMaxDocumentBytes) return sink(bytes, size);
    reason = "the document is larger than 128 MiB";
    return false;
  });
}

bool indent(IXMLDOMDocument& document, Reason& reason) {
  auto& target = static_cast<Document&>(document);
  if (xmlDocGetRootElement(target.tree().doc()) == nullptr) {
    reason = "the document is empty";
    return false;
  }
  if (target.tree().HasHandles()) {  // they stay behind with the old tree
    std::string text;
    write_tree(target.tree(),
               [&text](const char* bytes, std::size_t size) { return text.append(bytes, size), true; });
    Tree* copy = parse_text(text, reason);
    if (copy == nullptr) return false;
    target.Hold(copy);
  }
  target.tree().declared = target.tree().laid_out = true;
  const HostAside host;
  xmlDoc* doc = target.tree().doc();
  xmlFree(const_cast<xmlChar*>(doc->version));
  doc->version = xmlStrdup(as_xml("1.0"));  // libxml2 writes 1.0 for none, too
  return true;
}

bool append_element(IXMLDOMDocument&, IXMLDOMElement& parent, const char* name, IXMLDOMElement** child,
                    Reason& reason) {
  *child = nullptr;
  const Node& owner = handle_of(parent);
  if (!accept_name(name, reason) || !accept_depth(*owner.node, reason)) return false;
  if (!accept_nodes(owner.tree, reason)) return false;
  xmlNode* node = new_element(owner.node->doc, name);
  Node* handle = handle_or_free(owner.tree, node);
  xmlAddChild(owner.node, node);
  ++owner.tree.nodes;
  *child = handle;
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
    case XML_ATTRIBUTE_NODE:  // both begin alike, down to the namespace
      name = qualified_name(target.name, target.ns).c_str();
      break;
    default:  // processing instructions, entity references, the document type
      name = as_text(target.name);
  }
  return true;
}

bool get_text(IXMLDOMElement& element, CStringA& text, Reason&) {
  xmlNode& top = node_of(element);
  std::string all;
  std::size_t first_kept = keeps_space(top) ? 0 : std::string::npos;  // CDATA sections keep their white space
  std::size_t last_kept = 0;
  for (xmlNode* node = following(&top, &top); node != nullptr; node = following(node, &top)) {
    const bool is_cdata = node->type == XML_CDATA_SECTION_NODE;
    if ((!is_cdata && node->type != XML_TEXT_NODE) || node->content == nullptr) continue;
    if (is_cdata) first_kept = std::min(first_kept, all.size());
    all += as_text(node->content);
    if (is_cdata) last_kept = all.size();
  }
  if (keeps_space(top)) last_kept = all.size();
  const std::size_t begin = std::min(all.find_first_not_of(kBlanks), first_kept);
  const std::size_t end = std::max(all.find_last_not_of(kBlanks) + 1, last_kept);
  text = begin < end ? CStringA(all.data() + begin, static_cast<int>(end - begin)) : CStringA();
  return true;
}

bool set_text(IXMLDOMNode& node, const wchar_t* text, Reason& reason) {
  std::string narrow;
  if (text != nullptr && !utf8::from_wide(text, std::wcslen(text), narrow)) {
    reason = "the text holds what is not a character";
    return false;
  }
  return accept_text(narrow, reason) && put_text(handle_of(node), narrow, reason);
}

bool get_attribute(IXMLDOMElement& element, const char* name, bool& exists, CStringA& text, Reason& reason) {
  CStringA value;
  exists = read_attribute(node_of(element), name, value);
  if (!exists && !accept_name(name, reason)) return false;  // there is none of a name that is none
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
  if (!accept_name(name, reason) || !accept_text(text, reason)) return false;
  if (declares_namespace(name) && !can_name_namespace(text)) {
    reason = kUnsupportedNamespace;
    return false;
  }
  const Node& handle = handle_of(element);
  if (xmlAttr* attribute = find_attribute(*handle.node, name)) {
    replace_children(handle.tree, *reinterpret_cast<xmlNode*>(attribute), text);
    return true;
  }
  const xmlNs* ns = find_namespace(*handle.node, name);
  if (ns == nullptr) {
    if (!accept_attribute(*handle.node, reason) || !accept_nodes(handle.tree, reason)) return false;
    add_attribute(*handle.node, name, text);
    ++handle.tree.nodes;
    handle.tree.is_doubtful |= declares_namespace(name);
    return true;
  }
  if (std::strcmp(text, as_text(ns->href)) == 0) return true;
  reason = "the namespace of an element cannot be changed";
  return false;
}

bool set_attribute(IXMLDOMElement& element, const char* name, const VARIANT& value, Reason& reason) {
  std::string text;
  if (variant_text(value, text) >= 0) return set_attribute(element, name, text.c_str(), reason);
  reason = "a value of type " + std::to_string(value.vt) + " cannot be written as text";
  return false;
}

}  // namespace orx::platform::dom
