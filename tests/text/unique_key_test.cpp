#include <orx/text/unique_key.h>

#include <gtest/gtest.h>
#include <orx/datetime/date_defaults.h>
#include <orx/platform/clock.h>

#include <climits>
#include <cstring>

namespace {

constexpr char kNow[] = "240305235959";

int readings;

// The fourth reading is that of the next second.
orx::platform::LocalTime clock() {
  if (readings++ < 3) return {2024, 3, 5, 23, 59, 59};
  return {2024, 3, 6, 0, 0, 0};
}

TEST(UniqueKey, IsTheStampOfTheSecondAndTheCounter) {
  const struct {
    int counter;
    const char *last_stamp, *key;
    int readings = 1, size = 32, order = orxYearMonthDay, four_digits = 0;
  } cases[] = {{0, "", "240305235959000001"},
               {41, kNow, "240305235959000042"},
               {999998, kNow, "240305235959999999"},
               {999999, "240305235958", "240305235959000001"},
               {999999, "2403052359590", "240305235959000001"},
               {INT_MAX, kNow, "240306000000000001", 4},
               {-8, kNow, "240305235959-00007"},
               {INT_MIN, kNow, "240305235959-2147483647"},
               {41, "", "240305235959", 1, 13},
               {41, "", "", 1, 1},
               {41, "", "20240305235959000042", 1, 32, orxYearMonthDay, 1},
               {41, "", "03052024235959000042", 1, INT_MAX, orxMonthDayYear, 1}};
  orx::platform::replace_clock(clock);
  for (const auto& c : cases) {
    char out[32], last_stamp[32];
    std::memset(out, '#', sizeof out);
    std::strcpy(last_stamp, c.last_stamp);
    int counter = c.counter;
    readings = 0;
    orxDateTime_SetStaticDefaults(c.order, 30, c.four_digits);
    GenerateKey(out, c.size, last_stamp, &counter);
    EXPECT_STREQ(out, c.key);
    EXPECT_EQ(out[std::strlen(c.key) + 1], '#') << c.key;
    EXPECT_EQ(counter, c.counter >= 999999 ? 1 : c.counter + 1);
    EXPECT_EQ(readings, c.readings) << "date and time of " << c.key;
    if (c.size > 18) EXPECT_EQ(std::string(out).find(last_stamp), 0U) << last_stamp;
  }
  orx::platform::replace_clock(nullptr);
  orxDateTime_SetStaticDefaults(orxYearMonthDay, 30, 0);
}

TEST(UniqueKey, NeedsAllItIsGiven) {
  char out[] = "###", last_stamp[32] = "stamp";
  int counter = 999999;
  GenerateKey(nullptr, 32, last_stamp, &counter);
  GenerateKey(out, 0, last_stamp, &counter);
  EXPECT_STREQ(out, "###");
  for (const bool has_stamp : {false, true}) {
    out[0] = '#';
    GenerateKey(out, 4, has_stamp ? last_stamp : nullptr, has_stamp ? nullptr : &counter);
    EXPECT_STREQ(out, "");
  }
  EXPECT_STREQ(last_stamp, "stamp");
  EXPECT_EQ(counter, 999999);
}

}  // namespace
