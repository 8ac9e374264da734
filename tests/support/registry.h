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
  TempFolder folder_;
  ScopedVariable user_{"ORX_USER_REGISTRY", folder_.path("config/user.db").c_str()};
  ScopedVariable machine_{"ORX_MACHINE_REGISTRY", folder_.path("etc/machine.db").c_str()};
};

// Of the sub-keys, or of the values, in their order.
template <class List>
std::vector<std::string> names(HKEY key, List list) {
  std::vector<std::string> found;
  for (DWORD index = 0;; ++index) {
    char name[300];
    DWORD size = sizeof name;
    if (list(key, index, name, &size) != ERROR_SUCCESS) return found;
    found.emplace_back(name, size);
  }
}

inline std::vector<std::string> sub_keys(HKEY key) {
  return names(key, [](HKEY parent, DWORD index, char* name, DWORD* size) {
    return RegEnumKeyExA(parent, index, name, size, nullptr, nullptr, nullptr, nullptr);
  });
}

inline std::vector<std::string> values(HKEY key) {
  return names(key, [](HKEY parent, DWORD index, char* name, DWORD* size) {
    return RegEnumValueA(parent, index, name, size, nullptr, nullptr, nullptr, nullptr);
  });
}

}  // namespace orx::testing
