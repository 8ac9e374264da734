#include <orx/platform/debug_output.h>

#include <gtest/gtest.h>
#include <tests/support/environment.h>

#include <sys/stat.h>

TEST(DebugOutput, AppendsLinesWithoutWaitingForPipe) {
  const orx::testing::TempFolder folder;
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
  for (const char* name : {"log", "pipe"}) {
    const orx::testing::ScopedVariable file("ORX_DEBUG_OUTPUT", folder.path(name).c_str());
    errno = 77;
    for (const char* text : {"a", static_cast<const char*>(nullptr), "", "%s\n"})
      orx::platform::debug_output(text);
    EXPECT_EQ(errno, 77) << name;
  }
  EXPECT_EQ(orx::testing::read_file(folder.path("log")), "a\n%s\n\n");
}
