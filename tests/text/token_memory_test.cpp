// Linked with --wrap=malloc, so that the library calls __wrap_malloc instead of malloc.
#include <orx/text/token_parser.h>

#include <gtest/gtest.h>
#include <tests/support/failing_memory.h>

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
  return orx::testing::may_allocate() ? __real_malloc(size) : nullptr;
}

TEST(TokenParser, OutOfMemoryGivesNoTokens) {
  for (const int allocations : {0, 1, 2, 3}) {
    int count = 7;
    const auto parse = [&] { return orx_token_parser("a:b:c", ":", &count); };
    EXPECT_EQ(orx::testing::without_memory(parse, allocations), nullptr);
    EXPECT_EQ(count, 0);
  }
}
