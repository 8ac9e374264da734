#include <orx/frame/application_data.h>

#include <orx/base/errno_guard.h>
#include <orx/frame/application_data_folder.h>
#include <orx/platform/paths.h>
#include <orx/platform/registry_key.h>
#include <orx/platform/shared_files.h>
#include <orx/settings/registry.h>
#include <orx/text/strings.h>

#include <atomic>
#include <cstring>
#include <exception>
#include <string>

namespace {

constexpr const char* kInstallKey =
    "SOFTWARE\\Halvark Software\\TESSEL\\" ORX_PRODUCT_VERSION "\\INSTALL_PARAMETERS";
constexpr DWORD kConfiguredCapacity = ORX_APPLICATION_DATA_PATH_SIZE - 1;  // a longer value is ignored

// Each log may look for the folder on its own thread. The first answer that no failure has influenced is
// kept. It is never freed, since threads may still write to a log while the process ends.
enum Search { kOpen, kEnding, kDone };
constinit std::atomic<Search> search = kOpen;
constinit orx::ApplicationDataFolder kept_folder = "";

void store_folder(const std::string& folder) {
  Search expected = kOpen;
  if (!search.compare_exchange_strong(expected, kEnding)) return;
  std::memcpy(kept_folder, folder.c_str(), folder.size() + 1);
  search = kDone;
}

LSTATUS read_configured_folder(std::string& folder) {
  orx::platform::RegistryKey key;
  char value[kConfiguredCapacity + 1] = "";
  LSTATUS status = key.Open(HKEY_LOCAL_MACHINE, kInstallKey, KEY_READ);
  if (status == ERROR_SUCCESS) status = key.Query("ConfigFolder", value, kConfiguredCapacity);
  if (status == ERROR_SUCCESS) folder = value;
  return status == ERROR_MORE_DATA ? LSTATUS{ERROR_FILE_NOT_FOUND} : status;
}

// Empty when the variable is not set, or names a folder that is too long.
std::string create_public_subfolder() {
  std::string folder = orx::platform::public_folder();
  constexpr const char* kLevels[] = {"\\Halvark", "\\TESSEL", "\\" ORX_PRODUCT_VERSION "\\"};
  std::size_t length = folder.size();
  for (const char* level : kLevels) length += std::strlen(level);
  if (folder.empty() || length >= ORX_APPLICATION_DATA_PATH_SIZE) return "";
  for (const char* level : kLevels) {
    folder += level;
    orx::platform::create_shared_folder(folder.c_str());
  }
  return folder;
}

// False when the machine's settings could not be read, which may pass.
bool find_folder(std::string& folder) {
  const LSTATUS status = read_configured_folder(folder);
  if (status != ERROR_SUCCESS) {
    folder = create_public_subfolder();
  } else if (!folder.empty()) {
    orx::platform::create_shared_folder(folder.c_str());
  }
  return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

}  // namespace

bool orx::find_application_data_folder(ApplicationDataFolder& folder) {
  const orx::ErrnoGuard errno_guard;
  *folder = '\0';
  try {
    std::string found;
    if (search != kDone && find_folder(found) && !found.empty()) store_folder(found);
    const char* const answer = search == kDone ? kept_folder : found.c_str();
    std::memcpy(folder, answer, std::strlen(answer) + 1);
  } catch (const std::exception&) {  // by name: a thread that is cancelled unwinds through here
  }
  return search == kDone;
}

void GetApplicationDataPath(char* buffer, int size) {
  if (buffer == nullptr || size < 0) return;
  orx::ApplicationDataFolder folder;
  orx::find_application_data_folder(folder);
  ORX_strncpy(buffer, folder, static_cast<std::size_t>(size));
}

void GetApplicationDataPathString(CStringA& path) {
  const orx::ErrnoGuard errno_guard;
  orx::ApplicationDataFolder folder;
  orx::find_application_data_folder(folder);
  path.Empty();
  try {
    path = folder;
  } catch (const CAtlException&) {
  }
}
