#include <orx/platform/clock.h>

namespace orx::platform {
namespace {

Clock current_clock = system_local_time;

}  // namespace

LocalTime local_time() { return current_clock(); }

void replace_clock(Clock clock) { current_clock = clock != nullptr ? clock : system_local_time; }

}  // namespace orx::platform
