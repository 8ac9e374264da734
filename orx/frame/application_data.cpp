#include <orx/frame/application_data.h>

#include <orx/platform/file_system.h>
#include <orx/platform/kept_errno.h>
#include <orx/platform/paths.h>
#include <orx/platform/registry_key.h>
#include <orx/text/strings.h>

#include <atomic>
#include <exception>
#include <string>

namespace {

constexpr const char* kInstallKey = "SOFTWARE\\Halvark Software\\TESSEL\\6.9.1\\INSTALL_PARAMETERS";
constexpr DWORD kConfiguredCapacity = 260;  // a longer value counts as none

// The folder once it is found. Each log may look for it on its own thread; who comes second keeps to what the
// first one found.
constinit std::atomic<const CStringA*> found_folder = nullptr;

// Frees it when the library goes. What still calls then, a static of the host, say, finds it once more.
const struct Unloading {
  ~Unloading() { delete found_folder.exchange(nullptr); }
} unloading;

bool read_configured(CStringA& folder) {
  orx::platform::RegistryKey key;
  if (key.Open(HKEY_LOCAL_MACHINE, kInstallKey, KEY_READ) != ERROR_SUCCESS) return false;
  char value[kConfiguredCapacity + 1] = "";
  if (key.Query("ConfigFolder", value, kConfiguredCapacity) != ERROR_SUCCESS) return false;
  folder = value;
  return true;
}

CStringA folder_below(const std::string& shared) {
  CStringA folder = shared.c_str();
  for (const char* level : {"\\Halvark", "\\TESSEL"}) {
    folder += level;
    orx::platform::create_folder(folder);
  }
  return folder + "\\6.9.1\\";
}

CStringA look_for_folder() {
  CStringA folder;
  if (!read_configured(folder)) {
    const std::string shared = orx::platform::public_folder();
    if (!shared.empty()) folder = folder_below(shared);
  }
  if (!folder.IsEmpty()) orx::platform::create_folder(folder);
  return folder;
}

CStringA application_data_folder() {
  if (const CStringA* found = found_folder) return *found;
  const CStringA folder = look_for_folder();
  if (folder.IsEmpty()) return folder;
  const auto* mine = new CStringA(folder);
  const CStringA* first = nullptr;
  if (found_folder.compare_exchange_strong(first, mine)) return folder;
  delete mine;
  return *first;
}

}  // namespace

void GetApplicationDataPath(char* buffer, int size) {
  if (buffer == nullptr || size < 0) return;
  CStringA path;
  GetApplicationDataPathString(path);
  ORX_strncpy(buffer, path, static_cast<std::size_t>(size));
}

void GetApplicationDataPathString(CStringA& path) {
  const orx::platform::KeptErrno kept;
  path.Empty();
  try {
    path = application_data_folder();
  } catch (const CAtlException&) {
  } catch (const std::exception&) {  // by name: a thread that is cancelled unwinds through here
  }
}
