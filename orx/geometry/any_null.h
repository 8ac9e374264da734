// The null arguments that the flat families of geometry look for.
#pragma once

namespace orx::geometry {

template <class... Types>
bool any_null(const Types*... pointers) {
  return ((pointers == nullptr) || ...);
}

}  // namespace orx::geometry
