#include <orx/platform/posix/support/error_text.h>

#include <cerrno>
#include <cstring>

namespace orx::platform {

std::string error_text(int error) {
  if (error == ENOTUNIQ) return "Two names differ only in letter case";  // see find_in_any_case
  const char* text = strerrordesc_np(error);
  return text != nullptr ? text : "System error " + std::to_string(error);
}

}  // namespace orx::platform
