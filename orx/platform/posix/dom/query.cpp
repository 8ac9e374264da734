// Queries. The suite itself uses two forms: "//NAME" for elements anywhere in the document, and "NAME" for
// children. This file answers them by walking the tree, and leaves every other query to libxml2's XPath.
#include <orx/platform/dom.h>
#include <orx/platform/dom_rules.h>
#include <orx/platform/posix/dom/host.h>
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

enum class Matches { kFirst, kAll };

// A name without a prefix also matches elements of a default namespace, unlike in XPath.
bool is_named(const xmlNode& node, const char* name) {
  return node.type == XML_ELEMENT_NODE && std::strcmp(as_text(node.name), name) == 0 &&
         (node.ns == nullptr || node.ns->prefix == nullptr);
}

constexpr std::string_view kAnywhere = "//";

// Answers "//NAME" and "NAME".
void find_by_name(xmlNode& context, std::string_view query, Matches matches, Nodes& found) {
  const bool anywhere = query.starts_with(kAnywhere);
  xmlNode* top = anywhere ? reinterpret_cast<xmlNode*>(context.doc) : &context;
  const char* name = anywhere ? query.data() + kAnywhere.size() : query.data();
  xmlNode* node = first_child(*top);
  while (node != nullptr) {
    if (is_named(*node, name)) {
      found.push_back(node);
      if (matches == Matches::kFirst) return;
    }
    node = anywhere ? next_below(node, top) : node->next;
  }
}

// libxml2 parses and evaluates a query recursively, counts the calls as levels, and fails above its limit.
// The limit is too high for a thread with a small stack, so it is lowered to what the stack of this thread
// allows.
constexpr std::size_t kMaxLevels = 5000;              // libxml2's own limit
constexpr std::size_t kStackBytesPerLevel = 256;      // at most 181 were measured
constexpr std::size_t kStackReserve = 16 << 10;       // for the calls outside of the recursion
constexpr std::size_t kAssumedStackBytes = 64 << 10;  // where stack_left does not know

int affordable_levels() {
  const std::size_t measured = stack_left();
  const std::size_t left = measured != 0 ? measured : kAssumedStackBytes;
  const std::size_t usable = left - std::min(left, kStackReserve);
  return static_cast<int>(std::min(usable / kStackBytesPerLevel, kMaxLevels));
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

// Also frees the values that are left on the stack of an evaluation that failed. libxml2 would lose them.
struct EvaluationDeleter {
  void operator()(xmlXPathParserContext* evaluation) const noexcept {
    evaluation->valueFrame = 0;  // or valuePop would stop at the frame of a function that has not returned
    while (xmlXPathObject* value = valuePop(evaluation)) xmlXPathFreeObject(value);
    xmlXPathFreeParserContext(evaluation);
  }
};

// Does the work of xmlXPathEval, but allocates the stack of values first: libxml2 allocates it later, and
// frees the evaluation twice when that fails. Null when the query fails.
XPathObject evaluate_query(xmlXPathContext& context, const char* query) {
  constexpr int kFirstValues = 10;  // libxml2 makes the stack larger when it needs to
  const std::unique_ptr<xmlXPathParserContext, EvaluationDeleter> evaluation(
      throw_if_null(xmlXPathNewParserContext(as_xml(query), &context)));
  evaluation->valueTab =
      static_cast<xmlXPathObject**>(throw_if_null(xmlMalloc(kFirstValues * sizeof(xmlXPathObject*))));
  evaluation->valueMax = kFirstValues;
  xmlXPathEvalExpr(evaluation.get());
  const bool is_done = evaluation->error == XPATH_EXPRESSION_OK;
  return {is_done ? valuePop(evaluation.get()) : nullptr, &xmlXPathFreeObject};
}

// `result` is null when the evaluation failed; otherwise it is not a set of nodes.
std::string query_failure(const xmlXPathContext& context, const xmlXPathObject* result, const char* query) {
  constexpr int kTooDeepCode = int{XML_XPATH_EXPRESSION_OK} + int{XPATH_RECURSION_LIMIT_EXCEEDED};
  const std::string quoted = "the query \"" + std::string(query) + "\"";
  if (result != nullptr) return quoted + " does not select nodes";
  if (context.lastError.code == kTooDeepCode) return quoted + " is too long or nested too deep";
  return quoted + " cannot be evaluated";
}

bool evaluate(xmlNode& node, const char* query, Nodes& found, Reason& reason) {
  HostSettingsGuard host;
  const XPathContext context(throw_if_null(xmlXPathNewContext(node.doc)), &xmlXPathFreeContext);
  context->node = &node;
  context->error = &HostSettingsGuard::OnError;
  context->userData = &host;
  context->depth = static_cast<int>(kMaxLevels) - affordable_levels();  // levels that count as used
  register_namespaces(*context, node);
  const XPathObject result = evaluate_query(*context, query);
  host.CheckMemory();
  if (result == nullptr || result->type != XPATH_NODESET) {
    reason = query_failure(*context, result.get(), query);
    return false;
  }
  if (result->nodesetval == nullptr) return true;
  xmlXPathNodeSetSort(result->nodesetval);
  for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
    xmlNode* match = result->nodesetval->nodeTab[i];
    // Namespaces are left out: they are copies that belong to the result.
    if (match->type != XML_NAMESPACE_DECL) found.push_back(match);
  }
  return true;
}

// `found` receives the matches in document order, at least the first.
bool find(xmlNode& context, const char* query, Matches matches, Nodes& found, Reason& reason) {
  if (!accept_query(query, reason)) return false;
  std::string_view name(query);
  if (name.starts_with(kAnywhere)) name.remove_prefix(kAnywhere.size());
  if (!is_plain_name(name)) return evaluate(context, query, found, reason);
  find_by_name(context, query, matches, found);
  return true;
}

bool select_first(Tree& tree, xmlNode* context, const char* query, IXMLDOMNode** node, Reason& reason) {
  *node = nullptr;
  Nodes found;
  if (!find(*context, query, Matches::kFirst, found, reason)) return false;
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
  if (!find(*handle.node, query, Matches::kAll, found, reason)) return false;
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
