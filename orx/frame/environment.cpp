#include <orx/frame/environment.h>

#include <orx/platform/environment.h>

#include <new>

void orx_environment_changed() {
  try {
    orx::platform::read_environment();
  } catch (const std::bad_alloc&) {
  }
}
