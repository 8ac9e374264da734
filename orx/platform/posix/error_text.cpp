#include <orx/platform/posix/error_text.h>

#include <cstring>

namespace orx::platform {

std::string error_text(int error) {
  const char* text = strerrordesc_np(error);
  return text != nullptr ? text : "System error " + std::to_string(error);
}

}  // namespace orx::platform
