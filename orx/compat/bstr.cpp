#include <orx/compat/bstr.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>

namespace {

// The layout of a block: the length in bytes, the characters, a NUL. A BSTR points to the characters.
using ByteCount = std::uint32_t;

static_assert(sizeof(ByteCount) % alignof(OLECHAR) == 0, "the characters follow the length without a gap");

}  // namespace

BSTR SysAllocString(const OLECHAR* text) {
  if (text == nullptr) return nullptr;
  const std::size_t length = std::wcslen(text);
  if (length > std::numeric_limits<UINT>::max()) return nullptr;
  return SysAllocStringLen(text, static_cast<UINT>(length));
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
  if (bytes > std::numeric_limits<ByteCount>::max()) return nullptr;
  void* block = std::malloc(sizeof(ByteCount) + bytes + sizeof(OLECHAR));
  if (block == nullptr) return nullptr;
  auto* count = static_cast<ByteCount*>(block);
  *count = static_cast<ByteCount>(bytes);
  const BSTR copy = reinterpret_cast<BSTR>(count + 1);
  if (text != nullptr) std::memcpy(copy, text, bytes);
  copy[length] = L'\0';
  return copy;
}

UINT SysStringLen(BSTR text) { return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR)); }

UINT SysStringByteLen(BSTR text) {
  return text != nullptr ? reinterpret_cast<const ByteCount*>(text)[-1] : 0;
}

void SysFreeString(BSTR text) {
  if (text != nullptr) std::free(reinterpret_cast<ByteCount*>(text) - 1);
}
