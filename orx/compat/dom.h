// The nodes and node lists of an XML document (xml/xml_document.h).
//
// Nodes and lists are reference-counted. A function that writes a pointer into an out-parameter also adds a
// reference. The caller owns that reference and gives it up with Release. A node or list remains valid after
// its document object is destroyed. A document, its nodes and its lists may be used by one thread at a time.
#pragma once

#if defined(_WIN32)
#include <msxml2.h>
#else

struct IXMLDOMReferenced {
  // Adds a reference and returns the new count.
  virtual unsigned long AddRef() noexcept = 0;
  // Gives up a reference and returns the remaining count. At 0 the object is gone and the pointer is invalid.
  virtual unsigned long Release() noexcept = 0;

 protected:
  ~IXMLDOMReferenced() = default;
};

struct IXMLDOMNode : IXMLDOMReferenced {
 protected:
  ~IXMLDOMNode() = default;
};

struct IXMLDOMElement : IXMLDOMNode {
 protected:
  ~IXMLDOMElement() = default;
};

struct IXMLDOMNodeList : IXMLDOMReferenced {
 protected:
  ~IXMLDOMNodeList() = default;
};

struct IXMLDOMDocument : IXMLDOMReferenced {
 protected:
  ~IXMLDOMDocument() = default;
};

#endif
