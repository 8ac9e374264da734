// An owned reference to a node or list of the XML wrapper. Internal to the library.
#pragma once

namespace orx {

// Holds a pointer from an output of COrxXMLDoc, and releases it at the end of its scope.
template <class Interface>
class XmlHandle {
 public:
  XmlHandle() = default;
  ~XmlHandle() { Reset(); }
  XmlHandle(const XmlHandle&) = delete;
  XmlHandle& operator=(const XmlHandle&) = delete;

  operator Interface*() const { return pointer_; }

  // For an output: releases the pointer that is held, and receives the new one.
  Interface** Out() {
    Reset();
    return &pointer_;
  }

 private:
  void Reset() {
    if (pointer_ != nullptr) pointer_->Release();
    pointer_ = nullptr;
  }

  Interface* pointer_ = nullptr;
};

}  // namespace orx
