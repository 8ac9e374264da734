#include <orx/xml/xml_document.h>

#include <orx/base/ascii.h>
#include <orx/base/errno_guard.h>
#include <orx/platform/code_page.h>
#include <orx/platform/dom.h>
#include <orx/platform/file_system.h>
#include <orx/platform/message_box.h>

#include <exception>
#include <string_view>
#include <utility>

namespace dom = orx::platform::dom;

namespace {

// A null text is the empty text.
const char* text_of(const char* text) { return text != nullptr ? text : ""; }

// False for references, objects and arrays, which are never the text of an attribute. The DOM checks all
// other types.
bool is_value(VARTYPE type) {
  return (type & VT_BYREF) == 0 && type != VT_DISPATCH && type != VT_UNKNOWN && type != VT_RECORD &&
         type != VT_ARRAY;
}

// Runs work that allocates through the standard library. Turns its exceptions into the exception of CStringA:
// std::bad_alloc, and std::length_error of a text that no memory can hold.
template <class Work>
auto translate_exceptions(Work work) {
  try {
    return work();
  } catch (const std::exception&) {
    AtlThrow(E_OUTOFMEMORY);
  }
}

// Runs one operation of the DOM. Returns 1, or 0 with the reason in `failure`.
template <class Operation>
int attempt(CStringA& failure, Operation operation) {
  const orx::ErrnoGuard errno_guard;
  std::string reason;
  if (translate_exceptions([&] { return operation(reason); })) return 1;
  failure = reason.c_str();
  return 0;
}

// Fills a std::string by an operation on a CStringA. The CStringA starts with the same text, so that an
// operation that leaves its output unchanged leaves `text` unchanged.
template <class Operation>
int through_cstring(std::string& text, Operation operation) {
  CStringA narrow(text.data(), static_cast<int>(text.size()));
  const int result = operation(narrow);
  translate_exceptions([&] { return &text.assign(narrow, static_cast<std::size_t>(narrow.GetLength())); });
  return result;
}

// Overwrites the variant without clearing it.
void set_variant_null(VARIANT* value) {
  VariantInit(value);
  value->vt = VT_NULL;
}

template <class Interface>
void clear_output(Interface** output) {
  if (output != nullptr) *output = nullptr;
}

constexpr const char* kNoDocument = "no document is open";
constexpr const char* kNoFileName = "no file name is set";
constexpr const char* kNullArgument = "an argument is null";

}  // namespace

COrxXMLDoc::COrxXMLDoc() = default;

COrxXMLDoc::COrxXMLDoc(const COrxXMLDoc& other)
    : file_name_(other.file_name_), last_failure_(other.last_failure_), document_(other.document_) {
  if (document_ != nullptr) document_->AddRef();
}

COrxXMLDoc& COrxXMLDoc::operator=(const COrxXMLDoc& other) {
  file_name_ = other.file_name_;
  last_failure_ = other.last_failure_;
  IXMLDOMDocument* document = other.document_;
  if (document != nullptr) document->AddRef();  // before the release: both objects may have the same document
  CloseXMLDocument();
  document_ = document;
  return *this;
}

COrxXMLDoc::~COrxXMLDoc() { CloseXMLDocument(); }

void COrxXMLDoc::SetFileName(const char* name) {
  std::string_view rest(text_of(name));
  while (!rest.empty() && orx::is_space(rest.front())) rest.remove_prefix(1);
  while (!rest.empty() && orx::is_space(rest.back())) rest.remove_suffix(1);
  file_name_ = CStringA(rest.data(), static_cast<int>(rest.size()));
}

const char* COrxXMLDoc::GetFileName() const { return file_name_; }

void COrxXMLDoc::GetLastFailure(CStringA& reason) const { reason = last_failure_; }

int COrxXMLDoc::Fail(const char* reason) {
  try {
    last_failure_ = reason;
  } catch (const CAtlException&) {
    last_failure_.Empty();  // there is no memory for the reason
  }
  return 0;
}

// Makes a new document. `load` fills it and stores the document element in *root. The new document is kept
// when `load` fails; it is empty then.
template <class Load>
int COrxXMLDoc::Open(IXMLDOMElement** root, Load load) {
  if (root == nullptr) return Fail(kNullArgument);
  *root = nullptr;
  return attempt(last_failure_, [&](std::string& reason) {
    CloseXMLDocument();
    document_ = dom::create_document();
    if (document_ != nullptr) return load(reason);
    // The system has no DOM, so that no document can be opened. This is for the user.
    orx::platform::show_error_box("MS XML Parser is not registered.", "ORX");
    reason = kNoDocument;
    return false;
  });
}

int COrxXMLDoc::CreateXMLDocument(IXMLDOMElement** root, const char* rootName) {
  return Open(root, [&](std::string& reason) {
    return dom::create_root(*document_, text_of(rootName), root, reason);
  });
}

int COrxXMLDoc::LoadXMLDocument(IXMLDOMElement** root) {
  return Open(root, [&](std::string& reason) {
    if (!file_name_.IsEmpty()) return dom::load_file(*document_, file_name_, root, reason);
    reason = kNoFileName;
    return false;
  });
}

int COrxXMLDoc::SetXMLText(IXMLDOMElement** root, const char* text) {
  return Open(root,
              [&](std::string& reason) { return dom::load_text(*document_, text_of(text), root, reason); });
}

int COrxXMLDoc::GetXMLText(CStringA& text) {
  std::string all;
  if (!GetXMLText(all)) return 0;
  text = CStringA(all.data(), static_cast<int>(all.size()));
  return 1;
}

int COrxXMLDoc::GetXMLText(std::string& text) {
  if (document_ == nullptr) return Fail(kNoDocument);
  return attempt(last_failure_, [&](std::string& reason) {
    std::string all;
    const auto sink = [&all](const char* bytes, std::size_t size) {
      all.append(bytes, size);
      return true;
    };
    if (!dom::write_text(*document_, sink, reason)) return false;
    text = std::move(all);
    return true;
  });
}

int COrxXMLDoc::SaveXMLFile() {
  if (document_ == nullptr) return Fail(kNoDocument);
  if (file_name_.IsEmpty()) return Fail(kNoFileName);
  return attempt(last_failure_, [&](std::string& reason) {
    orx::platform::FileReplacement file;
    const auto sink = [&](const char* bytes, std::size_t size) { return file.Write(bytes, size, reason); };
    return file.Open(file_name_, reason) && dom::write_file(*document_, sink, reason) && file.Commit(reason);
  });
}

int COrxXMLDoc::IndentXMLDocument() {
  if (document_ == nullptr) return Fail(kNoDocument);
  return attempt(last_failure_, [&](std::string& reason) { return dom::indent(*document_, reason); });
}

int COrxXMLDoc::CloseXMLDocument() {
  if (IXMLDOMDocument* document = std::exchange(document_, nullptr)) document->Release();
  return 1;
}

int COrxXMLDoc::CreateXMLElement(IXMLDOMElement* parent, const char* name, IXMLDOMElement** child) {
  clear_output(child);
  if (document_ == nullptr) return Fail(kNoDocument);
  if (parent == nullptr || child == nullptr) return Fail(kNullArgument);
  return attempt(last_failure_, [&](std::string& reason) {
    return dom::append_element(*document_, *parent, text_of(name), child, reason);
  });
}

int COrxXMLDoc::GetXMLName(IXMLDOMElement* element, CStringA& name) {
  return GetXMLName(static_cast<IXMLDOMNode*>(element), name);
}

int COrxXMLDoc::GetXMLName(IXMLDOMElement* element, std::string& name) {
  return GetXMLName(static_cast<IXMLDOMNode*>(element), name);
}

int COrxXMLDoc::GetXMLName(IXMLDOMNode* node, CStringA& name) {
  if (node == nullptr) return Fail(kNullArgument);
  return attempt(last_failure_, [&](std::string& reason) { return dom::get_name(*node, name, reason); });
}

int COrxXMLDoc::GetXMLName(IXMLDOMNode* node, std::string& name) {
  return through_cstring(name, [&](CStringA& narrow) { return GetXMLName(node, narrow); });
}

int COrxXMLDoc::GetXMLValue(IXMLDOMElement* element, CStringA& text) {
  if (element == nullptr) return Fail(kNullArgument);
  return attempt(last_failure_, [&](std::string& reason) { return dom::get_text(*element, text, reason); });
}

int COrxXMLDoc::GetXMLValue(IXMLDOMElement* element, std::string& text) {
  return through_cstring(text, [&](CStringA& narrow) { return GetXMLValue(element, narrow); });
}

int COrxXMLDoc::GetXMLValue(IXMLDOMElement* element, VARIANT* value) {
  if (element == nullptr || value == nullptr) return Fail(kNullArgument);
  set_variant_null(value);
  return 1;
}

int COrxXMLDoc::GetXMLValue(IXMLDOMNode* node, CStringA& text) {
  IXMLDOMElement* element = Narrow(node);
  return element != nullptr ? GetXMLValue(element, text) : 0;
}

int COrxXMLDoc::GetXMLValue(IXMLDOMNode* node, std::string& text) {
  IXMLDOMElement* element = Narrow(node);
  return element != nullptr ? GetXMLValue(element, text) : 0;
}

int COrxXMLDoc::GetXMLValue(IXMLDOMNode* node, VARIANT* value) {
  IXMLDOMElement* element = Narrow(node);
  return element != nullptr ? GetXMLValue(element, value) : 0;
}

int COrxXMLDoc::SetXMLValue(IXMLDOMNode* node, wchar_t* text) {
  if (node == nullptr) return Fail(kNullArgument);
  return attempt(last_failure_, [&](std::string& reason) { return dom::set_text(*node, text, reason); });
}

int COrxXMLDoc::GetXMLAttribute(IXMLDOMElement* element, const char* name, CStringA& text) {
  if (element == nullptr) return Fail(kNullArgument);
  bool exists = false;
  const int done = attempt(last_failure_, [&](std::string& reason) {
    return dom::get_attribute(*element, text_of(name), exists, text, reason);
  });
  if (done && !exists) return Fail("the element has no such attribute");
  return done;
}

int COrxXMLDoc::GetXMLAttribute(IXMLDOMElement* element, const char* name, std::string& text) {
  return through_cstring(text, [&](CStringA& narrow) { return GetXMLAttribute(element, name, narrow); });
}

int COrxXMLDoc::GetXMLAttribute(IXMLDOMElement* element, const char* name, VARIANT* value) {
  if (element == nullptr || value == nullptr) return Fail(kNullArgument);
  set_variant_null(value);
  return attempt(last_failure_, [&](std::string& reason) {
    return dom::get_attribute(*element, text_of(name), value, reason);
  });
}

int COrxXMLDoc::GetXMLAttribute(IXMLDOMNode* node, const char* name, CStringA& text) {
  IXMLDOMElement* element = Narrow(node);
  return element != nullptr ? GetXMLAttribute(element, name, text) : 0;
}

int COrxXMLDoc::GetXMLAttribute(IXMLDOMNode* node, const char* name, std::string& text) {
  IXMLDOMElement* element = Narrow(node);
  return element != nullptr ? GetXMLAttribute(element, name, text) : 0;
}

int COrxXMLDoc::GetXMLAttribute(IXMLDOMNode* node, const char* name, VARIANT* value) {
  IXMLDOMElement* element = Narrow(node);
  return element != nullptr ? GetXMLAttribute(element, name, value) : 0;
}

int COrxXMLDoc::SetXMLAttribute(IXMLDOMElement* element, const char* name, VARIANT value) {
  if (element == nullptr) return Fail(kNullArgument);
  if (!is_value(value.vt)) return Fail("a reference, an object or an array cannot be an attribute");
  return attempt(last_failure_, [&](std::string& reason) {
    return dom::set_attribute(*element, text_of(name), value, reason);
  });
}

int COrxXMLDoc::SetXMLAttribute(IXMLDOMNode* node, const char* name, VARIANT value) {
  IXMLDOMElement* element = Narrow(node);
  return element != nullptr ? SetXMLAttribute(element, name, value) : 0;
}

int COrxXMLDoc::FindXMLAttribute(IXMLDOMNode* node, const char* name, CStringA& text) {
  IXMLDOMElement* element = Narrow(node);
  if (element == nullptr) return 0;
  bool exists = false;
  const int done = attempt(last_failure_, [&](std::string& reason) {
    return dom::get_attribute(*element, name, exists, text, reason);
  });
  return done && exists;
}

int COrxXMLDoc::SetXMLAttributeText(IXMLDOMElement* element, const char* name, const char* text) {
  return attempt(last_failure_,
                 [&](std::string& reason) { return dom::set_attribute(*element, name, text, reason); });
}

int COrxXMLDoc::SelectSingleXMLNode(const char* query, IXMLDOMNode** node) {
  clear_output(node);
  if (document_ == nullptr) return Fail(kNoDocument);
  if (node == nullptr) return Fail(kNullArgument);
  return attempt(last_failure_, [&](std::string& reason) {
    return dom::select_single(*document_, text_of(query), node, reason);
  });
}

int COrxXMLDoc::SelectSingleXMLNode(IXMLDOMNode* context, const char* query, IXMLDOMNode** node) {
  clear_output(node);
  if (context == nullptr || node == nullptr) return Fail(kNullArgument);
  return attempt(last_failure_, [&](std::string& reason) {
    return dom::select_single(*context, text_of(query), node, reason);
  });
}

int COrxXMLDoc::SelectXMLNodes(IXMLDOMNode* context, const char* query, IXMLDOMNodeList** list) {
  clear_output(list);
  if (context == nullptr || list == nullptr) return Fail(kNullArgument);
  return attempt(last_failure_,
                 [&](std::string& reason) { return dom::select(*context, text_of(query), list, reason); });
}

int COrxXMLDoc::GetXMLChildNodes(IXMLDOMNode* node, IXMLDOMNodeList** list) {
  clear_output(list);
  if (node == nullptr || list == nullptr) return Fail(kNullArgument);
  return attempt(last_failure_, [&](std::string& reason) { return dom::child_nodes(*node, list, reason); });
}

int COrxXMLDoc::NextXMLNode(IXMLDOMNodeList* list, IXMLDOMNode** node) {
  clear_output(node);
  if (list == nullptr || node == nullptr) return Fail(kNullArgument);
  attempt(last_failure_, [&](std::string&) {
    *node = dom::next_node(*list);
    return true;
  });
  return *node != nullptr;
}

int COrxXMLDoc::HasChildNodes(IXMLDOMNode* node) {
  if (node == nullptr) return Fail(kNullArgument);
  return dom::has_children(*node);
}

IXMLDOMElement* COrxXMLDoc::Narrow(IXMLDOMNode* node) {
  IXMLDOMElement* element = node != nullptr ? dom::as_element(*node) : nullptr;
  if (element == nullptr) Fail("the node is not an element");
  return element;
}
