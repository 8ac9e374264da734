// Objects that are never destroyed. Internal to the library.
#pragma once

namespace orx {

// A static object that is constructed when the library is loaded, and never destroyed: threads and
// destructors of the host may use it while the process ends. A member of a union has no automatic destructor.
template <class Type>
union NeverDestroyed {
  NeverDestroyed() : object() {}
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;
  ~NeverDestroyed() {}

  Type object;
};

}  // namespace orx
