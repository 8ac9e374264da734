#include <orx/compat/hkey.h>

#include <gtest/gtest.h>
#include <tests/support/registry.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace orx::testing;
using Statuses = std::vector<LSTATUS>;

LSTATUS set(HKEY key, const char* name, const char* text = "") {
  return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                        static_cast<DWORD>(std::strlen(text)));
}

LSTATUS query(HKEY key, const char* name) {
  return RegQueryValueExA(key, name, nullptr, nullptr, nullptr, nullptr);
}

// The first sub-key.
LSTATUS list(HKEY key) {
  char name[8];
  DWORD size = sizeof name;
  return RegEnumKeyExA(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr);
}

class RegistryKeyTest : public orx::testing::RegistryTest {
 protected:
  LSTATUS Open(const char* path, HKEY from) {
    HKEY key = HKEY_CURRENT_USER;
    const LSTATUS status = RegOpenKeyExA(from, path, 0, KEY_READ, &key);
    EXPECT_EQ(key == nullptr, status != ERROR_SUCCESS) << path;
    if (key != nullptr) opened_.push_back(key);
    return status;
  }

  const HKEY key_ = Made("Software\\T");
};

TEST_F(RegistryKeyTest, PathsIgnoreCaseAndExtraBackslashes) {
  std::string longest, deepest;
  for (int i = 0; i < 255; ++i) longest += "ü";
  for (int i = 0; i < 509; ++i) deepest += "k\\";
  // The second path opens the same key.
  using Row = std::tuple<std::string, std::string, LSTATUS>;
  for (const auto& [made, opened, status] :
       {Row{"A\\B\\C", "a\\b\\c", ERROR_SUCCESS}, Row{"D\\\\\\E", "D\\E\\\\", ERROR_SUCCESS},
        Row{"Ünïcode", "üNÏCODE", ERROR_SUCCESS},
        Row{" a/.:*?\"<>|%d\t\n", " A/.:*?\"<>|%D\t\n", ERROR_SUCCESS}, Row{longest, longest, ERROR_SUCCESS},
        Row{std::string(256, 'x'), std::string(256, 'x'), ERROR_INVALID_PARAMETER},
        Row{deepest, deepest, ERROR_SUCCESS}, Row{deepest + "k", deepest + "k", ERROR_FILE_NOT_FOUND},
        Row{"\\L", "\\L", ERROR_BAD_PATHNAME}, Row{"A\\\xE9", "A\\\xE9", ERROR_INVALID_PARAMETER}}) {
    const HKEY key = Made(made, key_);
    EXPECT_EQ(key != nullptr, status == ERROR_SUCCESS) << made;
    EXPECT_EQ(Open(opened.c_str(), key_), status) << opened;
    if (key == nullptr) continue;
    EXPECT_EQ(set(key, "x"), ERROR_SUCCESS) << made;
    EXPECT_EQ(values(opened_.back()), Names{"x"}) << opened;
  }
  EXPECT_EQ(sub_keys(key_), (Names{" a/.:*?\"<>|%d\t\n", "A", "D", "k", "Ünïcode", longest}))
      << "kept as first written, sorted without case";
  EXPECT_EQ(Open("A", HKEY_LOCAL_MACHINE), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Open("\\A", HKEY_LOCAL_MACHINE), ERROR_BAD_PATHNAME) << "also without a file";
  EXPECT_EQ(Open("", HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
}

TEST_F(RegistryKeyTest, QueriesReportSizeAndType) {
  ASSERT_EQ(set(key_, "x", "abcd"), ERROR_SUCCESS);
  BYTE data[8];
  DWORD size = 0, type = 99;
  const std::tuple<DWORD, LSTATUS, const char*> kRows[] = {
      {8, ERROR_SUCCESS, "abcd\0##"}, {4, ERROR_SUCCESS, "abcd###"}, {3, ERROR_MORE_DATA, "#######"}};
  for (const auto& [capacity, status, expected] : kRows) {
    size = capacity;
    std::memset(data, '#', sizeof data);
    EXPECT_EQ(RegQueryValueExA(key_, "X", nullptr, &type, data, &size), status) << capacity;
    EXPECT_TRUE(size == 4 && type == REG_SZ) << capacity;
    EXPECT_EQ(std::memcmp(data, expected, 7), 0) << capacity;
  }
  size = 0;
  EXPECT_EQ(RegQueryValueExA(key_, "x", nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExA(key_, nullptr, nullptr, &type, data, &size), ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(size == 4 && type == REG_NONE) << size << ' ' << type;
  EXPECT_EQ(query(key_, "x"), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExA(key_, "x", nullptr, nullptr, data, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(RegSetValueExA(key_, "x", 0, REG_SZ, nullptr, 1), ERROR_NOACCESS);
  EXPECT_EQ(set(key_, "X", "new"), ERROR_SUCCESS);
  EXPECT_EQ(values(key_), Names{"x"});
  EXPECT_EQ(set(key_, "a", "sorts before the listed value"), ERROR_SUCCESS);
  EXPECT_EQ(values(key_), (Names{"a", "x"}));
  EXPECT_EQ(RegDeleteValueA(key_, "X"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteValueA(key_, "X"), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryKeyTest, RightsBelongToTheHandle) {
  const HKEY reader = Made("A", key_, KEY_QUERY_VALUE);
  const HKEY writer = Made("A", key_, KEY_WRITE);
  EXPECT_EQ((Statuses{set(reader, "x"), RegDeleteValueA(reader, "x"), list(reader)}),
            Statuses(3, ERROR_ACCESS_DENIED));
  EXPECT_EQ(set(writer, "x"), ERROR_SUCCESS);
  EXPECT_EQ(query(writer, "x"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(query(reader, "x"), ERROR_SUCCESS);
  EXPECT_NE(Made("B", reader), nullptr) << "any handle creates sub-keys";
  EXPECT_EQ(RegDeleteKeyA(reader, "B"), ERROR_SUCCESS);
}

TEST_F(RegistryKeyTest, HandlesOfADeletedKeyStayInvalid) {
  const HKEY gone = Made("A", key_);
  const HKEY below = Made("B\\C", gone);
  EXPECT_EQ(RegDeleteKeyA(key_, "A"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteKeyA(key_, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(RegDeleteKeyA(key_, "\\A"), ERROR_BAD_PATHNAME);
  EXPECT_EQ(SHDeleteKeyA(key_, "A\\"), ERROR_SUCCESS);
  EXPECT_EQ(SHDeleteKeyA(key_, "A"), ERROR_FILE_NOT_FOUND);
  ASSERT_NE(Made("A", key_), nullptr);
  for (const HKEY key : {gone, below}) {
    EXPECT_EQ(Made("B", key, KEY_READ), nullptr);
    EXPECT_EQ((Statuses{Open("", key), Open("B", key), set(key, "x"), query(key, "x"), list(key),
                        RegDeleteKeyA(key, ""), SHDeleteKeyA(key, "")}),
              Statuses(7, ERROR_KEY_DELETED));
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
  }
}

TEST_F(RegistryKeyTest, EmptyPathIsTheKeyItself) {
  const HKEY below = Made("A\\B", key_);
  ASSERT_EQ(set(key_, "kept"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyA(key_, ""), ERROR_ACCESS_DENIED);
  EXPECT_EQ(SHDeleteKeyA(key_, ""), ERROR_SUCCESS);
  EXPECT_EQ(set(below, "x"), ERROR_KEY_DELETED);
  EXPECT_EQ(values(key_), Names{"kept"});
  EXPECT_EQ(RegDeleteKeyA(key_, ""), ERROR_SUCCESS);
  EXPECT_EQ(set(key_, "x"), ERROR_KEY_DELETED);
  EXPECT_EQ(SHDeleteKeyA(HKEY_CURRENT_USER, "software"), ERROR_ACCESS_DENIED) << "the store needs it";
  EXPECT_EQ(SHDeleteKeyA(HKEY_CURRENT_USER, ""), ERROR_ACCESS_DENIED);
}

TEST_F(RegistryKeyTest, RefusesInvalidHandles) {
  for (const std::uintptr_t number : {std::uintptr_t{0}, std::uintptr_t{0x80000004}, ~std::uintptr_t{0}}) {
    const HKEY key = reinterpret_cast<HKEY>(number);
    EXPECT_EQ((Statuses{RegCloseKey(key), set(key, "x")}), Statuses(2, ERROR_INVALID_HANDLE));
  }
  EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
  EXPECT_EQ(Open("Software", HKEY_CURRENT_USER), ERROR_SUCCESS);
}

TEST_F(RegistryKeyTest, ListsInTheOrderOfNames) {
  for (const char* name : {"c", "A", "b", ""}) ASSERT_EQ(set(key_, name, "1234"), ERROR_SUCCESS);
  char name[2];
  BYTE data[4];
  const std::tuple<DWORD, DWORD, LSTATUS, const char*> kRows[] = {
      {2, 4, ERROR_SUCCESS, "b"},   {0, 4, ERROR_SUCCESS, ""},  {3, 4, ERROR_SUCCESS, "c"},
      {3, 3, ERROR_MORE_DATA, "c"}, {1, 4, ERROR_SUCCESS, "A"}, {4, 4, ERROR_NO_MORE_ITEMS, "A"}};
  for (const auto& [index, capacity, status, expected] : kRows) {
    DWORD name_size = sizeof name, size = capacity, type = 0;
    EXPECT_EQ(RegEnumValueA(key_, index, name, &name_size, nullptr, &type, data, &size), status) << index;
    EXPECT_STREQ(name, expected) << index;
  }
  EXPECT_EQ(list(HKEY_LOCAL_MACHINE), ERROR_NO_MORE_ITEMS) << "also without a file";
  // Deleting a listed value does not skip the next one.
  const auto list_and_delete = [](HKEY key, DWORD index, char* listed, auto... rest) {
    const LSTATUS status = RegEnumValueA(key, index, listed, rest...);
    if (index == 1) RegDeleteValueA(key, listed);
    return status;
  };
  EXPECT_EQ(names(key_, list_and_delete), (Names{"", "A", "b", "c"}));
  DWORD none = 1;
  EXPECT_EQ(RegEnumValueA(key_, 1, name, &none, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
}

}  // namespace
