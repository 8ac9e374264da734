#include <orx/platform/stack.h>

#include <orx/base/compiler.h>
#include <orx/base/errno_guard.h>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>

namespace orx::platform {
namespace {

// The addresses from `lowest` up to, but not including, `end`. Stacks grow down, from `end` to `lowest`.
struct Stack {
  std::uintptr_t lowest = 0;
  std::uintptr_t end = 0;  // 0: unknown
};

Stack measure_stack() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};
  void* usable = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;  // the guard pages are below `usable` and not part of `size`
  pthread_attr_getstack(&attributes, &usable, &size);
  pthread_attr_getguardsize(&attributes, &guard);
  pthread_attr_destroy(&attributes);
  const auto address = reinterpret_cast<std::uintptr_t>(usable);
  return {address - guard, address + size};
}

rlim_t current_limit() {
  rlimit limit{};
  getrlimit(RLIMIT_STACK, &limit);
  return limit.rlim_cur;
}

// The stack of the calling thread. It is measured once for each thread, because for the first thread the C
// library reads all mappings of the process. The first thread's stack grows as far as the current limit
// allows, so a new limit makes this function measure again. The size of any other stack is fixed, also in a
// child process that such a thread has forked.
const Stack& current_stack() {
  thread_local Stack stack;
  thread_local rlim_t limit = 0;
  thread_local const bool grows = gettid() == getpid();
  const rlim_t limit_now = grows ? current_limit() : limit;
  if (stack.end == 0 || limit != limit_now) {
    stack = measure_stack();
    limit = limit_now;
  }
  return stack;
}

}  // namespace

std::size_t stack_left() {
  const ErrnoGuard errno_guard;
  const Stack& stack = current_stack();
  // The address of a local variable would be wrong: the address sanitizer may keep local variables outside
  // the stack.
  const auto here = reinterpret_cast<std::uintptr_t>(frame_address());
  return here >= stack.lowest && here < stack.end ? here - stack.lowest : 0;
}

}  // namespace orx::platform
