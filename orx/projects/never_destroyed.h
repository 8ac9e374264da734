// Objects that live as long as the process. Internal to the library.
#pragma once

namespace orx {

// Made when the library is loaded, and never destroyed: the threads and the statics of a host may use it
// while the process ends.
template <class Type>
union NeverDestroyed {
  NeverDestroyed() : object() {}
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;
  ~NeverDestroyed() {}

  Type object;
};

}  // namespace orx
