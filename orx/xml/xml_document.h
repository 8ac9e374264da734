// COrxXMLDoc: one XML document and the name of its file.
//
// Results: an operation returns 1, or 0 for failure; GetLastFailure then gives the reason. It is a failure
// when a pointer to a node, element, list or output is null, and when an operation needs a document but the
// object has none. Operations with other results say so.
//
// Text: names, queries and texts are narrow text in the encoding of the process. A null name, query or text
// is the empty text.
//
// Ownership: every node, element or list that an operation stores carries a reference that the caller owns
// and ends with Release. It stays valid after the document is closed. After a failure the pointer is
// null. An output pointer is overwritten, so release what it held first. Nodes that are passed in are
// borrowed for the call. A VARIANT output is overwritten too: initialise it before the call and clear it
// after.
//
// Limits: a document from any source is safe to load. It cannot open another file or use the network, and a
// document that declares entities is refused. A document has at most
//   - 128 MiB, and 10,000,000 elements and attributes,
//   - 256 nested elements,
//   - 1,000 attributes on one element, and 250 namespace declarations in scope,
//   - 50,000 bytes in a name, and 9,900,000 bytes in a value, a text or a start tag, counted as they are
//     written.
// A query has at most 64 KiB. A query that needs more stack than the thread has left fails. What exceeds a
// limit, what XML does not allow and what is not valid in its encoding is refused when it is set, loaded or
// saved. So every document that was saved can be loaded.
//
// Threads: a document and its nodes belong to one thread at a time. Copies of a COrxXMLDoc share one document
// and see each other's changes.
//
// Memory: out of memory raises CAtlException (E_OUTOFMEMORY) and changes nothing, except that an object that
// was about to create or load a document then has an empty document or none.
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

  // The path of the file that LoadXMLDocument reads and SaveXMLFile writes, in the suite's form
  // (backslashes). White space at both ends is removed. The name does not change when a document is loaded or
  // closed. The pointer is valid until the name is set again.
  void SetFileName(const char* name);
  const char* GetFileName() const;

  // The reason of the last failure, a short phrase without the file's name. Empty before the first failure; a
  // success does not clear it.
  void GetLastFailure(CStringA& reason) const;

  // These close the document that the object has and replace it: by a new one with a document element
  // `rootName`, by the content of the file, or by the content of a text. *root receives the document element.
  // When the content cannot be parsed, the object has an empty document.
  int CreateXMLDocument(IXMLDOMElement** root, const char* rootName);
  int LoadXMLDocument(IXMLDOMElement** root);
  int SetXMLText(IXMLDOMElement** root, const char* text);

  // The whole document as text. An empty document gives the empty text. The text is unchanged after a
  // failure.
  int GetXMLText(CStringA& text);
  int GetXMLText(std::string& text);

  // Writes the document to its file in UTF-8. The file is replaced as a whole; after a failure the old file
  // is unchanged. An empty document, and a document that exceeds a limit, are refused.
  int SaveXMLFile();

  // Lays the document out with one element per line, indented by tabs. Elements with text keep their content.
  // Nodes and lists from before the call belong to the old content, and no longer to the document.
  int IndentXMLDocument();

  // Gives up the document, which is not saved. The file name stays. Always 1.
  int CloseXMLDocument();

  // Appends a new element to the children of `parent`.
  int CreateXMLElement(IXMLDOMElement* parent, const char* name, IXMLDOMElement** child);

  // The qualified name ("prefix:name") of an element or attribute. Other nodes have names like "#text",
  // "#cdata-section" and "#comment".
  int GetXMLName(IXMLDOMElement* element, CStringA& name);
  int GetXMLName(IXMLDOMElement* element, std::string& name);
  int GetXMLName(IXMLDOMNode* node, CStringA& name);
  int GetXMLName(IXMLDOMNode* node, std::string& name);

  // The text of the element and all its descendants, without white space at both ends. A VARIANT always
  // becomes VT_NULL, which is the value of an element in the DOM. Fails for a node that is not an element;
  // the output is then unchanged.
  int GetXMLValue(IXMLDOMElement* element, CStringA& text);
  int GetXMLValue(IXMLDOMElement* element, std::string& text);
  int GetXMLValue(IXMLDOMElement* element, VARIANT* value);
  int GetXMLValue(IXMLDOMNode* node, CStringA& text);
  int GetXMLValue(IXMLDOMNode* node, std::string& text);
  int GetXMLValue(IXMLDOMNode* node, VARIANT* value);

  // Sets the text of a node. In an element, one text replaces all children. Fails for a text that the kind of
  // node cannot hold, for example "--" in a comment.
  int SetXMLValue(IXMLDOMNode* node, wchar_t* text);

  // The value of an attribute. A missing attribute gives 0 and the empty text, but 1 and VT_NULL in a
  // VARIANT. A value in a VARIANT is a VT_BSTR. Fails for a node that is not an element. After any other
  // failure a text is unchanged.
  int GetXMLAttribute(IXMLDOMElement* element, const char* name, CStringA& text);
  int GetXMLAttribute(IXMLDOMElement* element, const char* name, std::string& text);
  int GetXMLAttribute(IXMLDOMElement* element, const char* name, VARIANT* value);
  int GetXMLAttribute(IXMLDOMNode* node, const char* name, CStringA& text);
  int GetXMLAttribute(IXMLDOMNode* node, const char* name, std::string& text);
  int GetXMLAttribute(IXMLDOMNode* node, const char* name, VARIANT* value);

  // Sets an attribute, or adds it. Texts, numbers, dates and Booleans are written as text. VT_NULL, values by
  // reference, objects and arrays are refused. The caller keeps the value and clears it. Fails for a node
  // that is not an element.
  int SetXMLAttribute(IXMLDOMElement* element, const char* name, VARIANT value);
  int SetXMLAttribute(IXMLDOMNode* node, const char* name, VARIANT value);

  // "//NAME" finds elements anywhere in the document, and "NAME" finds children of the context. Both also
  // find elements of a default namespace. Other queries are XPath 1.0. No match is a success with a null node
  // or an empty list. The list is in document order, and does not follow later changes.
  int SelectSingleXMLNode(const char* query, IXMLDOMNode** node);
  int SelectSingleXMLNode(IXMLDOMNode* context, const char* query, IXMLDOMNode** node);
  int SelectXMLNodes(IXMLDOMNode* context, const char* query, IXMLDOMNodeList** list);

  // The children of a node. This list follows later changes of the children.
  int GetXMLChildNodes(IXMLDOMNode* node, IXMLDOMNodeList** list);

  // The next node of a list. At the end of the list 0 with a null node, which sets no reason.
  int NextXMLNode(IXMLDOMNodeList* list, IXMLDOMNode** node);

  // 1 when the node has children, otherwise 0.
  int HasChildNodes(IXMLDOMNode* node);

 protected:
  // Stores the reason for GetLastFailure. Always 0.
  int Fail(const char* reason);

  // Takes over the file name of another object without allocating, so that it cannot fail.
  void ShareFileName(const COrxXMLDoc& other) noexcept { file_name_ = other.file_name_; }

  // GetXMLAttribute and SetXMLAttribute for narrow texts. A missing attribute gives 0 and the empty text, but
  // sets no reason. The name and the text must not be null.
  int FindXMLAttribute(IXMLDOMNode* node, const char* name, CStringA& text);
  int SetXMLAttributeText(IXMLDOMElement* element, const char* name, const char* text);

 private:
  template <class Load>
  int Open(IXMLDOMElement** root, Load load);
  // The node as an element. Null, with the reason, when it is not an element.
  IXMLDOMElement* Narrow(IXMLDOMNode* node);

  CStringA file_name_;
  CStringA last_failure_;
  IXMLDOMDocument* document_ = nullptr;
};
