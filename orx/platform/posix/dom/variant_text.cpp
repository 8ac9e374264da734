#include <orx/platform/posix/dom/variant_text.h>

#include <orx/platform/posix/support/utf8.h>

#include <algorithm>
#include <charconv>
#include <chrono>
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
  if (value == 0) return "0";  // a zero has no sign
  char digits[32];
  char* end =
      std::to_chars(digits, std::end(digits), value, std::chars_format::general, significant_digits).ptr;
  std::string text(digits, end);
  for (char& c : text) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);  // E, INF
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

// Whole days count from 1899-12-30 either way, their fraction always forward. Of a date and a time, the one
// that is zero is left out.
HRESULT date_text(double date, std::string& text) {
  using namespace std::chrono;
  constexpr double kBeforeYear100 = -657435;
  constexpr double kAfterYear9999 = 2958466;
  constexpr long kSecondsOfDay = 86400;
  constexpr double kGuard = 1e-11;  // an encoded half second goes up
  if (!(date > kBeforeYear100 && date < kAfterYear9999)) return E_INVALIDARG;
  const double whole = std::trunc(date);
  const auto second_of_day =
      static_cast<long>(std::floor((std::fabs(date - whole) + kGuard) * kSecondsOfDay + 0.5));
  const sys_days zero{1899y / December / 30};
  const sys_days day = zero + days{std::lround(whole) + second_of_day / kSecondsOfDay};
  const year_month_day ymd{day};
  if (ymd.year() > 9999y) return E_INVALIDARG;
  const hh_mm_ss time{seconds{second_of_day % kSecondsOfDay}};

  char parts[48];
  std::string written;
  if (day != zero) {
    std::snprintf(parts, sizeof parts, "%u/%u/%04d", static_cast<unsigned>(ymd.month()),
                  static_cast<unsigned>(ymd.day()), static_cast<int>(ymd.year()));
    written = parts;
  }
  if (day == zero || time.to_duration() != 0s) {
    std::snprintf(parts, sizeof parts, "%s%ld:%02ld:%02ld %s", written.empty() ? "" : " ",
                  make12(time.hours()).count(), time.minutes().count(), time.seconds().count(),
                  is_am(time.hours()) ? "AM" : "PM");
    written += parts;
  }
  text = std::move(written);
  return S_OK;
}

HRESULT wide_text(BSTR value, std::string& text) {
  const wchar_t* wide = value != nullptr ? value : L"";
  return utf8::from_wide(wide, std::wcslen(wide), text) ? S_OK : E_INVALIDARG;
}

HRESULT accept(std::string made, std::string& text) {
  text = std::move(made);
  return S_OK;
}

}  // namespace

HRESULT variant_text(const VARIANT& value, std::string& text) {
  constexpr int kSingleDigits = 7;
  constexpr int kDoubleDigits = 15;
  if ((value.vt & (VT_ARRAY | VT_BYREF)) != 0) return DISP_E_TYPEMISMATCH;
  switch (value.vt) {
    case VT_EMPTY:
      return accept("", text);
    case VT_I1:
      return accept(integer_text<int>(value.cVal), text);
    case VT_UI1:
      return accept(integer_text<int>(value.bVal), text);
    case VT_I2:
      return accept(integer_text(value.iVal), text);
    case VT_UI2:
      return accept(integer_text(value.uiVal), text);
    case VT_I4:
      return accept(integer_text(value.lVal), text);
    case VT_UI4:
      return accept(integer_text(value.ulVal), text);
    case VT_I8:
      return accept(integer_text(value.llVal), text);
    case VT_UI8:
      return accept(integer_text(value.ullVal), text);
    case VT_INT:
      return accept(integer_text(value.intVal), text);
    case VT_UINT:
      return accept(integer_text(value.uintVal), text);
    case VT_BOOL:
      return accept(integer_text(value.boolVal), text);
    case VT_R4:
      return accept(real_text(static_cast<double>(value.fltVal), kSingleDigits), text);
    case VT_R8:
      return accept(real_text(value.dblVal, kDoubleDigits), text);
    case VT_CY:
      return accept(currency_text(value.llVal), text);
    case VT_DATE:
      return date_text(value.date, text);
    case VT_BSTR:
      return wide_text(value.bstrVal, text);
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

}  // namespace orx::platform
