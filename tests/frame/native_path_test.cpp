#include <orx/frame/native_path.h>

#include <gtest/gtest.h>

TEST(NativePath, ConvertsIntoABufferThatIsLargeEnough) {
  const struct {
    int (*convert)(const char*, char*, size_t);
    const char* path;
    size_t size;
    int result;
    const char* expected;
  } cases[] = {
      {orx_path_from_native, "/tmp/./pit1.qpr", 14, 0, "\\tmp\\pit1.qpr"},  // fits exactly
      {orx_path_from_native, "/tmp/./pit1.qpr", 13, -1, ""},
      {orx_path_to_native, "", 1, 0, ""},
      {orx_path_to_native, nullptr, 1, -1, ""},
  };
  for (const auto& row : cases) {
    char out[] = "###############";
    EXPECT_EQ(row.convert(row.path, out, row.size), row.result) << row.size;
    EXPECT_STREQ(out, row.expected);
    EXPECT_EQ(out[row.size], '#') << "beyond the buffer";
    EXPECT_EQ(row.convert(row.path, out, 0) + row.convert(row.path, nullptr, 16), -2);
  }
  char path[] = "\\in\\place";
  EXPECT_EQ(orx_path_to_native(path, path, sizeof path), 0);
  EXPECT_STREQ(path, "/in/place");
}
