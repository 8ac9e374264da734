#include <orx/frame/file_queries.h>

#include <gtest/gtest.h>
#include <orx/frame/host_callbacks.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <tests/support/environment.h>
#include <tests/support/process.h>
#include <unistd.h>

#include <climits>
#include <map>

namespace fs = std::filesystem;
using namespace orx::testing;

namespace {

// The results of the five functions, in the order in which answers() calls them.
using Answers = std::tuple<int, int, int, uint32_t, int32_t>;

Answers answers(const std::string& path) {
  const char* p = path == "null" ? nullptr : path.c_str();
  errno = 77;
  const Answers result{FileExists(p), DirectoryExists(p), file_exists(p), get_file_length(p), GetFilesize(p)};
  EXPECT_EQ(errno, 77);
  return result;
}

class FileQueries : public ::testing::Test {
 protected:
  // The files are holes: they take no space on the disk.
  void Create(const std::map<std::string, std::uintmax_t>& sizes) const {
    for (const auto& [name, size] : sizes) {
      write_file(folder.path(name), "");
      fs::resize_file(folder.path(name), size);
    }
  }

  const TempFolder folder;
  const ScopedVariable drives{"ORX_DRIVES", folder.path().c_str()};
};

TEST_F(FileQueries, AnswerForFilesFoldersPipesAndMissingNames) {
  constexpr std::uintmax_t kGiB = 1 << 30;
  constexpr Answers kNothing{}, kFolder{0, 1, 0, 0, 0}, kFile{1, 0, 1, 1234, 1234}, kEmpty{1, 0, 1, 0, 0};
  fs::create_directories(folder.path("c/Grün tal"));
  Create({{"c/Grün tal/pä 1.dat", 1234}, {"c/\xFF", 1234}, {"c/2G-", 2 * kGiB - 1}, {"c/2G", 2 * kGiB}});
  Create({{"c/empty", 0}, {"c/4G", 4 * kGiB}, {"c/5G", 5 * kGiB + 1}});
  fs::create_symlink("Grün tal/pä 1.dat", folder.path("c/link"));
  fs::create_symlink("missing", folder.path("c/dangling"));
  ASSERT_EQ(mkfifo(folder.path("c/pipe").c_str(), 0666), 0);
  const int opened = inotify_init1(IN_NONBLOCK);
  EXPECT_GE(inotify_add_watch(opened, folder.path("c/pipe").c_str(), IN_OPEN), 0);
  const std::pair<Answers, std::vector<std::string>> cases[] = {
      {kNothing, {"null", "", "\\", "Q:\\", "C:\\missing", "C:\\dangling"}},
      {kFolder, {"C:\\", "C:\\Grün tal\\", "C:\\Grün tal"}},
      {kFile, {"C:\\Grün tal\\pä 1.dat", "c:/Grün tal/pä 1.dat", "C:\\link", "C:\\\xFF"}},
      {kEmpty, {"C:\\empty", "C:\\pipe", "\\dev\\null"}},
      {{1, 0, 0, 0, 0}, {"C:\\link\\"}},
      {{1, 0, 1, INT32_MAX, INT32_MAX}, {"C:\\2G-"}},
      {{1, 0, 1, 0x80000000, -1}, {"C:\\2G"}},
      {{1, 0, 1, 0, -1}, {"C:\\4G"}},
      {{1, 0, 1, 0x40000001, -1}, {"C:\\5G"}},
  };
  for (const auto& [expected, paths] : cases) {
    for (const std::string& path : paths) EXPECT_EQ(answers(path), expected) << path;
  }
  char event[512];
  EXPECT_EQ(read(opened, event, sizeof event), -1) << "the pipe was opened, which wakes a writer";
  close(opened);
}

TEST_F(FileQueries, ExistenceUsesFirstCharactersOfLongPath) {
  const std::string name(ORX_QUERY_PATH_LENGTH - 10 - folder.path().size(), 'd');
  const std::string parent = folder.suite_path(name);
  const std::string file(ORX_QUERY_PATH_LENGTH - 1 - parent.size(), 'f'), longest = parent + "\\" + file;
  fs::create_directory(folder.path(name));
  Create({{name + "/" + file, 1}});
  EXPECT_EQ(answers(longest), Answers(1, 0, 1, 1, 1));
  const std::string words = folder.path(kEightyLetters + "/" + kEightyLetters);
  fs::create_directories(words);
  EXPECT_EQ(answers(words), Answers(0, 1, 0, 0, 0)) << "the limit counts characters, not bytes";
  for (const std::size_t more : {1U, 9740U}) {
    EXPECT_EQ(answers(longest + std::string(more, 'x')), Answers(1, 0, 0, 0, 0)) << more;
    const std::string backslashes(ORX_QUERY_PATH_LENGTH - parent.size() + more, '\\');
    EXPECT_EQ(DirectoryExists((parent + backslashes).c_str()), 1) << more;
  }
}

TEST_F(FileQueries, UnreadableFilesExistAndCancelledThreadGetsAnswers) {
  Create({{"file", 3}});
  fs::permissions(folder.path("file"), fs::perms(0));
  fs::permissions(folder.path(), fs::perms(0755));
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0), 0);
  as_nobody([&] {
    EXPECT_EQ(answers(folder.path("file")), Answers(1, 0, 0, 3, 0));
    EXPECT_EQ(answers(folder.path("pipe")), Answers(1, 0, 0, 0, 0));
  });
  fs::permissions(folder.path("file"), fs::perms(0600));
  Answers result;
  on_cancelled_thread([&] { result = answers(folder.path("file")); });
  EXPECT_EQ(result, Answers(1, 0, 1, 3, 3));
}

TEST_F(FileQueries, GetFileLengthReturnsFirstMatchOfWildcards) {
  fs::create_directories(folder.path("c/sub.fol"));
  Create({{"c/b.txt", 1}, {"c/A.TXT", 2}, {"c/_a.txt", 3}, {"c/pit10.dat", 4}, {"c/pit1.dat", 5}});
  Create({{"c/pit.dat", 6}, {"c/x", 7}, {"c/sub.fol/(", 8}, {"c/(1)", 9}, {"c/a.b.tx", 10}});
  Create({{"c/Üb.q", 11}, {"c/\xFC.r", 12}, {"c/üü.s", 13}, {"c/.hidden", 14}});
  const std::pair<std::string, std::uint32_t> sizes[] = {
      {"p*.", 0},        {"*.b", 0},      {"pit*.??", 0}, {"pit1?0.dat", 0}, {"sub*", 0},
      {"sub.fol\\*", 0}, {"sub*\\(", 0},  {"x\\*", 0},    {"*\\", 0},        {std::string(9999, '*'), 0},
      {"B.*", 1},        {"*.txt", 2},    {"?.txt", 2},   {"_?.*", 3},       {"PIT*0.DAT", 4},
      {"pit1?.*", 5},    {"pit?.dat", 6}, {"x.*", 7},     {"x*.", 7},        {"sub.fol\\?", 8},
      {"*", 9},          {"*.*", 9},      {"*.tx", 10},   {"üb*", 11},       {"*.r", 12},
      {"?Ü.*", 13},      {".*", 14}};
  for (const auto& [pattern, size] : sizes) {
    for (const char* drive : {"C:\\", "\\\\?\\C:\\"}) {
      EXPECT_EQ(get_file_length((drive + pattern).c_str()), size) << drive << pattern;
    }
  }
}

TEST_F(FileQueries, DiskSpaceIsThatOfVolume) {
  const std::pair<const char*, const char*> targets[] = {{"a", "."}, {"b", "/dev/shm"}, {"z", "/proc"}};
  for (const auto& [drive, target] : targets) fs::create_symlink(target, folder.path(drive));
  Create({{"file", 0}});
  const std::tuple<int, const char*, std::string> cases[] = {
      {0, nullptr, "."}, {1, "A:", folder.path()}, {2, "B:\\", "/dev/shm"}, {26, "Z:", "/proc"}};
  for (const auto& [drive, path, volume] : cases) {
    bool agree = false;
    // Other processes write to the volumes, so the three calls are repeated until nothing changes between
    // them.
    for (int i = 0; i < 1000 && !agree; ++i) {
      const std::uintmax_t space = fs::space(volume).available;
      const auto capped = static_cast<int>(std::min<std::uintmax_t>(space, INT_MAX));
      agree = GetDiskSpaceByDriveName(path) == space && diskspace(drive) == capped;
    }
    EXPECT_TRUE(agree) << drive;
  }
  errno = 77;
  for (const int drive : {3, 27, -1, INT_MIN, INT_MAX}) EXPECT_EQ(diskspace(drive), 0) << drive;
  for (const char* path : {"", "*", "Q:\\", "A:\\missing", "A:\\file", "A:\\file\\"}) {
    EXPECT_EQ(GetDiskSpaceByDriveName(path), 0U) << path;
  }
  EXPECT_EQ(errno, 77);
}

TEST_F(FileQueries, RemoveTrailingBackSlashRemovesOne) {
  for (const auto& [path, expected] : {std::pair("", ""), {"\\", ""}, {"a\\\\", "a\\"}, {"a/", "a/"}}) {
    std::string buffer = path;
    RemoveTrailingBackSlash(buffer.data());
    EXPECT_STREQ(buffer.c_str(), expected);
  }
  RemoveTrailingBackSlash(nullptr);
}

TEST(NoDiskSpace, ShowsErrorAndExits) {
  const auto run_out = [] {
    SetShowErrorCallback([](const char* message) { std::cerr << '[' << message << ']'; });
    std::atexit([] { std::cerr << " at exit"; });
    no_disk_space();
  };
  EXPECT_EXIT(run_out(), ::testing::ExitedWithCode(1),
              "^\\[You have run out of space on your data disk\\.\nPlease free some disk space and re-run\n"
              "the system\\. Thank you\\.\\] at exit$");
  EXPECT_EXIT(no_disk_space(), ::testing::ExitedWithCode(1), "^$");
}

}  // namespace
