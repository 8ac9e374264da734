// The text that a typed value becomes as the value of an attribute.
#pragma once

#include <orx/compat/variant.h>

#include <string>

namespace orx::platform {

// The same in every locale: numbers with a decimal point, dates the American way. A VT_BSTR ends at its first
// NUL. A failure leaves `text` unchanged: E_INVALIDARG for wide text or a date that does not exist,
// DISP_E_TYPEMISMATCH for a type that has no text, DISP_E_BADVARTYPE for one that is not known.
HRESULT variant_text(const VARIANT& value, std::string& text);

}  // namespace orx::platform
