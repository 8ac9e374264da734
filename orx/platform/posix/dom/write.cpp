#include <orx/platform/posix/dom/write.h>

#include <orx/platform/dom_rules.h>
#include <orx/platform/posix/dom/host.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace orx::platform::dom {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{16} << 10;
constexpr int kMaxTabs = 60;

// The replacement of each byte that must be escaped. Null for all other bytes.
using Escapes = std::array<const char*, 256>;

constexpr Escapes kTextEscapes = [] {
  Escapes table{};
  table['<'] = "&lt;";
  table['>'] = "&gt;";
  table['&'] = "&amp;";
  table['\r'] = "&#13;";  // a parser reads a carriage return as a line feed
  return table;
}();

constexpr Escapes kValueEscapes = [] {
  Escapes table = kTextEscapes;
  table['"'] = "&quot;";
  table['\t'] = "&#9;";  // a parser reads a tab or line feed in a value as a blank
  table['\n'] = "&#10;";
  return table;
}();

// Whether the content of an element must be written without added white space: it has text, or its xml:space
// says that white space is significant. The writer does not ask for elements within such an element. So the
// element's own xml:space is enough; no outer element preserves white space.
bool must_stay_on_one_line(const xmlNode& element) {
  for (const xmlNode* child = element.children; child != nullptr; child = child->next) {
    const xmlElementType type = child->type;
    if (type == XML_TEXT_NODE || type == XML_CDATA_SECTION_NODE || type == XML_ENTITY_REF_NODE) return true;
  }
  return own_space_setting(element).value_or(false);
}

// The declarations of the element: those from a parse, and those that a host set as attributes.
int count_namespaces(const xmlNode& element) {
  int count = 0;
  for (const xmlNs* ns = element.nsDef; ns != nullptr; ns = ns->next) ++count;
  for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
    const bool may_declare = attribute->ns == nullptr && attribute->name[0] == 'x';  // cheap, for most names
    if (may_declare && declares_namespace(as_text(attribute->name))) ++count;
  }
  return count;
}

// Writes one tree in document order, without recursion. After the first failure nothing more goes to the
// sink.
//
// Bytes are collected in `chunk_` and go to the sink in chunks. While elements are written, `level_` is the
// number of open elements. `single_line_element_` is the outermost open element whose content stays on one
// line; within it no line ends and tabs are added.
class Writer {
 public:
  Writer(const Tree& tree, const Sink& sink) : tree_(tree), sink_(sink) {}

  bool Write(Reason& reason) {
    if (tree_.has_declaration) PutDeclaration();
    for (const xmlNode* node = tree_.doc()->children; node != nullptr && goes_on_; node = node->next) {
      if (node->type == XML_DTD_NODE) {
        PutDoctype(*node);
      } else {
        PutSubtree(*node);
      }
      Put("\n");
    }
    Flush();
    if (refusal_ != nullptr) reason = refusal_;
    return goes_on_;
  }

 private:
  void Refuse(const char* why) {
    if (goes_on_) refusal_ = why;
    goes_on_ = false;
  }

  // The bytes written so far.
  std::size_t size() const { return flushed_ + chunk_.size(); }

  void Flush() {
    if (size() > kMaxDocumentBytes) Refuse(kTooLarge);
    goes_on_ = goes_on_ && sink_(chunk_.data(), chunk_.size());
    flushed_ += chunk_.size();
    chunk_.clear();
  }

  void Put(std::string_view text) {
    chunk_ += text;
    if (chunk_.size() >= kChunkBytes) Flush();
  }

  void PutEscaped(std::string_view text, const Escapes& escapes) {
    const char* begin = text.data();
    const char* const end = begin + text.size();
    for (const char* at = begin; at != end; ++at) {
      const char* replacement = escapes[static_cast<unsigned char>(*at)];
      if (replacement == nullptr) continue;
      Put({begin, at});
      Put(replacement);
      begin = at + 1;
    }
    Put({begin, end});
  }

  void PutName(const xmlChar* name, const xmlNs* ns) {
    if (ns != nullptr && ns->prefix != nullptr) {
      Put(view(ns->prefix));
      Put(":");
    }
    Put(view(name));
  }

  void PutDeclaration() {
    const xmlDoc& doc = *tree_.doc();
    Put("<?xml version=\"");
    Put(doc.version != nullptr ? view(doc.version) : "1.0");
    Put("\" encoding=\"UTF-8\"");
    if (doc.standalone == 0) Put(" standalone=\"no\"");
    if (doc.standalone == 1) Put(" standalone=\"yes\"");
    Put("?>\n");
  }

  // libxml2 writes the DOCTYPE, in its internal form.
  void PutDoctype(const xmlNode& doctype) {
    const HostSettingsGuard host;
    const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(throw_if_null(xmlBufferCreate()),
                                                                      &xmlBufferFree);
    xmlNodeDump(buffer.get(), tree_.doc(), const_cast<xmlNode*>(&doctype), 0, 0);
    host.CheckMemory();
    Put(view(xmlBufferContent(buffer.get())));
  }

  void PutNamespace(const xmlNs& ns) {
    Put(ns.prefix != nullptr ? " xmlns:" : " xmlns");
    Put(view(ns.prefix));
    Put("=\"");
    PutEscaped(view(ns.href), kValueEscapes);
    Put("\"");
  }

  void PutAttribute(const xmlAttr& attribute) {
    Put(" ");
    PutName(attribute.name, attribute.ns);
    Put("=\"");
    for (const xmlNode* child = attribute.children; child != nullptr; child = child->next) {
      if (child->type == XML_ENTITY_REF_NODE) {
        PutBetween("&", view(child->name), ";");
      } else {
        PutEscaped(view(child->content), kValueEscapes);
      }
    }
    Put("\"");
  }

  void PutBetween(std::string_view before, std::string_view text, std::string_view after) {
    Put(before);
    Put(text);
    Put(after);
  }

  void PutSubtree(const xmlNode& top) {
    const xmlNode* node = &top;
    while (node != nullptr && goes_on_) {
      if (node != &top) Indent();
      PutNode(*node);
      const bool is_open = node->type == XML_ELEMENT_NODE && node->children != nullptr;
      node = is_open ? node->children : NextAfter(node, top);
    }
  }

  // Writes the end tags of the elements that end with `node`, and returns the next node. Null at the end of
  // `top`.
  const xmlNode* NextAfter(const xmlNode* node, const xmlNode& top) {
    while (node != &top) {
      EndLine();
      if (node->next != nullptr) return node->next;
      node = node->parent;
      PutEndTag(*node);
    }
    return nullptr;
  }

  void PutNode(const xmlNode& node) {
    switch (node.type) {
      case XML_ELEMENT_NODE:
        return PutStartTag(node);
      case XML_TEXT_NODE:
        return PutEscaped(view(node.content), kTextEscapes);
      case XML_CDATA_SECTION_NODE:
        return PutBetween("<![CDATA[", view(node.content), "]]>");
      case XML_COMMENT_NODE:
        return PutBetween("<!--", view(node.content), "-->");
      case XML_ENTITY_REF_NODE:
        return PutBetween("&", view(node.name), ";");
      case XML_PI_NODE:
        PutBetween("<?", view(node.name), node.content != nullptr ? " " : "");
        return PutBetween(view(node.content), "?>", "");
      default:
        return;
    }
  }

  void PutStartTag(const xmlNode& element) {
    const std::size_t begin = size();
    Put("<");
    PutName(element.name, element.ns);
    for (const xmlNs* ns = element.nsDef; ns != nullptr; ns = ns->next) PutNamespace(*ns);
    for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
      PutAttribute(*attribute);
      ++nodes_;
    }
    ++nodes_;
    if (size() - begin > kMaxTextBytes) Refuse("a start tag is larger than 9.9 MB");
    if (nodes_ > kMaxNodes) Refuse(kTooManyNodes);
    namespaces_ += count_namespaces(element);
    if (namespaces_ > kMaxNamespaces) Refuse(kTooManyNamespaces);
    if (element.children == nullptr) {
      LeaveNamespaces(element);
      return Put("/>");
    }
    Put(">");
    if (adds_lines() && must_stay_on_one_line(element)) single_line_element_ = &element;
    EndLine();
    ++level_;
  }

  void PutEndTag(const xmlNode& element) {
    --level_;
    Indent();
    Put("</");
    PutName(element.name, element.ns);
    Put(">");
    if (single_line_element_ == &element) single_line_element_ = nullptr;
    LeaveNamespaces(element);
  }

  void LeaveNamespaces(const xmlNode& element) {
    if (namespaces_ > 0) namespaces_ -= count_namespaces(element);
  }

  bool adds_lines() const { return tree_.is_indented && single_line_element_ == nullptr; }

  void EndLine() {
    if (adds_lines()) Put("\n");
  }

  void Indent() {
    if (adds_lines()) chunk_.append(static_cast<std::size_t>(std::min(level_, kMaxTabs)), '\t');
  }

  const Tree& tree_;
  const Sink& sink_;
  std::string chunk_;
  std::size_t flushed_ = 0;  // bytes that went to the sink
  bool goes_on_ = true;      // false after a failure
  const char* refusal_ = nullptr;

  int level_ = 0;
  const xmlNode* single_line_element_ = nullptr;
  std::size_t nodes_ = 0;  // elements and attributes
  int namespaces_ = 0;     // declarations in scope
};

}  // namespace

bool write_tree(const Tree& tree, const Sink& sink, Reason& reason) {
  return Writer(tree, sink).Write(reason);
}

}  // namespace orx::platform::dom
