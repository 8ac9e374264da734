// CAtlStringArray: a growable array of strings, as an exported class.
//
// The array owns its strings. It cannot be copied. Different threads may use different arrays.
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

  // Appends a string and returns its index. Raises CAtlException with E_OUTOFMEMORY when memory runs out.
  std::uint64_t Add(CStringA s);

  // Returns the string at index `i`; the reference is valid until the array changes. Raises CAtlException
  // with E_INVALIDARG for an index that is not below the size.
  CStringA& ElementAt(std::uint64_t i);

  // Returns the number of strings.
  std::uint64_t GetSize() const;

  // Sets the number of strings. New strings are empty, surplus strings are destroyed, and 0 frees the memory.
  // When memory runs out, the array stays as it is and nothing is reported.
  void SetSize(std::uint64_t n);

 private:
  CAtlArray<CStringA> strings_;
};
