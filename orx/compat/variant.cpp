#include <orx/compat/variant.h>

void VariantInit(VARIANT* value) {
  if (value != nullptr) *value = VARIANT{};
}

HRESULT VariantClear(VARIANT* value) {
  if (value == nullptr) return E_INVALIDARG;
  if (value->vt == VT_BSTR) SysFreeString(value->bstrVal);
  VariantInit(value);
  return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
  if (target == nullptr || source == nullptr) return E_INVALIDARG;
  if (target == source) return S_OK;
  VariantClear(target);
  VARIANT copy = *source;
  if (copy.vt == VT_BSTR && copy.bstrVal != nullptr) {
    copy.bstrVal = SysAllocStringLen(copy.bstrVal, SysStringLen(copy.bstrVal));
    if (copy.bstrVal == nullptr) return E_OUTOFMEMORY;
  }
  *target = copy;
  return S_OK;
}
