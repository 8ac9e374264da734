// A document with its root, for tests that read and change one.
#pragma once

#include <gtest/gtest.h>
#include <orx/xml/xml_document.h>

#include <string>
#include <utility>

namespace orx::testing {

// A reference that is given back at the end of the scope.
template <class Interface>
class Held {
 public:
  Held() = default;
  Held(Held&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  ~Held() { Reset(); }
  operator Interface*() const { return pointer_; }
  Interface** Out() { return Reset(), &pointer_; }
  void Reset() {
    if (pointer_ != nullptr) std::exchange(pointer_, nullptr)->Release();
  }

 private:
  Interface* pointer_ = nullptr;
};

using Element = Held<IXMLDOMElement>;
using NodeRef = Held<IXMLDOMNode>;
using ListRef = Held<IXMLDOMNodeList>;

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
