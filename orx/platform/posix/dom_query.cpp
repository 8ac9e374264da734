// Selecting nodes. The suite asks for elements by name, below the document or below an element; those two are
// walks of the tree. Everything else is left to libxml2's XPath.
#include <orx/platform/dom.h>
#include <orx/platform/posix/dom_host.h>
#include <orx/platform/posix/dom_limits.h>
#include <orx/platform/posix/dom_tree.h>
#include <orx/platform/stack.h>

#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orx::platform::dom {
namespace {

using Nodes = std::vector<xmlNode*>;

// An unprefixed name also finds the elements of a default namespace.
bool is_named(const xmlNode& node, const char* name) {
  return node.type == XML_ELEMENT_NODE && std::strcmp(as_text(node.name), name) == 0 &&
         (node.ns == nullptr || node.ns->prefix == nullptr);
}

void find_by_name(xmlNode& context, const char* query, bool first_only, Nodes& found) {
  const bool anywhere = query[0] == '/';
  xmlNode* top = anywhere ? reinterpret_cast<xmlNode*>(context.doc) : &context;
  const char* name = anywhere ? query + 2 : query;
  for (xmlNode* node = first_child(*top); node != nullptr;
       node = anywhere ? following(node, top) : node->next) {
    if (!is_named(*node, name)) continue;
    found.push_back(node);
    if (first_only) return;
  }
}

bool evaluate(xmlNode& node, const char* query, Nodes& found, Reason& reason) {
  const SettingsAside settings;
  const HostAside host;
  const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
      allocated(xmlXPathNewContext(node.doc)), &xmlXPathFreeContext);
  context->node = &node;
  const std::unique_ptr<xmlNs*, decltype(xmlFree)> namespaces(xmlGetNsList(node.doc, &node), xmlFree);
  for (xmlNs** entry = namespaces.get(); entry != nullptr && *entry != nullptr; ++entry) {
    if ((*entry)->prefix != nullptr) xmlXPathRegisterNs(context.get(), (*entry)->prefix, (*entry)->href);
  }
  const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
      xmlXPathEval(as_xml(query), context.get()), &xmlXPathFreeObject);
  if (host.ran_out_of_memory()) throw std::bad_alloc();
  if (result == nullptr || result->type != XPATH_NODESET) {
    reason = "the query \"" + std::string(query) +
             (result == nullptr ? "\" cannot be evaluated" : "\" does not select nodes");
    return false;
  }
  if (result->nodesetval == nullptr) return true;
  xmlXPathNodeSetSort(result->nodesetval);
  for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
    xmlNode* match = result->nodesetval->nodeTab[i];
    if (match->type != XML_NAMESPACE_DECL) found.push_back(match);  // those belong to the result
  }
  return true;
}

// libxml2 compiles and evaluates by recursion. What it takes of the stack was measured: at most 90 bytes for
// each character of a chain of operators, and 450 for each bracket that is open.
bool fits_stack(std::string_view query) {
  constexpr std::size_t kAlways = 64 * 1024;
  constexpr std::size_t kBytesPerCharacter = 128;
  constexpr std::size_t kBytesPerBracket = 640;
  const auto brackets =
      static_cast<std::size_t>(std::ranges::count_if(query, [](char c) { return c == '(' || c == '['; }));
  const std::size_t needed = 32 * 1024 + kBytesPerCharacter * query.size() + kBytesPerBracket * brackets;
  return needed <= kAlways || needed <= stack_left();
}

bool find(xmlNode& context, const char* query, bool first_only, Nodes& found, Reason& reason) {
  if (!is_text(query)) {
    reason = "the query is not valid UTF-8, or holds characters that XML does not allow";
    return false;
  }
  if (!fits_stack(query)) {
    reason = "the query is too long for the stack of this thread";
    return false;
  }
  const char* name = std::string_view(query).starts_with("//") ? query + 2 : query;
  if (xmlValidateNCName(as_xml(name), 0) != 0) return evaluate(context, query, found, reason);
  find_by_name(context, query, first_only, found);
  return true;
}

bool select_first(Tree& tree, xmlNode* context, const char* query, IXMLDOMNode** node, Reason& reason) {
  *node = nullptr;
  Nodes found;
  if (!find(*context, query, true, found, reason)) return false;
  if (!found.empty()) *node = tree.HandleOf(found.front());
  return true;
}

}  // namespace

bool select_single(IXMLDOMDocument& document, const char* query, IXMLDOMNode** node, Reason& reason) {
  Tree& tree = static_cast<Document&>(document).tree();
  return select_first(tree, reinterpret_cast<xmlNode*>(tree.doc()), query, node, reason);
}

bool select_single(IXMLDOMNode& context, const char* query, IXMLDOMNode** node, Reason& reason) {
  const Node& handle = static_cast<Node&>(context);
  return select_first(handle.tree, handle.node, query, node, reason);
}

bool select(IXMLDOMNode& context, const char* query, IXMLDOMNodeList** list, Reason& reason) {
  *list = nullptr;
  Node& handle = static_cast<Node&>(context);
  Nodes found;
  if (!find(*handle.node, query, false, found, reason)) return false;
  *list = new List(handle.tree, std::move(found));
  return true;
}

bool child_nodes(IXMLDOMNode& node, IXMLDOMNodeList** list, Reason&) {
  Node& handle = static_cast<Node&>(node);
  *list = new List(handle.tree, *handle.node);
  return true;
}

bool has_children(IXMLDOMNode& node) { return first_child(*static_cast<Node&>(node).node) != nullptr; }

IXMLDOMNode* next_node(IXMLDOMNodeList& list) { return static_cast<List&>(list).Next(); }

}  // namespace orx::platform::dom
