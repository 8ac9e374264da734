// What a process does only once, tested in a process of its own.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace orx::testing {

// Failures of the body are failures of the test; what else it changes goes with its process.
template <class Body>
void in_new_process(Body body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    body();
    std::exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "in a process of its own";
}

}  // namespace orx::testing
