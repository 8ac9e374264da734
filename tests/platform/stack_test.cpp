#include <orx/platform/stack.h>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <tests/support/process.h>

#include <vector>

using orx::platform::stack_left;
using orx::testing::in_new_process;

namespace {

constexpr std::size_t kFrame = 10'000;
constexpr std::size_t kMiB = 1 << 20;

// Returns what is left after `depth` calls.
[[gnu::noinline]] std::size_t left_at(int depth) {
  volatile char frame[kFrame] = {};
  return depth == 0 ? stack_left() : left_at(depth - 1) + static_cast<std::size_t>(frame[depth]);
}

std::size_t expect_between(std::size_t smallest, std::size_t largest) {
  errno = 77;
  const std::size_t left = stack_left();
  const std::size_t used = left - left_at(20);
  EXPECT_TRUE(left >= smallest && left <= largest) << left;
  EXPECT_TRUE(used > 20 * kFrame && used < 40 * kFrame) << used;
  EXPECT_EQ(errno, 77);
  return left;
}

TEST(Stack, OfFirstThreadFollowsLimit) {
  const auto run = [] {
    rlimit limit{};
    getrlimit(RLIMIT_STACK, &limit);
    std::vector<std::size_t> left;
    for (const std::size_t size : {4 * kMiB, 3 * kMiB, std::size_t{RLIM_INFINITY}}) {
      limit.rlim_cur = std::min(size, limit.rlim_max);
      ASSERT_EQ(setrlimit(RLIMIT_STACK, &limit), 0);
      left.push_back(expect_between(std::min(limit.rlim_cur - kMiB, 64 * kMiB), limit.rlim_cur));
    }
    EXPECT_EQ(left[0] - left[1], kMiB);
  };
  in_new_process(run, _exit);
}

TEST(Stack, OfOtherThreadHasItsOwnSize) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 2 * kMiB);
  pthread_attr_setguardsize(&attributes, kMiB);
  const auto run = [](void*) -> void* {
    // The lower bound includes some of the guard pages, because a sanitizer keeps data at the end of the
    // stack. A child process asks before and after its parent has asked.
    const auto expect_size = [] { expect_between(2 * kMiB + 1, 3 * kMiB); };
    in_new_process(expect_size, _exit);
    expect_size();
    in_new_process(expect_size, _exit);
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, nullptr), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace
