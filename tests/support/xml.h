// Queries of a document.
#pragma once

#include <gtest/gtest.h>
#include <orx/projects/xml_handle.h>
#include <orx/xml/xml_document.h>

#include <string>

namespace orx::testing {

using Element = XmlHandle<IXMLDOMElement>;
using NodeRef = XmlHandle<IXMLDOMNode>;
using ListRef = XmlHandle<IXMLDOMNodeList>;

inline std::string failure_of(const COrxXMLDoc& document) {
  CStringA reason;
  document.GetLastFailure(reason);
  return reason.GetString();
}

inline std::string text_of(COrxXMLDoc& document) {
  std::string text = "?";
  EXPECT_EQ(document.GetXMLText(text), 1);
  return text;
}

}  // namespace orx::testing
