// Converts a variant to the text of an attribute.
#pragma once

#include <orx/compat/variant.h>

#include <string>

namespace orx::platform {

// Gives the same text in every locale, with a decimal point in numbers and dates like "2/28/2024 1:05:00 PM".
// A VT_BSTR ends at its first NUL. A failure leaves `text` unchanged: E_INVALIDARG for invalid wide text or a
// date out of range, DISP_E_TYPEMISMATCH for a type without a text form, DISP_E_BADVARTYPE for an unknown
// type. Raises std::bad_alloc.
HRESULT variant_text(const VARIANT& value, std::string& text);

}  // namespace orx::platform
