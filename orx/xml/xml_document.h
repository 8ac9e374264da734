// COrxXMLDoc: one XML document and the name of its file.
//
// Operations return 1, or 0 for failure; after a failure GetLastFailure tells why. Names, queries and texts
// are narrow text in the encoding of the process; a null name, query or text is the empty one. A null node,
// element, list or output pointer, and an operation on the document when none is held, is a failure.
//
// Every node, element or list that comes back through a pointer carries a reference that the caller owns and
// gives back with Release; it outlives the document. The outputs are null after a failure. Nodes passed in
// are borrowed for the call. A VARIANT output is overwritten: initialise it before and clear it after.
//
// Documents are taken as untrusted: nothing they say opens another file or the network, and one that declares
// entities is refused. A document has at most 128 MiB, 10,000,000 elements and attributes, 256 elements
// within one another, 1,000 attributes of an element and 250 namespace declarations in scope; a name has at
// most 50,000 bytes, a value, a text or a start tag 9,900,000 as it is written. What exceeds a limit, and
// text that XML does not allow or that is not valid in its encoding, is refused when it is loaded, set or
// saved: a document that was saved can be loaded. A query has at most 64 KiB, and must not need more stack
// than the thread has.
//
// Copies share one document and see each other's changes. A document and its nodes belong to one thread at a
// time. Out of memory raises CAtlException (E_OUTOFMEMORY) and changes nothing, except that a document to be
// created or loaded is empty.
#pragma once

#include <orx/compat/dom.h>
#include <orx/compat/export.h>
#include <orx/compat/string_a.h>
#include <orx/compat/variant.h>

#include <string>

class ORX_API COrxXMLDoc {
 public:
  COrxXMLDoc();
  COrxXMLDoc(const COrxXMLDoc& other);
  COrxXMLDoc& operator=(const COrxXMLDoc& other);
  virtual ~COrxXMLDoc();

  // The file that LoadXMLDocument reads and SaveXMLFile writes, as a path of the suite. White space around it
  // is removed. The name stays when documents come and go; the pointer is valid until it is next set.
  void SetFileName(const char* name);
  const char* GetFileName() const;

  // What the last operation that failed ran into; empty when none has.
  void GetLastFailure(CStringA& reason) const;

  // Each of the three drops the document held before. *root receives the document element. A document that
  // could not be parsed is held, empty.
  int CreateXMLDocument(IXMLDOMElement** root, const char* rootName);
  int LoadXMLDocument(IXMLDOMElement** root);
  int SetXMLText(IXMLDOMElement** root, const char* text);

  int GetXMLText(CStringA& text);
  int GetXMLText(std::string& text);

  // Replaces the file as a whole, in UTF-8; when that fails the old file is untouched. The empty document and
  // one that exceeds a limit are refused.
  int SaveXMLFile();

  // Lays the document out one element a line, indented by tabs. Nodes handed out before stay with the old
  // content.
  int IndentXMLDocument();

  // Always 1.
  int CloseXMLDocument();

  // Appends a new element to `parent`.
  int CreateXMLElement(IXMLDOMElement* parent, const char* name, IXMLDOMElement** child);

  // The qualified name; of nodes that are not elements "#text", "#comment" and the like.
  int GetXMLName(IXMLDOMElement* element, CStringA& name);
  int GetXMLName(IXMLDOMElement* element, std::string& name);
  int GetXMLName(IXMLDOMNode* node, CStringA& name);
  int GetXMLName(IXMLDOMNode* node, std::string& name);

  // The text of the element and all its descendants, without white space at its ends. As a VARIANT the value
  // of an element is always VT_NULL. A node that is not an element fails.
  int GetXMLValue(IXMLDOMElement* element, CStringA& text);
  int GetXMLValue(IXMLDOMElement* element, std::string& text);
  int GetXMLValue(IXMLDOMElement* element, VARIANT* value);
  int GetXMLValue(IXMLDOMNode* node, CStringA& text);
  int GetXMLValue(IXMLDOMNode* node, std::string& text);
  int GetXMLValue(IXMLDOMNode* node, VARIANT* value);

  // Replaces all children by one text.
  int SetXMLValue(IXMLDOMNode* node, wchar_t* text);

  // A missing attribute gives 0 and the empty text, but 1 and VT_NULL as a VARIANT. Any other failure leaves
  // the output as it was. A node that is not an element fails.
  int GetXMLAttribute(IXMLDOMElement* element, const char* name, CStringA& text);
  int GetXMLAttribute(IXMLDOMElement* element, const char* name, std::string& text);
  int GetXMLAttribute(IXMLDOMElement* element, const char* name, VARIANT* value);
  int GetXMLAttribute(IXMLDOMNode* node, const char* name, CStringA& text);
  int GetXMLAttribute(IXMLDOMNode* node, const char* name, std::string& text);
  int GetXMLAttribute(IXMLDOMNode* node, const char* name, VARIANT* value);

  // Texts, numbers, dates and truth values are written as text; VT_NULL, by-reference values, objects and
  // arrays are refused. The value stays the caller's. A node that is not an element fails.
  int SetXMLAttribute(IXMLDOMElement* element, const char* name, VARIANT value);
  int SetXMLAttribute(IXMLDOMNode* node, const char* name, VARIANT value);

  // "//NAME" finds elements anywhere in the document, "NAME" children of the context; other queries are
  // XPath 1.0. No match is no failure: the node is null, the list empty. A list does not follow later
  // changes.
  int SelectSingleXMLNode(const char* query, IXMLDOMNode** node);
  int SelectSingleXMLNode(IXMLDOMNode* context, const char* query, IXMLDOMNode** node);
  int SelectXMLNodes(IXMLDOMNode* context, const char* query, IXMLDOMNodeList** list);

  // This list does follow later changes.
  int GetXMLChildNodes(IXMLDOMNode* node, IXMLDOMNodeList** list);

  // 0 with a null node at the end of the list, which is no failure.
  int NextXMLNode(IXMLDOMNodeList* list, IXMLDOMNode** node);

  int HasChildNodes(IXMLDOMNode* node);

 protected:
  // Keeps the reason for GetLastFailure and answers 0.
  int Fail(const char* reason);

  // Cannot fail.
  void ShareFileName(const COrxXMLDoc& other) noexcept { file_name_ = other.file_name_; }

  // As their namesakes above, for texts, and without taking a missing attribute for a failure: then the text
  // is empty and the result 0.
  int FindXMLAttribute(IXMLDOMNode* node, const char* name, CStringA& text);
  int SetXMLAttributeText(IXMLDOMElement* element, const char* name, const char* text);

 private:
  template <class Load>
  int Open(IXMLDOMElement** root, Load load);
  IXMLDOMElement* Narrow(IXMLDOMNode* node);  // keeps the reason when it is none

  CStringA file_name_;
  CStringA last_failure_;
  IXMLDOMDocument* document_ = nullptr;
};
