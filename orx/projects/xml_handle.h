// A reference to a node or list of the XML wrapper that gives itself back. Internal to the library.
#pragma once

namespace orx {

template <class Interface>
class XmlHandle {
 public:
  XmlHandle() = default;
  ~XmlHandle() { Reset(); }
  XmlHandle(const XmlHandle&) = delete;
  XmlHandle& operator=(const XmlHandle&) = delete;

  operator Interface*() const { return pointer_; }

  // For an out-parameter: gives back what was held.
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
