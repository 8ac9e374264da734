#include <orx/platform/file_system.h>

#include <gtest/gtest.h>
#include <tests/support/environment.h>
#include <tests/support/process.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace orx::platform;
using namespace orx::testing;

namespace {

// The reason of the failure; empty when the file was replaced.
std::string replace(const std::string& path, const std::string& content) {
  FileReplacement file;
  std::string reason;
  errno = 77;
  const bool done = file.Open(path.c_str(), reason) && file.Write(content.data(), content.size(), reason) &&
                    file.Commit(reason);
  EXPECT_TRUE(errno == 77 && done == reason.empty()) << errno << reason;
  return reason;
}

struct stat status_of(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status;
}

class Replacement : public ::testing::Test {
 protected:
  std::ptrdiff_t Entries() const { return std::distance(fs::directory_iterator(folder.path()), {}); }

  const TempFolder folder;
  const std::string old = folder.path("old");
};

TEST_F(Replacement, CommitReplacesWholeContent) {
  write_file(old, "old");
  std::string reason, expected;
  FileReplacement file;
  EXPECT_TRUE(FileReplacement().Open(old.c_str(), reason)) << reason;  // and abandoned
  ASSERT_TRUE(file.Open(folder.suite_path("old").c_str(), reason)) << reason;
  for (const std::size_t size : {1U, 200'000U, 1U, 65'536U, 0U, 65'535U, 2U}) {
    expected.append(size, static_cast<char>('a' + expected.size() % 26));
    ASSERT_TRUE(file.Write(expected.data() + expected.size() - size, size, reason)) << reason;
  }
  EXPECT_EQ(read_file(old), "old");
  ASSERT_TRUE(file.Commit(reason)) << reason;
  EXPECT_TRUE(read_file(old) == expected);
  EXPECT_EQ(Entries(), 1);
  EXPECT_FALSE(file.Write("c", 1, reason) || file.Commit(reason));
}

TEST_F(Replacement, CommitKeepsPermissionsOwnerAndLinks) {
  const std::string longest = folder.path(std::string(255, 'n'));
  write_file(old, "old");
  [[maybe_unused]] const int only_as_root = chown(old.c_str(), 1234, 5678);
  fs::permissions(old, fs::perms(0646));
  fs::create_directory(folder.path("sub"));
  fs::create_symlink("sub/second", folder.path("first"));
  fs::create_symlink("../old", folder.path("sub/second"));
  fs::create_symlink(longest, folder.path("dangling"));
  const struct stat before = status_of(old);
  const mode_t mask = umask(027);
  EXPECT_EQ(replace(folder.path("first"), "new") + replace(folder.path("dangling"), "new"), "");
  umask(mask);
  const struct stat after = status_of(old);
  EXPECT_TRUE(fs::is_symlink(folder.path("first")) && fs::is_symlink(folder.path("sub/second")));
  EXPECT_EQ(read_file(old) + read_file(longest), "newnew");
  EXPECT_EQ(std::tie(after.st_mode, after.st_uid, after.st_gid),
            std::tie(before.st_mode, before.st_uid, before.st_gid));
  EXPECT_EQ(status_of(longest).st_mode & 0777, 0640U) << "of a new file, limited by the umask";
}

TEST_F(Replacement, OpenRefusesWhatIsNotARegularFile) {
  fs::create_directory(folder.path("sub"));
  fs::create_symlink("sub", folder.path("link"));
  fs::create_symlink("loop", folder.path("loop"));
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
  const std::tuple<std::string, EntryKind, const char*> cases[] = {
      {folder.path("link"), EntryKind::kFolder, "Is a directory"},
      {folder.path("new/"), EntryKind::kNone, "Is a directory"},
      {folder.path("pipe"), EntryKind::kFile, "Not a regular file"},
      {folder.path("loop"), EntryKind::kNone, "Too many levels of symbolic links"},
      {folder.path("missing/file"), EntryKind::kNone, "No such file or directory"},
      {folder.path(std::string(256, 'n')), EntryKind::kNone, "File name too long"},
      {"", EntryKind::kNone, "No such file or directory"},
  };
  for (const auto& [path, kind, reason] : cases) {
    EXPECT_EQ(entry_kind(path.c_str()), kind) << path;
    EXPECT_EQ(replace(path, "new"), reason) << path;
  }
  EXPECT_EQ(Entries(), 4);
}

TEST_F(Replacement, ReadOnlyFileIsRefusedAndReadOnlyFolderIsWrittenInPlace) {
  fs::create_directory(folder.path("closed"));
  for (const char* name : {"closed/file", "read_only"}) write_file(folder.path(name), "old");
  const std::pair<const char*, unsigned> modes[] = {
      {"closed/file", 0666}, {"closed", 0555}, {"read_only", 0444}, {"", 0777}};
  for (const auto& [name, mode] : modes) fs::permissions(folder.path(name), fs::perms(mode));
  as_nobody([&] {
    EXPECT_EQ(replace(folder.path("new"), "new"), "");
    for (const char* name : {"read_only", "closed/new"})
      EXPECT_EQ(replace(folder.path(name), "new"), "Permission denied") << name;
    for (const char* content : {"in place, because the folder refuses a temporary file", "new"}) {
      EXPECT_EQ(replace(folder.path("closed/file"), content), "");
      EXPECT_EQ(read_file(folder.path("closed/file")), content);
    }
    const rlimit three_bytes{3, 3};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &three_bytes), 0);
    EXPECT_EQ(replace(folder.path("new"), "four"), "File too large");
    EXPECT_EQ(replace(folder.path("closed/file"), "four"), "File too large");
    EXPECT_EQ(read_file(folder.path("closed/file")), "new") << "restored";
  });
  EXPECT_EQ(Entries(), 3);
  fs::permissions(folder.path("closed"), fs::perms(0777));  // so that its owner can remove it
}

TEST_F(Replacement, CommitKeepsAccessControlList) {
  // u::rw- u:1234:r-- g::--- m::rw- o::---
  const unsigned char list[] = {2, 0,   0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  4,
                                0, 210, 4,   0,   0,   4,   0,  0, 0,   255, 255, 255, 255, 16, 0,
                                6, 0,   255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};
  constexpr char kName[] = "system.posix_acl_access";
  write_file(old, "old");
  if (setxattr(old.c_str(), kName, list, sizeof list, 0) != 0) GTEST_SKIP() << "no lists on this file system";
  EXPECT_EQ(replace(old, "new"), "");
  const auto below_root = [&] { return chroot(folder.path().c_str()) == 0 ? "/old" : old; };  // without /proc
  in_new_process([&] { EXPECT_EQ(replace(below_root(), "new"), ""); }, _exit);
  unsigned char kept[64] = {};
  EXPECT_EQ(getxattr(old.c_str(), kName, kept, sizeof kept), static_cast<ssize_t>(sizeof list));
  EXPECT_TRUE(std::equal(std::begin(list), std::end(list), kept));
  EXPECT_EQ(setxattr(folder.path().c_str(), "system.posix_acl_default", list, sizeof list, 0), 0);
  EXPECT_EQ(removexattr(old.c_str(), kName), 0);
  EXPECT_EQ(replace(old, "new"), "");
  EXPECT_EQ(getxattr(old.c_str(), kName, kept, sizeof kept), -1) << "the folder's default list is not used";
}

TEST_F(Replacement, OpenRemovesTemporaryFilesOfKilledProcesses) {
  write_file(old, "old");
  FileReplacement running;
  std::string reason;
  ASSERT_TRUE(running.Open(old.c_str(), reason)) << reason;
  const pid_t child = start_process(
      [&] {
        FileReplacement killed;
        killed.Open(old.c_str(), reason);
        raise(SIGKILL);
      },
      _exit);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_EQ(Entries(), 3);
  EXPECT_EQ(replace(folder.path("other"), "") + replace(old, "new"), "");
  EXPECT_EQ(Entries(), 3) << "two files, and the temporary file of the running replacement";
  ASSERT_TRUE(running.Write("last", 4, reason) && running.Commit(reason)) << reason;
  EXPECT_EQ(read_file(old), "last");
}

}  // namespace
