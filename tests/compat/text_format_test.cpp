#include <orx/compat/string_a.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>

namespace {

TEST(TextFormat, LeavesTheHostAlone) {
  const char* host = std::setlocale(LC_ALL, "de_DE.UTF-8");  // with a decimal comma, where it is installed
  if (host == nullptr) host = std::setlocale(LC_ALL, "C.UTF-8");
  ASSERT_NE(host, nullptr);
  errno = 77;
  CStringA text;
  text.Format("%.1f", 0.5);
  EXPECT_EQ(text, "0.5");
  EXPECT_THROW(text.Format("%ls", L"\x20AC"), CAtlException) << "the host's locale knows the character";
  EXPECT_EQ(errno, 77);
  EXPECT_GT(MB_CUR_MAX, 1U);
  std::setlocale(LC_ALL, "C");
}

}  // namespace
