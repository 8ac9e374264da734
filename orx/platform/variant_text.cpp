#include <orx/platform/variant_text.h>

#include <orx/base/ascii.h>
#include <orx/base/calendar.h>
#include <orx/base/utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cwchar>

namespace orx::platform {

namespace {

template <class Integer>
std::string integer_text(Integer value) {
  char digits[24];
  return {digits, std::to_chars(digits, std::end(digits), value).ptr};
}

std::string real_text(double value, int significant_digits) {
  if (std::isnan(value)) return "NAN";
  if (value == 0) return "0";  // also for a negative zero
  char digits[32];
  char* end =
      std::to_chars(digits, std::end(digits), value, std::chars_format::general, significant_digits).ptr;
  std::string text(digits, end);
  for (char& c : text) c = to_upper(c);  // E, INF
  return text;
}

std::string currency_text(std::int64_t ten_thousandths) {
  const lldiv_t amount = std::lldiv(ten_thousandths, 10000);
  char digits[32];
  const int length = std::snprintf(digits, sizeof digits, "%s%lld.%04lld", ten_thousandths < 0 ? "-" : "",
                                   std::llabs(amount.quot), std::llabs(amount.rem));
  std::string text(digits, static_cast<std::size_t>(length));
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text;
}

// Writes date and time, rounded to whole seconds as Windows rounds them. The time is left out at midnight,
// and the date on day 0. Day 0 at midnight is written as a time.
HRESULT date_text(double date, std::string& text) {
  calendar::Fields fields;
  if (!calendar::to_fields(date, fields)) return E_INVALIDARG;
  constexpr calendar::Fields kDayZero;
  const bool is_day_zero =
      fields.year == kDayZero.year && fields.month == kDayZero.month && fields.day == kDayZero.day;
  const bool has_date = !is_day_zero;
  const bool has_time = fields.hour != 0 || fields.minute != 0 || fields.second != 0;
  char part[48];
  text.clear();
  if (has_date) {
    std::snprintf(part, sizeof part, "%d/%d/%04d", fields.month, fields.day, fields.year);
    text = part;
  }
  if (has_time || !has_date) {
    const int hour = fields.hour % 12 == 0 ? 12 : fields.hour % 12;
    std::snprintf(part, sizeof part, "%s%d:%02d:%02d %s", has_date ? " " : "", hour, fields.minute,
                  fields.second, fields.hour < 12 ? "AM" : "PM");
    text += part;
  }
  return S_OK;
}

HRESULT wide_text(BSTR value, std::string& text) {
  const wchar_t* wide = value != nullptr ? value : L"";
  return utf8::from_wide(wide, text) ? S_OK : E_INVALIDARG;
}

HRESULT store(std::string converted, std::string& text) {
  text = std::move(converted);
  return S_OK;
}

// The result for a type that has no text.
HRESULT error_for_type(VARTYPE type) {
  switch (type) {
    case VT_NULL:
    case VT_ERROR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
    case VT_VARIANT:
    case VT_RECORD:
      return DISP_E_TYPEMISMATCH;
    default:
      return DISP_E_BADVARTYPE;
  }
}

}  // namespace

HRESULT variant_text(const VARIANT& value, std::string& text) {
  constexpr int kSingleDigits = 7;
  constexpr int kDoubleDigits = 15;
  if ((value.vt & (VT_ARRAY | VT_BYREF)) != 0) return DISP_E_TYPEMISMATCH;
  switch (value.vt) {
    case VT_EMPTY:
      return store("", text);
    case VT_I1:
      return store(integer_text<int>(value.cVal), text);
    case VT_UI1:
      return store(integer_text<int>(value.bVal), text);
    case VT_I2:
      return store(integer_text(value.iVal), text);
    case VT_UI2:
      return store(integer_text(value.uiVal), text);
    case VT_I4:
      return store(integer_text(value.lVal), text);
    case VT_UI4:
      return store(integer_text(value.ulVal), text);
    case VT_I8:
      return store(integer_text(value.llVal), text);
    case VT_UI8:
      return store(integer_text(value.ullVal), text);
    case VT_INT:
      return store(integer_text(value.intVal), text);
    case VT_UINT:
      return store(integer_text(value.uintVal), text);
    case VT_BOOL:
      return store(integer_text(value.boolVal), text);
    case VT_R4:
      return store(real_text(static_cast<double>(value.fltVal), kSingleDigits), text);
    case VT_R8:
      return store(real_text(value.dblVal, kDoubleDigits), text);
    case VT_CY:
      return store(currency_text(value.llVal), text);
    case VT_DATE:
      return date_text(value.date, text);
    case VT_BSTR:
      return wide_text(value.bstrVal, text);
    default:
      return error_for_type(value.vt);
  }
}

}  // namespace orx::platform
