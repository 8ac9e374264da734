// Linked with --wrap=malloc, so that the library calls __wrap_malloc instead of malloc.
#include <orx/text/token_parser.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstddef>

namespace {

int allocations_left = INT_MAX;

}  // namespace

extern "C" void* __real_malloc(std::size_t size);

extern "C" void* __wrap_malloc(std::size_t size) {
  if (allocations_left-- > 0) return __real_malloc(size);
  errno = ENOMEM;
  return nullptr;
}

namespace {

TEST(TokenParser, OutOfMemoryGivesNoTokens) {
  errno = 0;
  for (const int allocations : {0, 1, 2, 3}) {
    int count = 7;
    allocations_left = allocations;
    char** const tokens = orx_token_parser("a:b:c", ":", &count);
    allocations_left = INT_MAX;
    EXPECT_EQ(tokens, nullptr);
    EXPECT_EQ(count, 0);
  }
  EXPECT_EQ(errno, 0);
}

}  // namespace
