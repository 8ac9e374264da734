// CAtlStringArray: the growable array of strings that crosses the library's boundary.
#pragma once

#include <orx/compat/atl_array.h>
#include <orx/compat/export.h>
#include <orx/compat/string_a.h>

#include <cstdint>

class ORX_API CAtlStringArray {
 public:
  CAtlStringArray();
  ~CAtlStringArray();
  CAtlStringArray(const CAtlStringArray&) = delete;
  CAtlStringArray& operator=(const CAtlStringArray&) = delete;

  // The index of the new element. Raises CAtlException with E_OUTOFMEMORY when the block cannot grow.
  std::uint64_t Add(CStringA s);

  // Raises CAtlException with E_INVALIDARG for an index that is not below the size. Valid until the array is
  // changed.
  CStringA& ElementAt(std::uint64_t i);

  std::uint64_t GetSize() const;

  // New elements are empty, surplus ones are destroyed, 0 frees the block. A block that cannot grow stays as
  // it is.
  void SetSize(std::uint64_t n);

 private:
  CAtlArray<CStringA> strings_;
};
