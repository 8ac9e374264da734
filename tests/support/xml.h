// Helpers for tests of documents.
#pragma once

#include <gtest/gtest.h>
#include <orx/projects/xml_handle.h>
#include <orx/xml/xml_document.h>

#include <memory>
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

inline int set_attribute(COrxXMLDoc& document, IXMLDOMNode* element, const char* name, const wchar_t* text) {
  VARIANT value{};
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(text);
  const std::unique_ptr<wchar_t, decltype(&SysFreeString)> owner(value.bstrVal, &SysFreeString);
  return value.bstrVal != nullptr ? document.SetXMLAttribute(element, name, value) : 0;
}

}  // namespace orx::testing
