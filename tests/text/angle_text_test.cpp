#include <orx/text/angle_text.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Nothing is written beyond the 50 bytes that the buffer must have.
std::string written(int mode, double angle, int packed) {
  char out[64];
  std::memset(out, '#', sizeof out);
  EXPECT_EQ(zel_convert_ang_to_str(mode, angle, packed, out), out);
  EXPECT_EQ(std::string(out + 50, sizeof out - 50), std::string(sizeof out - 50, '#'));
  return out;
}

double degrees_read(int mode, const std::string& text, int packed) {
  return zel_convert_str_to_ang(mode, text.c_str(), packed) / kPi * 180;
}

TEST(AngleText, Writes) {
  const std::tuple<int, double, const char*, const char*> kRows[] = {
      {10, 45, " 45.00000000", " 45.00000000"},
      {13, 180, "  3.14159265", "  3.14159265"},
      {14, -90, "-100.00000000", "-100.00000000"},
      {11, -45.5, " -45:30: 0", " -4530 0"},
      {11, -0.5, "   0:30: 0", "   030 0"},                   // no whole degrees, no sign
      {11, 10 + 5.99 / 3600, "  10: 0: 5", "  10 0 5"},       // seconds are cut
      {11, 0.5 - 5e-15, "   0:30: 0", "   030 0"},            // almost a second
      {11, 1 - 2e-14, "   1: 0: 0", "   1 0 0"},              // a second that fills the degree
      {12, 1 - 5e-15, "   1: 0.00000", "   1 0.00000"},       // almost a degree
      {16, 10.999999972, "  11: 0: 0.00", "  11 0 0.00"},     // 10:59:59.9999
      {16, 10.5 - 1e-7, "  10:30: 0.00", "  1030 0.00"},      // 10:29:59.9996
      {16, -3.9999985834, "  -3:59:59.99", "  -35959.99"},    // 59.9949 seconds
      {12, 29.99999995, "  30: 0.00000", "  30 0.00000"},     // 59.999997 minutes
      {12, 29.9999999, "  29:59.99999", "  2959.99999"},      // 59.999994 minutes
      {12, -12345.25, "-12345:15.00000", "-1234515.00000"}};  // wider than its column
  for (const auto& [mode, degrees, colons, packed] : kRows) {
    EXPECT_EQ(written(mode, degrees / 180 * kPi, 0), colons) << mode;
    EXPECT_EQ(written(mode, degrees / 180 * kPi, 1), packed) << mode;
  }
}

TEST(AngleText, WritesWhatHasNoColumns) {
  const std::string digits = written(10, 1e300, 0);
  EXPECT_EQ(digits.substr(0, 12) + "+" + std::to_string(digits.size()), "572957795130+49");
  const std::tuple<int, double, int, std::string> kRows[] = {
      {16, 1e300, 0, digits}, {10, kInfinity, 0, "         inf"}, {11, -kInfinity, 0, "-inf: 0: 0"},
      {15, 1, 0, ""},         {12, kInfinity, 1, " inf 0.00000"}, {16, std::nan(""), 0, " nan: 0: 0.00"},
      {9, 1, 0, ""},          {14, kPi, 2, "200.00000000"},       {11, 1, 2, ""}};
  for (const auto& [mode, angle, packed, text] : kRows) EXPECT_EQ(written(mode, angle, packed), text) << mode;
  EXPECT_EQ(zel_convert_ang_to_str(10, 1, 0, nullptr), nullptr);
}

// In the last packed row the columns are 45, 3 and 0: colons of the text stay beside the new ones.
TEST(AngleText, Reads) {
  const std::tuple<int, const char*, int, double> kRows[] = {{10, " 1.5x", 1, 1.5},
                                                             {13, "3.141592653589793", 0, 180},
                                                             {14, "200", 0, 180},
                                                             {11, "45:30", 0, 45.5},
                                                             {12, "45:30:15", 0, 45.5},
                                                             {11, "1:1:3:4", 2, 1 + 63 / 3600.0},
                                                             {16, "-1:30:36", 0, -1.51},
                                                             {16, "-0:30:00", 0, 0.5},
                                                             {11, "::36:", 0, 0.01},
                                                             {10, "inf", 0, 0},
                                                             {12, "-1e999", 0, -kInfinity},
                                                             {11, "x:30", 0, 0.5},
                                                             {11, "  4530 0", 1, 45.5},
                                                             {16, " -453036.00", 1, -45.51},
                                                             {12, "  4530.00000", 1, 45.5},
                                                             {11, "  45", 1, 45},
                                                             {11, "  453", 1, 45.05},
                                                             {11, "45:30:36", 1, 45.05},
                                                             {11, "", 0, 0},
                                                             {11, "", 1, 0},
                                                             {15, "1", 0, 0}};
  for (const auto& [mode, text, packed, degrees] : kRows) {
    EXPECT_DOUBLE_EQ(degrees_read(mode, text, packed), degrees) << mode << ' ' << text;
  }
  EXPECT_EQ(zel_convert_str_to_ang(11, nullptr, 1), 0);
  EXPECT_EQ(written(13, zel_convert_str_to_ang(13, "-0", 0), 0), " -0.00000000");
  for (const char c : {' ', '9', ':'}) {
    std::string text;
    text.resize(10'000'000, c);
    for (const int packed : {0, 1}) {
      EXPECT_EQ(degrees_read(11, text, packed), c == '9' ? kInfinity : 0) << c;
    }
  }
}

TEST(AngleText, InsertsColons) {
  const std::tuple<int, const char*, const char*> kRows[] = {{11, "  4530 0", "  45:30: 0"},
                                                             {16, "  453", "  45:3"},
                                                             {12, "  4530.0", "  45:30.0"},
                                                             {11, "", ":"},
                                                             {12, "123", "123"},
                                                             {10, "  4530", "  4530"}};
  for (const auto& [mode, text, expected] : kRows) {
    std::string buffer(text);
    buffer.resize(buffer.size() + 2);
    insert_colon_to_ang_str(mode, buffer.data());
    EXPECT_STREQ(buffer.c_str(), expected) << mode;
  }
  insert_colon_to_ang_str(11, nullptr);
}

TEST(AngleText, AlikeInEveryLocale) {
  ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8") || std::setlocale(LC_ALL, "C.UTF-8"));
  errno = EDOM;
  EXPECT_EQ(written(14, kPi, 0), "200.00000000");
  EXPECT_DOUBLE_EQ(degrees_read(12, "1:1.5", 0), 1.025);
  EXPECT_EQ(degrees_read(11, "1e999", 0), kInfinity);
  EXPECT_EQ(errno, EDOM);
  std::setlocale(LC_ALL, "C");
}

}  // namespace
