#include <orx/text/unique_key.h>

#include <gtest/gtest.h>
#include <orx/datetime/date_defaults.h>
#include <orx/platform/clock.h>

#include <climits>
#include <cstring>
#include <string>

namespace {

constexpr char kNow[] = "240305235959";

int readings;

// The next second begins with the fourth reading.
orx::platform::LocalTime clock() {
  if (readings++ < 3) return {2024, 3, 5, 23, 59, 59};
  return {2024, 3, 6, 0, 0, 0};
}

TEST(UniqueKey, ConsistsOfStampAndCounter) {
  struct Row {
    int counter;
    const char *last_stamp, *key;
    int readings = 1, size = 32, order = orxYearMonthDay, four_digits = 0;
  };
  orx::platform::replace_clock(clock);
  for (const auto& c : {Row{0, "", "240305235959000001"}, Row{41, kNow, "240305235959000042"},
                        Row{ORX_KEY_COUNTER_MAX - 1, kNow, "240305235959999999"},
                        Row{ORX_KEY_COUNTER_MAX, "240305235958", "240305235959000001"},
                        Row{ORX_KEY_COUNTER_MAX, "2403052359590", "240305235959000001"},
                        Row{ORX_KEY_COUNTER_MAX, kNow, "240306000000000001", 4},
                        Row{INT_MAX, kNow, "240306000000000001", 4}, Row{-8, kNow, "240305235959-00007"},
                        Row{INT_MIN, kNow, "240305235959-2147483647"}, Row{41, "", "240305235959", 1, 13},
                        Row{41, "", "", 1, 1}, Row{41, "", "20240305235959000042", 1, 32, orxYearMonthDay, 1},
                        Row{41, "", "03052024235959000042", 1, INT_MAX, orxMonthDayYear, 1}}) {
    char out[32], last_stamp[ORX_KEY_STAMP_SIZE];
    std::memset(out, '#', sizeof out);
    std::strcpy(last_stamp, c.last_stamp);
    int counter = c.counter;
    readings = 0;
    orxDateTime_SetStaticDefaults(c.order, 30, c.four_digits);
    GenerateKey(out, c.size, last_stamp, &counter);
    EXPECT_STREQ(out, c.key);
    EXPECT_EQ(out[std::strlen(c.key) + 1], '#') << c.key;
    EXPECT_EQ(counter, c.counter >= ORX_KEY_COUNTER_MAX ? 1 : c.counter + 1);
    EXPECT_EQ(readings, c.readings) << "date and time of " << c.key;
    if (c.size > 18) EXPECT_EQ(std::string(out).find(last_stamp), 0U) << last_stamp;
  }
  orx::platform::replace_clock(nullptr);
  orxDateTime_SetStaticDefaults(orxYearMonthDay, 30, 0);
}

TEST(UniqueKey, NullPointersGiveNoKeyAndChangeNothing) {
  char out[] = "###", empty[] = "###", last_stamp[ORX_KEY_STAMP_SIZE] = "stamp";
  int counter = 7;
  GenerateKey(nullptr, 32, last_stamp, &counter);
  GenerateKey(out, 0, last_stamp, &counter);
  GenerateKey(empty, 4, last_stamp, nullptr);
  EXPECT_EQ(std::string(out) + empty, "###");
  empty[0] = '#';
  GenerateKey(empty, 4, nullptr, &counter);
  EXPECT_EQ(std::string(empty) + last_stamp + std::to_string(counter), "stamp7");
}

}  // namespace
