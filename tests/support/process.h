// Runs part of a test in a process of its own, for effects that a process has only once.
#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace orx::testing {

// Starts a process that runs the body. It fails if a check of the body fails.
template <class Body>
pid_t start_process(Body body, void (*end)(int) = std::exit) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    body();
    end(::testing::Test::HasFailure() ? 1 : 0);
  }
  return child;
}

inline void expect_success(pid_t child) {
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "in a process of its own";
}

template <class Body>
void in_new_process(Body body, void (*end)(int) = std::exit) {
  expect_success(start_process(body, end));
}

// Runs the body as a user without privileges. The process ends with _exit, because the leak check of exit
// needs privileges.
template <class Body>
void as_nobody(Body body) {
  const auto run = [&] {
    EXPECT_TRUE(geteuid() != 0 || (setgroups(0, nullptr) | setgid(65534) | setuid(65534)) == 0);
    body();
  };
  in_new_process(run, _exit);
}

// On a thread that is cancelled before the call, and ends after it.
template <class Call>
void on_cancelled_thread(Call call) {
  const auto run = [](void* context) -> void* {
    pthread_cancel(pthread_self());
    (*static_cast<Call*>(context))();
    pthread_testcancel();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, nullptr, run, &call), 0);
  void* result = nullptr;
  pthread_join(thread, &result);
  EXPECT_EQ(result, PTHREAD_CANCELED);
}

}  // namespace orx::testing
