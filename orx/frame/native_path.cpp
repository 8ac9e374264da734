#include <orx/frame/native_path.h>

#include <orx/platform/paths.h>

#include <cstring>
#include <exception>
#include <string>

namespace {

// Converts a path by one of the functions of platform/paths.h. `out` is written last, because it may be the
// buffer of `path`. An empty result of a path that is not empty is a failure.
int convert(std::string (*conversion)(const char*), const char* path, char* out, std::size_t size) {
  if (out == nullptr || size == 0) return -1;
  std::string result;
  try {
    if (path != nullptr) result = conversion(path);
  } catch (const std::exception&) {
  }
  const bool converted = path != nullptr && (!result.empty() || *path == '\0') && result.size() < size;
  if (!converted) result.clear();
  std::memcpy(out, result.c_str(), result.size() + 1);
  return converted ? 0 : -1;
}

}  // namespace

int orx_path_from_native(const char* native, char* out, size_t size) {
  return convert(orx::platform::suite_path, native, out, size);
}

int orx_path_to_native(const char* path, char* out, size_t size) {
  return convert(orx::platform::existing_path, path, out, size);
}
