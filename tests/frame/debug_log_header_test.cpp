#include <orx/frame/debug_log.h>

#include <gtest/gtest.h>
#include <orx/platform/clock.h>
#include <tests/support/environment.h>
#include <tests/support/process.h>

using namespace orx::testing;

TEST(DebugLogHeader, InitWritesPathAndTwelveHourTime) {
  static orx::platform::LocalTime now;
  const auto running_clock = [] {
    const auto result = now;
    now.minute++;  // at each call
    return result;
  };
  const TempFolder folder;
  const std::tuple<int, const char*, std::string> cases[] = {{0, "", "12:07 AM on 26/11/16 00:07:42"},
                                                             {11, "\\", "11:07 AM on 26/11/16 11:07:42"},
                                                             {12, "", "12:07 PM on 26/11/16 12:07:42"},
                                                             {13, "\\", "1:07 PM on 26/11/16 13:07:42"}};
  for (const auto& [hour, log_folder, time] : cases) {
    in_new_process([&, hour = hour, log_folder = log_folder] {
      orx::platform::replace_clock(running_clock);
      now = {2026, 11, 16, hour, 7, 42};
      EXPECT_EQ(halvark_log_debug_init((folder.suite_path() + log_folder).c_str()), 0);
    });
    const std::string expected =
        "Log file '" + folder.suite_path(ORX_LOG_NAME) + "' opened at " + time + ".\r\n";
    EXPECT_EQ(read_file(folder.path(ORX_LOG_NAME)), expected + "---------------------------\r\n");
  }
}
