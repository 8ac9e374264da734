#include <orx/platform/registry_key.h>

#include <utility>

namespace orx::platform {

LSTATUS RegistryKey::Open(HKEY parent, const char* path, REGSAM access) {
  HKEY opened = nullptr;
  const LSTATUS status = RegOpenKeyExA(parent, path, 0, access, &opened);
  Close();
  key_ = opened;
  return status;
}

LSTATUS RegistryKey::Create(HKEY parent, const char* path, bool* is_new) {
  HKEY opened = nullptr;
  DWORD disposition = 0;
  const LSTATUS status =
      RegCreateKeyExA(parent, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &opened, &disposition);
  Close();
  key_ = opened;
  if (is_new != nullptr) *is_new = disposition == REG_CREATED_NEW_KEY;
  return status;
}

LSTATUS RegistryKey::Query(const char* name, void* data, DWORD capacity) const {
  return RegQueryValueExA(key_, name, nullptr, nullptr, static_cast<BYTE*>(data), &capacity);
}

bool RegistryKey::HasValue(const char* name) const {
  DWORD size = 0;
  const LSTATUS status = RegQueryValueExA(key_, name, nullptr, nullptr, nullptr, &size);
  return status == ERROR_SUCCESS || status == ERROR_MORE_DATA;
}

LSTATUS RegistryKey::Set(const char* name, DWORD type, const void* data, DWORD size) const {
  return RegSetValueExA(key_, name, 0, type, static_cast<const BYTE*>(data), size);
}

HKEY RegistryKey::Release() { return std::exchange(key_, nullptr); }

void RegistryKey::Close() {
  if (key_ != nullptr) RegCloseKey(Release());
}

}  // namespace orx::platform
