#include <orx/platform/dom.h>
#include <orx/platform/dom_rules.h>
#include <orx/platform/posix/dom/node_maker.h>
#include <orx/platform/posix/dom/parse.h>
#include <orx/platform/posix/dom/tree.h>
#include <orx/platform/posix/dom/write.h>

#include <cstddef>
#include <string>

namespace orx::platform::dom {
namespace {

constexpr const char* kEmptyDocument = "the document is empty";

Tree& tree_of(IXMLDOMDocument& document) { return static_cast<Document&>(document).tree(); }

bool is_empty(const Tree& tree) { return xmlDocGetRootElement(tree.doc()) == nullptr; }

// Replaces the content of the document by a parsed tree, which is null after a failure. The handle of the
// root is made first: when that runs out of memory, the document keeps its old content.
bool replace_content(Document& document, Tree* parsed, IXMLDOMElement** root) {
  *root = nullptr;
  if (parsed == nullptr) return false;
  TreePointer tree(parsed);
  *root = tree->HandleOf(xmlDocGetRootElement(tree->doc()));
  document.ReplaceTree(tree.release());
  return true;
}

bool write_to(std::string& text, const Tree& tree, Reason& reason) {
  const auto append = [&text](const char* bytes, std::size_t size) {
    text.append(bytes, size);
    return true;
  };
  return write_tree(tree, append, reason);
}

// For documents with a DOCTYPE, which may declare attributes and defaults for all elements. The limits of the
// writer do not cover the defaults, so the text is parsed before it is written.
bool write_checked(const Tree& tree, const Sink& sink, Reason& reason) {
  std::string text;
  if (!write_to(text, tree, reason)) return false;
  const TreePointer parsed(parse_text(text, reason));
  return parsed != nullptr && sink(text.data(), text.size());
}

// Hosts that hold nodes of the tree keep the old tree. The document gets a copy.
bool replace_by_copy(Document& document, Reason& reason) {
  std::string text;
  if (!write_to(text, document.tree(), reason)) return false;
  Tree* copy = parse_text(text, reason);
  if (copy == nullptr) return false;
  document.ReplaceTree(copy);
  return true;
}

}  // namespace

IXMLDOMDocument* create_document() { return new Document; }

bool create_root(IXMLDOMDocument& document, const char* name, IXMLDOMElement** root, Reason& reason) {
  *root = nullptr;
  Tree& tree = tree_of(document);
  if (!accept_name(name, reason)) return false;
  NodePointer element = new_element(*tree.doc(), name);
  *root = tree.HandleOf(element.get());
  xmlDocSetRootElement(tree.doc(), element.release());
  return true;
}

bool load_file(IXMLDOMDocument& document, const char* path, IXMLDOMElement** root, Reason& reason) {
  return replace_content(static_cast<Document&>(document), parse_file(path, reason), root);
}

bool load_text(IXMLDOMDocument& document, const char* text, IXMLDOMElement** root, Reason& reason) {
  return replace_content(static_cast<Document&>(document), parse_text(text, reason), root);
}

bool write_text(IXMLDOMDocument& document, const Sink& sink, Reason& reason) {
  const Tree& tree = tree_of(document);
  return is_empty(tree) || write_tree(tree, sink, reason);
}

bool write_file(IXMLDOMDocument& document, const Sink& sink, Reason& reason) {
  const Tree& tree = tree_of(document);
  if (is_empty(tree)) return refuse(reason, kEmptyDocument);
  const bool has_doctype = tree.doc()->intSubset != nullptr;
  return has_doctype ? write_checked(tree, sink, reason) : write_tree(tree, sink, reason);
}

bool indent(IXMLDOMDocument& document, Reason& reason) {
  auto& target = static_cast<Document&>(document);
  if (is_empty(target.tree())) return refuse(reason, kEmptyDocument);
  if (target.tree().HasHandles() && !replace_by_copy(target, reason)) return false;
  Tree& tree = target.tree();
  tree.has_declaration = true;
  tree.is_indented = true;
  xmlFree(const_cast<xmlChar*>(tree.doc()->version));
  tree.doc()->version = nullptr;  // written as 1.0
  return true;
}

}  // namespace orx::platform::dom
