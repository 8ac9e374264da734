#include <orx/compat/hkey.h>

#include <gtest/gtest.h>
#include <tests/support/registry.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using orx::testing::sub_keys;
using orx::testing::values;
using Names = std::vector<std::string>;

class RegistryKeyTest : public orx::testing::RegistryTest {
 protected:
  RegistryKeyTest() { key_ = Made("Software\\T"); }
  ~RegistryKeyTest() override {
    for (const HKEY key : opened_) RegCloseKey(key);
  }

  // Null when it cannot be made.
  HKEY Made(const char* path, REGSAM access = KEY_ALL_ACCESS, HKEY from = HKEY_CURRENT_USER) {
    HKEY key = nullptr;
    RegCreateKeyExA(from, path, 0, nullptr, 0, access, nullptr, &key, nullptr);
    if (key != nullptr) opened_.push_back(key);
    return key;
  }

  LSTATUS Open(const char* path, HKEY from = nullptr) {
    HKEY key = HKEY_CURRENT_USER;
    const LSTATUS status = RegOpenKeyExA(from != nullptr ? from : key_, path, 0, KEY_READ, &key);
    EXPECT_EQ(key == nullptr, status != ERROR_SUCCESS) << path;
    if (key != nullptr) opened_.push_back(key);
    return status;
  }

  static LSTATUS Set(HKEY key, const char* name, const char* text = "") {
    return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                          static_cast<DWORD>(std::strlen(text)));
  }

  HKEY key_ = nullptr;
  std::vector<HKEY> opened_;
};

TEST_F(RegistryKeyTest, PathsNameLevels) {
  const struct {
    const char* path;
    LSTATUS status;
    const char* same;  // opens the same key
  } kRows[] = {
      {"A\\B\\C", ERROR_SUCCESS, "a\\b\\c"},
      {"D\\\\\\E", ERROR_SUCCESS, "D\\E\\\\"},
      {"", ERROR_SUCCESS, nullptr},
      {"\\L", ERROR_BAD_PATHNAME, nullptr},
      {"\\", ERROR_BAD_PATHNAME, nullptr},
      {"Ünïcode", ERROR_SUCCESS, "üNÏCODE"},
      {"a/b", ERROR_SUCCESS, "A/B"},
      {" a ", ERROR_SUCCESS, " A "},
      {"\xE9", ERROR_INVALID_PARAMETER, nullptr},
  };
  for (const auto& [path, status, same] : kRows) {
    HKEY key = HKEY_CURRENT_USER;
    DWORD disposition = 0;
    const auto create = [&, path = path] {
      return RegCreateKeyExA(key_, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, &disposition);
    };
    EXPECT_EQ(create(), status) << path;
    EXPECT_EQ(key == nullptr, status != ERROR_SUCCESS) << path;
    if (status != ERROR_SUCCESS) continue;
    EXPECT_EQ(disposition, *path != '\0' ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY) << path;
    EXPECT_EQ(Set(key, path), ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(Open(same), ERROR_SUCCESS) << path;
    EXPECT_EQ(values(opened_.back()), Names{path});
    EXPECT_EQ(create(), ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY) << path;
    RegCloseKey(key);
  }
  EXPECT_EQ(sub_keys(key_), (Names{" a ", "A", "a/b", "D", "Ünïcode"}))
      << "kept as first written, sorted without case";
  EXPECT_EQ(Open("none"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Open("A", HKEY_LOCAL_MACHINE), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Open("\\A", HKEY_LOCAL_MACHINE), ERROR_BAD_PATHNAME) << "also without a file";
  EXPECT_EQ(Open("", HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
}

TEST_F(RegistryKeyTest, QueriesTellSizeAndTypeBeforeTheyGiveBytes) {
  ASSERT_EQ(Set(key_, "x", "abcd"), ERROR_SUCCESS);
  BYTE data[8];
  const struct {
    const char* name;
    bool has_data;
    DWORD room;
    LSTATUS status;
    DWORD size, type;
    const char* data;
  } kRows[] = {
      {"X", true, 8, ERROR_SUCCESS, 4, REG_SZ, "abcd\0##"},
      {"x", true, 4, ERROR_SUCCESS, 4, REG_SZ, "abcd###"},
      {"x", true, 3, ERROR_MORE_DATA, 4, REG_SZ, "#######"},
      {"x", true, 0, ERROR_MORE_DATA, 4, REG_SZ, "#######"},
      {"x", false, 0, ERROR_SUCCESS, 4, REG_SZ, "#######"},
      {"y", true, 8, ERROR_FILE_NOT_FOUND, 8, 0, "#######"},
      {nullptr, true, 8, ERROR_FILE_NOT_FOUND, 8, 0, "#######"},
  };
  for (const auto& row : kRows) {
    DWORD size = row.room, type = 99;
    std::memset(data, '#', sizeof data);
    EXPECT_EQ(RegQueryValueExA(key_, row.name, nullptr, &type, row.has_data ? data : nullptr, &size),
              row.status);
    EXPECT_EQ(size, row.size) << row.room;
    EXPECT_EQ(type, row.type) << row.room;
    EXPECT_EQ(std::memcmp(data, row.data, 7), 0) << row.room;
  }
  EXPECT_EQ(RegQueryValueExA(key_, "x", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExA(key_, "x", nullptr, nullptr, data, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(RegSetValueExA(key_, "x", 0, REG_SZ, nullptr, 1), ERROR_NOACCESS);
  EXPECT_EQ(Set(key_, "X", "new"), ERROR_SUCCESS);
  EXPECT_EQ(values(key_), Names{"x"});
  EXPECT_EQ(Set(key_, "a", "before the one that was listed"), ERROR_SUCCESS);
  EXPECT_EQ(values(key_), (Names{"a", "x"}));
  EXPECT_EQ(RegDeleteValueA(key_, "X"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteValueA(key_, "X"), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryKeyTest, RightsAreThoseOfTheHandle) {
  const HKEY reader = Made("A", KEY_QUERY_VALUE, key_);
  const HKEY writer = Made("A", KEY_WRITE, key_);
  char name[8];
  DWORD size = sizeof name;
  EXPECT_EQ(Set(reader, "x"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteValueA(reader, "x"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegEnumKeyExA(reader, 0, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED);
  EXPECT_EQ(Set(writer, "x"), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExA(writer, "x", nullptr, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegQueryValueExA(reader, "x", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  EXPECT_NE(Made("B", KEY_ALL_ACCESS, reader), nullptr) << "sub-keys are made through any key";
  EXPECT_EQ(RegDeleteKeyA(reader, "B"), ERROR_SUCCESS);
}

TEST_F(RegistryKeyTest, AKeyThatWasDeletedStaysDeleted) {
  const HKEY gone = Made("A", KEY_ALL_ACCESS, key_);
  const HKEY below = Made("B\\C", KEY_ALL_ACCESS, gone);
  EXPECT_EQ(RegDeleteKeyA(key_, "A"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteKeyA(key_, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(RegDeleteKeyA(key_, "\\A"), ERROR_BAD_PATHNAME);
  EXPECT_EQ(SHDeleteKeyA(key_, "A\\"), ERROR_SUCCESS);
  EXPECT_EQ(SHDeleteKeyA(key_, "A"), ERROR_FILE_NOT_FOUND);
  ASSERT_NE(Made("A", KEY_ALL_ACCESS, key_), nullptr);
  char name[8];
  DWORD size = sizeof name;
  for (const HKEY key : {gone, below}) {
    EXPECT_EQ(Open("", key), ERROR_KEY_DELETED);
    EXPECT_EQ(Open("B", key), ERROR_KEY_DELETED);
    EXPECT_EQ(Made("B", KEY_READ, key), nullptr);
    EXPECT_EQ(Set(key, "x"), ERROR_KEY_DELETED);
    EXPECT_EQ(RegQueryValueExA(key, "x", nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumKeyExA(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteKeyA(key, ""), ERROR_KEY_DELETED);
    EXPECT_EQ(SHDeleteKeyA(key, ""), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
  }
}

TEST_F(RegistryKeyTest, TheEmptyPathIsTheKeyItself) {
  const HKEY below = Made("A\\B", KEY_ALL_ACCESS, key_);
  ASSERT_EQ(Set(key_, "kept"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyA(key_, ""), ERROR_ACCESS_DENIED);
  EXPECT_EQ(SHDeleteKeyA(key_, ""), ERROR_SUCCESS);
  EXPECT_EQ(Set(below, "x"), ERROR_KEY_DELETED);
  EXPECT_EQ(values(key_), Names{"kept"});
  EXPECT_EQ(RegDeleteKeyA(key_, ""), ERROR_SUCCESS);
  EXPECT_EQ(Set(key_, "x"), ERROR_KEY_DELETED);
  EXPECT_EQ(SHDeleteKeyA(HKEY_CURRENT_USER, "software"), ERROR_ACCESS_DENIED)
      << "without it nothing works any more";
  EXPECT_EQ(SHDeleteKeyA(HKEY_CURRENT_USER, ""), ERROR_ACCESS_DENIED);
}

TEST_F(RegistryKeyTest, HandlesThatAreNoneAreRefused) {
  for (const std::uintptr_t number : {std::uintptr_t{0}, std::uintptr_t{0x80000004}, ~std::uintptr_t{0}}) {
    const HKEY key = reinterpret_cast<HKEY>(number);
    EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Set(key, "x"), ERROR_INVALID_HANDLE);
    EXPECT_EQ(SHDeleteKeyA(key, "x"), ERROR_INVALID_HANDLE);
  }
  EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
  EXPECT_EQ(Open("Software", HKEY_CURRENT_USER), ERROR_SUCCESS);
}

TEST_F(RegistryKeyTest, ListingsGoOnWhereTheyWere) {
  for (const char* name : {"c", "A", "b", ""}) ASSERT_EQ(Set(key_, name, "1234"), ERROR_SUCCESS);
  EXPECT_EQ(values(key_), (Names{"", "A", "b", "c"}));
  char name[2];
  BYTE data[4];
  const struct {
    DWORD index, room;
    LSTATUS status;
    const char* name;
  } kRows[] = {{2, 4, ERROR_SUCCESS, "b"},   {0, 4, ERROR_SUCCESS, ""},  {3, 4, ERROR_SUCCESS, "c"},
               {3, 3, ERROR_MORE_DATA, "c"}, {1, 4, ERROR_SUCCESS, "A"}, {4, 4, ERROR_NO_MORE_ITEMS, "A"},
               {3, 4, ERROR_SUCCESS, "c"}};
  for (const auto& [index, room, status, expected] : kRows) {
    DWORD name_size = sizeof name, size = room, type = 0;
    EXPECT_EQ(RegEnumValueA(key_, index, name, &name_size, nullptr, &type, data, &size), status) << index;
    EXPECT_STREQ(name, expected) << index;
  }
  DWORD size = sizeof name;
  EXPECT_EQ(RegEnumKeyExA(HKEY_LOCAL_MACHINE, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
            ERROR_NO_MORE_ITEMS)
      << "also without a file";
  // What is deleted when it was listed takes nothing else with it.
  std::string listed;
  size = sizeof name;
  for (DWORD index = 0;
       RegEnumValueA(key_, index, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
       ++index, size = sizeof name) {
    listed += name;
    if (index == 1) RegDeleteValueA(key_, name);
  }
  EXPECT_EQ(listed, "Abc");
  DWORD none = 1;
  EXPECT_EQ(RegEnumValueA(key_, 1, name, &none, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
}

}  // namespace
