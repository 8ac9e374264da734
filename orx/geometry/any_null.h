// Null check of the pointer arguments of a function. Internal to the library.
#pragma once

namespace orx::geometry {

template <class... Types>
bool any_null(const Types*... pointers) {
  return ((pointers == nullptr) || ...);
}

}  // namespace orx::geometry
