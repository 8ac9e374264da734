#include <orx/platform/stack.h>

#include <orx/base/compiler.h>
#include <orx/base/errno_guard.h>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>

namespace orx::platform {
namespace {

struct Stack {
  std::uintptr_t lowest = 0;
  std::uintptr_t end = 0;  // 0: not known
};

Stack measure_stack() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};
  void* usable = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;  // below, and not in the size
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

// Measured once a thread, since it takes the first thread the reading of all the mappings of the process.
// That thread's stack grows as far as the limit allows at the time; the others' are what they are, in a child
// that one of them has forked too.
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
  // No local's address: the address sanitizer may keep locals elsewhere.
  const auto here = reinterpret_cast<std::uintptr_t>(frame_address());
  return here >= stack.lowest && here < stack.end ? here - stack.lowest : 0;
}

}  // namespace orx::platform
