#include <orx/platform/posix/environment.h>

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

namespace orx::platform {
namespace {

std::string home_of_user() {
  std::vector<char> buffer(1024);
  passwd entry;
  passwd* found = nullptr;
  while (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

}  // namespace

std::string variable(const char* name) {
  const char* value = secure_getenv(name);
  return value != nullptr ? value : "";
}

std::string user_folder(const char* xdg_variable, const char* below_home) {
  if (std::string folder = variable(xdg_variable); folder.starts_with('/')) return folder;
  std::string home = variable("HOME");
  if (home.empty()) home = home_of_user();
  return home.empty() ? home : home + '/' + below_home;
}

}  // namespace orx::platform
