// Comparisons of coordinates, and calls with missing arguments.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <tuple>

namespace orx::testing {

// Compares bits, so that 0 and -0 differ. All NaNs are equal.
inline bool same(const double* a, const double* b, std::size_t count) {
  return std::equal(a, a + count, b, [](double x, double y) {
    return (std::isnan(x) && std::isnan(y)) ||
           std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
  });
}

// Calls the function once for each pointer, with null instead of it.
template <class Function, class... Pointers>
void expect_refuses_each_null(int refusal, Function* function, Pointers... pointers) {
  for (std::size_t null = 0; null < sizeof...(pointers); ++null) {
    auto argument = [null, i = 0U](auto pointer) mutable { return i++ == null ? nullptr : pointer; };
    const std::tuple<Pointers...> arguments{argument(pointers)...};
    EXPECT_EQ(std::apply(function, arguments), refusal) << "null as argument " << null;
  }
}

}  // namespace orx::testing
