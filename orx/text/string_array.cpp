#include <orx/text/string_array.h>

CAtlStringArray::CAtlStringArray() = default;

CAtlStringArray::~CAtlStringArray() = default;

std::uint64_t CAtlStringArray::Add(CStringA s) { return strings_.Add(std::move(s)); }

CStringA& CAtlStringArray::ElementAt(std::uint64_t i) { return strings_.GetAt(i); }

std::uint64_t CAtlStringArray::GetSize() const { return strings_.GetCount(); }

void CAtlStringArray::SetSize(std::uint64_t n) { strings_.SetCount(n); }
