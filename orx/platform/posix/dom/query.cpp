// Selecting nodes. The suite asks for elements by name, below the document or below an element; those two are
// walks of the tree. Everything else is left to libxml2's XPath.
#include <orx/platform/dom.h>
#include <orx/platform/posix/dom/host.h>
#include <orx/platform/posix/dom/rules.h>
#include <orx/platform/posix/dom/tree.h>
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

// libxml2 parses and evaluates a query recursively, and counts the calls in units. At most 181 bytes a unit
// were measured.
constexpr std::size_t kStackBytesOfUnit = 256;
constexpr std::size_t kStackReserve = std::size_t{16} << 10;
constexpr std::size_t kMaxUnits = 5000;  // libxml2's own limit
constexpr std::size_t kUnknownStack = std::size_t{64} << 10;

int query_units() {
  const std::size_t measured = stack_left();
  const std::size_t left = measured != 0 ? measured : kUnknownStack;
  const std::size_t usable = left - std::min(left, kStackReserve);
  return static_cast<int>(std::min(usable / kStackBytesOfUnit, kMaxUnits));
}

using XPathContext = std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)>;

void register_namespaces(xmlXPathContext& context, xmlNode& node) {
  const std::unique_ptr<xmlNs*, decltype(xmlFree)> namespaces(xmlGetNsList(node.doc, &node), xmlFree);
  for (xmlNs** entry = namespaces.get(); entry != nullptr && *entry != nullptr; ++entry) {
    const xmlNs& ns = **entry;
    if (ns.prefix != nullptr && xmlXPathRegisterNs(&context, ns.prefix, ns.href) != 0) throw std::bad_alloc();
  }
}

using XPathObject = std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)>;

// Frees the values that an evaluation has left on its stack, which libxml2 would not.
struct EvaluationDeleter {
  void operator()(xmlXPathParserContext* evaluation) const noexcept {
    evaluation->valueFrame = 0;  // of a function that has not returned
    while (xmlXPathObject* value = valuePop(evaluation)) xmlXPathFreeObject(value);
    xmlXPathFreeParserContext(evaluation);
  }
};

// As xmlXPathEval, but with a stack of values from the beginning: libxml2 frees the evaluation twice when it
// has no memory for that. The result is null when there is none.
XPathObject evaluate_query(xmlXPathContext& context, const char* query) {
  constexpr int kValues = 10;
  const std::unique_ptr<xmlXPathParserContext, EvaluationDeleter> evaluation(
      allocated(xmlXPathNewParserContext(as_xml(query), &context)));
  evaluation->valueTab =
      static_cast<xmlXPathObject**>(allocated(xmlMalloc(kValues * sizeof(xmlXPathObject*))));
  evaluation->valueMax = kValues;
  xmlXPathEvalExpr(evaluation.get());
  const bool is_done = evaluation->error == XPATH_EXPRESSION_OK;
  return {is_done ? valuePop(evaluation.get()) : nullptr, &xmlXPathFreeObject};
}

std::string query_problem(const xmlXPathContext& context, const xmlXPathObject* result, const char* query) {
  constexpr int kTooDeepCode = int{XML_XPATH_EXPRESSION_OK} + int{XPATH_RECURSION_LIMIT_EXCEEDED};
  const char* problem = result != nullptr                        ? "\" does not select nodes"
                        : context.lastError.code == kTooDeepCode ? "\" is too long or nested too deep"
                                                                 : "\" cannot be evaluated";
  return "the query \"" + std::string(query) + problem;
}

bool evaluate(xmlNode& node, const char* query, Nodes& found, Reason& reason) {
  HostAside host;
  const XPathContext context(allocated(xmlXPathNewContext(node.doc)), &xmlXPathFreeContext);
  context->node = &node;
  context->error = &HostAside::OnError;
  context->userData = &host;
  context->depth = static_cast<int>(kMaxUnits) - query_units();
  register_namespaces(*context, node);
  const XPathObject result = evaluate_query(*context, query);
  host.CheckMemory();
  if (result == nullptr || result->type != XPATH_NODESET) {
    reason = query_problem(*context, result.get(), query);
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

bool find(xmlNode& context, const char* query, bool first_only, Nodes& found, Reason& reason) {
  if (!accept_query(query, reason)) return false;
  const char* name = std::string_view(query).starts_with("//") ? query + 2 : query;
  if (!is_plain_name(name)) return evaluate(context, query, found, reason);
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
