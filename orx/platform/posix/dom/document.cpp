#include <orx/platform/dom.h>
#include <orx/platform/posix/dom/node_maker.h>
#include <orx/platform/posix/dom/parse.h>
#include <orx/platform/posix/dom/rules.h>
#include <orx/platform/posix/dom/tree.h>
#include <orx/platform/posix/dom/write.h>

#include <cstddef>
#include <string>

namespace orx::platform::dom {
namespace {

constexpr const char* kEmpty = "the document is empty";

Tree& tree_of(IXMLDOMDocument& document) { return static_cast<Document&>(document).tree(); }

bool is_empty(const Tree& tree) { return xmlDocGetRootElement(tree.doc()) == nullptr; }

// Replaces the content of the document by a tree that was parsed, null after a failure. The root's handle is
// made first, since that may fail: then the document keeps its old content.
bool replace_content(Document& document, Tree* parsed, IXMLDOMElement** root) {
  *root = nullptr;
  if (parsed == nullptr) return false;
  TreePointer tree(parsed);
  *root = tree->HandleOf(xmlDocGetRootElement(tree->doc()));
  document.Hold(tree.release());
  return true;
}

bool write_to(std::string& text, const Tree& tree, Reason& reason) {
  const auto append = [&text](const char* bytes, std::size_t size) {
    text.append(bytes, size);
    return true;
  };
  return write_tree(tree, append, reason);
}

// A DOCTYPE may declare attributes and their defaults for the whole document. So the text is parsed before it
// is written, to make sure that it can be loaded again.
bool write_checked(const Tree& tree, const Sink& sink, Reason& reason) {
  std::string text;
  if (!write_to(text, tree, reason)) return false;
  const TreePointer parsed(parse_text(text, reason));
  return parsed != nullptr && sink(text.data(), text.size());
}

// Hosts may hold nodes of the tree. They keep the old tree, and the document gets a copy.
bool leave_handles_behind(Document& document, Reason& reason) {
  std::string text;
  if (!write_to(text, document.tree(), reason)) return false;
  Tree* copy = parse_text(text, reason);
  if (copy == nullptr) return false;
  document.Hold(copy);
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
  if (is_empty(tree)) return refuse(reason, kEmpty);
  const bool has_doctype = tree.doc()->intSubset != nullptr;
  return has_doctype ? write_checked(tree, sink, reason) : write_tree(tree, sink, reason);
}

bool indent(IXMLDOMDocument& document, Reason& reason) {
  auto& target = static_cast<Document&>(document);
  if (is_empty(target.tree())) return refuse(reason, kEmpty);
  if (target.tree().HasHandles() && !leave_handles_behind(target, reason)) return false;
  Tree& tree = target.tree();
  tree.declared = true;
  tree.laid_out = true;
  xmlFree(const_cast<xmlChar*>(tree.doc()->version));
  tree.doc()->version = nullptr;  // is written as 1.0
  return true;
}

}  // namespace orx::platform::dom
