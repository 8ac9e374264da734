#include <orx/compat/variant.h>

#include <gtest/gtest.h>

#include <string>

namespace {

BSTR with_nul() { return SysAllocStringLen(L"a\0b", 3); }

std::wstring characters(BSTR text) { return {text, SysStringLen(text)}; }

TEST(Bstr, KeepsItsLength) {
  const BSTR text = with_nul();
  EXPECT_EQ(characters(text), std::wstring(L"a\0b", 3));
  EXPECT_EQ(SysStringByteLen(text), 3 * sizeof(wchar_t));
  const BSTR cut = SysAllocString(text);
  EXPECT_EQ(SysStringLen(cut) + SysStringLen(nullptr), 1U);
  SysFreeString(cut);
  SysFreeString(text);
  EXPECT_TRUE(SysAllocString(nullptr) == nullptr && SysAllocStringLen(nullptr, 0xFFFFFFFFU) == nullptr);
}

TEST(Variant, CopyHasItsOwnText) {
  VARIANT source{}, target{};
  source.vt = target.vt = VT_BSTR;
  source.bstrVal = with_nul();
  target.bstrVal = SysAllocString(L"old");
  EXPECT_EQ(VariantCopy(&target, &source), S_OK);
  EXPECT_EQ(VariantCopy(&source, &source), S_OK);
  EXPECT_EQ(VariantClear(&source), S_OK);
  EXPECT_EQ(characters(target.bstrVal), std::wstring(L"a\0b", 3));
  VARIANT borrowed = target;
  borrowed.vt = VT_BSTR | VT_BYREF;
  EXPECT_EQ(VariantClear(&borrowed), S_OK);
  EXPECT_EQ(VariantClear(&target), S_OK);
  EXPECT_EQ(VariantCopy(&target, nullptr), E_INVALIDARG);
}

}  // namespace
