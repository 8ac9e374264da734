#include <orx/frame/native_path.h>

#include <gtest/gtest.h>

TEST(NativePath, ConvertsIntoABufferThatIsLargeEnough) {
  char out[] = "###############";
  EXPECT_EQ(orx_path_from_native("/tmp/./pit1.qpr", out, 14), 0) << "fits exactly";
  EXPECT_STREQ(out, "\\tmp\\pit1.qpr");
  EXPECT_EQ(out[14], '#');
  EXPECT_EQ(orx_path_to_native(out, out, sizeof out), 0) << "in place";
  EXPECT_STREQ(out, "/tmp/pit1.qpr");
  EXPECT_EQ(orx_path_from_native("/tmp/./pit1.qpr", out, 13), -1);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(orx_path_to_native("", out, 1), 0);
  EXPECT_EQ(orx_path_to_native(nullptr, out, 1), -1);
  EXPECT_EQ(orx_path_to_native("", out, 0) + orx_path_to_native("", nullptr, 16), -2);
}
