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

constexpr const char* kInstallKey = ORX_PRODUCT_KEY "\\INSTALL_PARAMETERS";
constexpr DWORD kConfiguredCapacity = ORX_APPLICATION_DATA_PATH_SIZE - 1;  // a longer value is ignored

// Several threads may look for the folder at once. The first of them that finds it without a failure stores
// it, and all later calls return it. Only kStored makes stored_folder readable, and then it never changes. It
// is a plain array without a destructor, because threads may still write to a log while the process ends.
enum State { kUnknown, kStoring, kStored };
constinit std::atomic<State> state = kUnknown;
constinit orx::ApplicationDataFolder stored_folder = "";

void store_folder(const std::string& folder) {
  State expected = kUnknown;
  if (!state.compare_exchange_strong(expected, kStoring)) return;
  std::memcpy(stored_folder, folder.c_str(), folder.size() + 1);
  state = kStored;
}

// A value that is too long counts as missing.
LSTATUS read_configured_folder(std::string& folder) {
  orx::platform::RegistryKey key;
  char value[kConfiguredCapacity + 1] = "";
  LSTATUS status = key.Open(HKEY_LOCAL_MACHINE, kInstallKey, KEY_READ);
  if (status == ERROR_SUCCESS) status = key.Query("ConfigFolder", value, kConfiguredCapacity);
  if (status == ERROR_SUCCESS) folder = value;
  return status == ERROR_MORE_DATA ? LSTATUS{ERROR_FILE_NOT_FOUND} : status;
}

// Returns the folder below the one that PUBLIC names, with its levels created. Empty when PUBLIC is not set
// or is too long.
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

// Finds the folder and creates it. Returns false when the machine's registry could not be read: a later call
// may succeed.
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
    if (state != kStored && find_folder(found) && !found.empty()) store_folder(found);
    // Another thread may have stored a folder first. Then that one counts.
    const char* const result = state == kStored ? stored_folder : found.c_str();
    std::memcpy(folder, result, std::strlen(result) + 1);
  } catch (const std::exception&) {
    // Not catch (...): that would stop the unwinding of a thread that is cancelled, which ends the process.
  }
  return state == kStored;
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
