#include <orx/frame/native_path.h>

#include <gtest/gtest.h>
#include <tests/support/environment.h>
#include <tests/support/process.h>

#include <thread>

TEST(NativePath, ConversionNeedsSpaceForResultAndNul) {
  char out[] = "###############";
  EXPECT_EQ(orx_path_from_native("/tmp/./pit1.qpr", out, 14), 0) << "fits exactly";
  EXPECT_STREQ(out, "\\tmp\\pit1.qpr");
  EXPECT_EQ(out[14], '#');
  EXPECT_EQ(orx_path_to_native(out, out, sizeof out), 0) << "in place";
  EXPECT_STREQ(out, "/tmp/pit1.qpr");
  EXPECT_EQ(orx_path_from_native("/tmp/./pit1.qpr", out, 13), -1);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(orx_path_to_native("", out, 1), 0);
  for (const auto& [path, buffer, size] : {std::tuple("", out, 0U), {nullptr, out, 1U}, {"", nullptr, 16U}})
    EXPECT_EQ(orx_path_to_native(path, buffer, size), -1) << size;
}

TEST(NativePath, UsesNewEnvironmentOnceHostReportsChange) {
  const auto drive = [] {
    char out[8] = "";
    orx_path_to_native("C:", out, sizeof out);
    return std::string(out);
  };
  const orx::testing::ScopedVariable drives("ORX_DRIVES", "/a");
  orx::testing::in_new_process([&] {
    std::thread host([] {
      setenv("ORX_DRIVES", "/b", 1);
      for (int i = 0; i < 3'000; ++i) setenv(("ORX_TEST_" + std::to_string(i)).c_str(), "", 1);
    });
    for (int i = 0; i < 3'000; ++i) EXPECT_EQ(drive(), "/a/c");
    host.join();
    orx_environment_changed();
    EXPECT_EQ(drive(), "/b/c");
  });
}
