#include <orx/text/angle_text.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The text of the angle. Checks that the function does not write beyond the buffer.
std::string written(int mode, double angle, int packed) {
  char out[ORX_ANGLE_TEXT_SIZE + 1];
  out[ORX_ANGLE_TEXT_SIZE] = '#';
  EXPECT_EQ(zel_convert_ang_to_str(mode, angle, packed, out), out);
  EXPECT_EQ(out[ORX_ANGLE_TEXT_SIZE], '#');
  return out;
}

double degrees_read(int mode, const std::string& text, int packed) {
  return zel_convert_str_to_ang(mode, text.c_str(), packed) / kPi * 180;
}

TEST(AngleText, WritesColumnsThatNeverShowSixty) {
  using Row = std::pair<double, std::string>;
  const std::pair<int, std::vector<Row>> modes[] = {
      {zelDegrees, {Row{45, " 45.00000000"}}},
      {zelRadians, {Row{180, "  3.14159265"}}},
      {zelGrads, {Row{-90, "-100.00000000"}}},
      // The sign of 0 degrees is lost, seconds are truncated, almost a second, a second, a degree.
      {zelDegreesMinutesSeconds,
       {Row{-45.5, " -45:30: 0"}, Row{-0.5, "   0:30: 0"}, Row{10 + 5.99 / 3600, "  10: 0: 5"},
        Row{0.5 - 5e-15, "   0:30: 0"}, Row{1 - 2e-14, "   1: 0: 0"}}},
      // Minutes of 60, 59.999997 and 59.999994; degrees that are wider than their column.
      {zelDegreesDecimalMinutes,
       {Row{1 - 5e-15, "   1: 0.00000"}, Row{29.99999995, "  30: 0.00000"}, Row{29.9999999, "  29:59.99999"},
        Row{-12345.25, "-12345:15.00000"}}},
      // Seconds of 59.9999, 59.9996 and 59.9949.
      {zelDegreesMinutesDecimalSeconds,
       {Row{10.999999972, "  11: 0: 0.00"}, Row{10.5 - 1e-7, "  10:30: 0.00"},
        Row{-3.9999985834, "  -3:59:59.99"}}}};
  for (const auto& [mode, rows] : modes) {
    for (auto [degrees, text] : rows) {
      EXPECT_EQ(written(mode, degrees / 180 * kPi, 0), text) << mode;
      std::erase(text, ':');
      EXPECT_EQ(written(mode, degrees / 180 * kPi, 1), text) << mode;
    }
  }
}

TEST(AngleText, WritesHugeAnglesAndUnknownModes) {
  const std::string digits = written(zelDegrees, 1e300, 0);
  EXPECT_EQ(digits.substr(0, 12) + "+" + std::to_string(digits.size()), "572957795130+49");
  using Row = std::tuple<int, double, int, std::string>;
  for (const auto& [mode, angle, packed, text] :
       {Row{zelDegreesMinutesDecimalSeconds, 1e300, 0, digits}, Row{zelDegrees, kInfinity, 0, "         inf"},
        Row{zelDegreesMinutesSeconds, -kInfinity, 0, "-inf: 0: 0"}, Row{zelNoAngle, 1, 0, ""},
        Row{zelDegreesDecimalMinutes, kInfinity, 1, " inf 0.00000"},
        Row{zelDegreesMinutesDecimalSeconds, std::nan(""), 0, " nan: 0: 0.00"}, Row{9, 1, 0, ""},
        Row{zelGrads, kPi, 2, "200.00000000"}, Row{zelDegreesMinutesSeconds, 1, 2, ""}})
    EXPECT_EQ(written(mode, angle, packed), text) << mode;
  EXPECT_EQ(zel_convert_ang_to_str(zelDegrees, 1, 0, nullptr), nullptr);
}

TEST(AngleText, ReadsMissingColumnsAsZero) {
  using Row = std::tuple<const char*, int, double>;
  const std::pair<int, std::vector<Row>> modes[] = {
      {zelDegrees, {Row{" 1.5x", 1, 1.5}, Row{"inf", 0, 0}}},
      {zelRadians, {Row{"3.141592653589793", 0, 180}}},
      {zelGrads, {Row{"200", 0, 180}}},
      {zelNoAngle, {Row{"1", 0, 0}}},
      // The last packed text keeps its own colons, so its columns are 45, 3 and 0.
      {zelDegreesMinutesSeconds,
       {Row{"45:30", 0, 45.5}, Row{"1:1:3:4", 2, 1 + 63 / 3600.0}, Row{"::36:", 0, 0.01}, Row{"x:30", 0, 0.5},
        Row{"", 0, 0}, Row{"", 1, 0}, Row{"  4530 0", 1, 45.5}, Row{"  45", 1, 45}, Row{"  453", 1, 45.05},
        Row{"45:30:36", 1, 45.05}}},
      {zelDegreesDecimalMinutes,
       {Row{"45:30:15", 0, 45.5}, Row{"-1e999", 0, -kInfinity}, Row{"  4530.00000", 1, 45.5}}},
      {zelDegreesMinutesDecimalSeconds,
       {Row{"-1:30:36", 0, -1.51}, Row{"-0:30:00", 0, 0.5}, Row{" -453036.00", 1, -45.51}}}};
  for (const auto& [mode, rows] : modes) {
    for (const auto& [text, packed, degrees] : rows)
      EXPECT_DOUBLE_EQ(degrees_read(mode, text, packed), degrees) << mode << ' ' << text;
  }
  EXPECT_EQ(zel_convert_str_to_ang(zelDegreesMinutesSeconds, nullptr, 1), 0);
  EXPECT_EQ(written(zelRadians, zel_convert_str_to_ang(zelRadians, "-0", 0), 0), " -0.00000000");
  for (const char c : {' ', '9', ':'}) {
    const std::string text(10'000'000, c);
    for (const int packed : {0, 1})
      EXPECT_EQ(degrees_read(zelDegreesMinutesSeconds, text, packed), c == '9' ? kInfinity : 0) << c;
  }
}

TEST(AngleText, InsertsColonsAsFarAsTheTextReaches) {
  using Row = std::tuple<int, const char*, const char*>;
  for (const auto& [mode, text, expected] :
       {Row{zelDegreesMinutesSeconds, "  4530 0", "  45:30: 0"},
        Row{zelDegreesMinutesDecimalSeconds, "  453", "  45:3"},
        Row{zelDegreesDecimalMinutes, "  4530.0", "  45:30.0"}, Row{zelDegreesMinutesSeconds, "", ":"},
        Row{zelDegreesDecimalMinutes, "123", "123"}, Row{zelDegrees, "  4530", "  4530"}}) {
    std::string buffer(text);
    buffer.resize(buffer.size() + 2);
    insert_colon_to_ang_str(mode, buffer.data());
    EXPECT_STREQ(buffer.c_str(), expected) << mode;
  }
  insert_colon_to_ang_str(zelDegreesMinutesSeconds, nullptr);
}

TEST(AngleText, IgnoresTheLocaleAndKeepsErrno) {
  ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8") || std::setlocale(LC_ALL, "C.UTF-8"));
  errno = EDOM;
  EXPECT_EQ(written(zelGrads, kPi, 0), "200.00000000");
  EXPECT_DOUBLE_EQ(degrees_read(zelDegreesDecimalMinutes, "1:1.5", 0), 1.025);
  EXPECT_EQ(degrees_read(zelDegreesMinutesSeconds, "1e999", 0), kInfinity);
  EXPECT_EQ(errno, EDOM);
  std::setlocale(LC_ALL, "C");
}

}  // namespace
