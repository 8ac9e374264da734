// Roots of the registry that belong to one test.
#pragma once

#include <orx/compat/hkey.h>

#include <gtest/gtest.h>
#include <tests/support/environment.h>

#include <string>
#include <vector>

namespace orx::testing {

class RegistryTest : public ::testing::Test {
 protected:
  ~RegistryTest() override {
    for (const HKEY key : opened_) RegCloseKey(key);
  }

  // Creates or opens a key, and closes it after the test. Null when that fails.
  HKEY Made(const std::string& path, HKEY from = HKEY_CURRENT_USER, REGSAM access = KEY_ALL_ACCESS) {
    HKEY key = nullptr;
    RegCreateKeyExA(from, path.c_str(), 0, nullptr, 0, access, nullptr, &key, nullptr);
    if (key != nullptr) opened_.push_back(key);
    return key;
  }

  TempFolder folder_;
  ScopedVariable user_{"ORX_USER_REGISTRY", folder_.path("config/user.db").c_str()};
  ScopedVariable machine_{"ORX_MACHINE_REGISTRY", folder_.path("etc/machine.db").c_str()};
  std::vector<HKEY> opened_;
};

using Names = std::vector<std::string>;

// All names that one of the two listing functions lists.
template <class List>
Names names(HKEY key, List list) {
  Names found;
  for (DWORD index = 0;; ++index) {
    char name[1024];
    DWORD size = sizeof name;
    if (list(key, index, name, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) return found;
    found.emplace_back(name, size);
  }
}

inline Names sub_keys(HKEY key) { return names(key, RegEnumKeyExA); }
inline Names values(HKEY key) { return names(key, RegEnumValueA); }

}  // namespace orx::testing
