// The node types that the XML wrapper hands out.
//
// Every pointer that an operation writes into an out-parameter carries a reference that its caller owns and
// gives back with Release. A node or list keeps everything it belongs to alive, whatever becomes of the
// document. Nodes and lists belong to one thread at a time, together with their document.
#pragma once

#if defined(_WIN32)
#include <msxml2.h>
#else

struct IXMLDOMReferenced {
  virtual unsigned long AddRef() noexcept = 0;  // the new count
  virtual unsigned long
  Release() noexcept = 0;  // the count that is left; at 0 the pointer is no longer valid

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
