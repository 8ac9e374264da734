#include <orx/platform/clock.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/posix/support/cancellation_block.h>

#include <time.h>

#include <algorithm>

namespace orx::platform {

LocalTime system_local_time() {
  const ErrnoGuard errno_guard;
  // localtime_r may read the time zone's file while it holds a lock of the C library.
  const CancellationBlock cancellation_block;
  const time_t now = time(nullptr);
  tm local{};
  if (localtime_r(&now, &local) == nullptr) return {};
  const int second = std::min(local.tm_sec, 59);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, second};
}

}  // namespace orx::platform
