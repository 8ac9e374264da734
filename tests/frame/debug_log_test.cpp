#include <orx/frame/debug_log.h>

#include <gtest/gtest.h>
#include <orx/settings/registry.h>
#include <tests/support/environment.h>
#include <tests/support/process.h>

#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <regex>
#include <utility>

namespace fs = std::filesystem;
using namespace orx::testing;

namespace {

class DebugLog : public ::testing::Test {
 protected:
  DebugLog() {
    fs::create_directories(folder.path(data));
    fs::create_directory(folder.path("sub"));
  }

  // The content of a log, with H in place of its header and E in place of error lines.
  std::string Content(const std::string& path) const {
    static const std::regex header("Log file '[^']*' opened at [^\r]*\\.\r\n-{27}\r\n"),
        error("halvark_error: \r\n");
    return std::regex_replace(std::regex_replace(read_file(folder.path(path)), header, "H"), error, "E");
  }

  const TempFolder folder;
  const ScopedVariable no_registry{"ORX_MACHINE_REGISTRY", folder.path("registry.db").c_str()};
  const ScopedVariable shared{"PUBLIC", folder.path().c_str()};
  const std::string data = "Halvark/TESSEL/" ORX_PRODUCT_VERSION "/";
  const std::string main = data + ORX_LOG_NAME, second = data + ORX_THREAD_LOG_NAME;
  const std::string sub = "sub/" ORX_LOG_NAME;
};

TEST_F(DebugLog, WriteKeepsTextAndFormattedLineIsCut) {
  const char* volatile none = nullptr;
  const wchar_t no_character[] = {WCHAR_MIN, 0};
  const std::string most(ORX_LOG_LINE_LENGTH, '0'), large(3'000'000, 'x');
  in_new_process([&] {
    halvark_log_debug_init(nullptr);
    for (const char* text : {"%s %n", "a\nb\r\nc\r", "\n", "\xC3\xBC\xFF", large.c_str()})
      EXPECT_EQ(halvark_log_debug_write(text), 0);
    for (const int more : {-1, 0, 900})
      EXPECT_EQ(halvark_log_debug_write_n("%0*d", ORX_LOG_LINE_LENGTH + more, 0), 0);
    EXPECT_EQ(halvark_log_debug_write_n_thread("%.2f%s%ls%%", 1.5, none, L"\u20AC"), 0);
    EXPECT_EQ(halvark_log_debug_write_n_thread("as far as %ls", no_character), 0);
    EXPECT_EQ(halvark_log_debug_write(nullptr) + halvark_log_debug_write(""), -2);
    EXPECT_EQ(halvark_log_debug_write_n(nullptr) + halvark_log_debug_write_n("%s", ""), -2);
  });
  EXPECT_TRUE(Content(main) == "H%s %n\r\na\r\nb\r\r\nc\r\r\n\r\n\r\n\xC3\xBC\xFF\r\n" + large + "\r\n" +
                                   most.substr(1) + "\r\n" + most + "\r\n" + most + "\r\n");
  EXPECT_EQ(Content(second), "1.50(null)\xE2\x82\xAC%\r\nas far as \r\n");
}

TEST_F(DebugLog, IsInApplicationDataFolderUnlessStartedElsewhere) {
  const std::map<char, std::function<int()>> calls = {
      {'w', [] { return halvark_log_debug_write("w"); }},
      {'t', [] { return halvark_log_debug_write_thread("t"); }},
      {'e', halvark_log_debug_error},
      {'c', [] { return halvark_log_debug_close() + halvark_log_debug_close_thread(); }},
      {'i', [] { return halvark_log_debug_init(""); }},
      {'s', [&] { return halvark_log_debug_init(folder.suite_path("sub").c_str()); }},
      {'m', [&] { return halvark_log_debug_init(folder.suite_path("missing").c_str()) + 1; }}};
  // The calls, and the contents of the three logs after them, without line ends. In the last row, the
  // error starts the main log because the thread log was used before.
  const std::pair<std::string, std::string> cases[] = {
      {"wcw", "oww,,"}, {"tt", "o,tt,"},  {"iwi", "H,,"},     {"swte", "o,t,HwE"}, {"sie", "HE,,H"},
      {"e", "oE,,"},    {"mew", "HEw,,"}, {"smwe", "owE,,H"}, {"te", "HE,t,"}};
  for (const auto& [made, expected] : cases) {
    for (const std::string& path : {main, second, sub})
      write_file(folder.path(path), path == main ? "o" : "");
    in_new_process([&, &made = made] {
      for (const char call : made) EXPECT_EQ(calls.at(call)(), 0) << made << ", " << call;
    });
    const std::string contents = Content(main) + ',' + Content(second) + ',' + Content(sub);
    EXPECT_EQ(std::regex_replace(contents, std::regex("\r\n"), ""), expected) << made;
  }
}

// The first character is the number of the process. Some lines are longer than a page or a formatted line.
std::string line_of(int process, int number) {
  const auto filling = static_cast<std::size_t>(number) * 7919 % 12'000;
  return std::to_string(process) + ' ' + std::to_string(number) + ' ' + std::string(filling, '-') + '.';
}

TEST_F(DebugLog, LinesOfSeveralProcessesAreNotMixed) {
  constexpr int kProcesses = 8, kLines = 500;
  in_new_process([&] {
    halvark_log_debug_init(folder.suite_path("sub").c_str());
    std::vector<pid_t> writers;
    for (int process = 0; process < kProcesses; ++process) {
      writers.push_back(start_process([process] {
        for (int number = 0; number < kLines; ++number)
          EXPECT_EQ(halvark_log_debug_write(line_of(process, number).c_str()), 0);
      }));
    }
    for (const pid_t writer : writers) expect_success(writer);
  });
  std::ifstream log(folder.path(sub), std::ios::binary);
  std::string line;
  for (int header = 0; header < 2; ++header) std::getline(log, line);
  std::map<int, int> found;
  while (std::getline(log, line)) {
    const int process = line[0] - '0';
    ASSERT_EQ(line, line_of(process, found[process]++) + '\r');
  }
  for (int process = 0; process < kProcesses; ++process) EXPECT_EQ(found[process], kLines);
}

TEST_F(DebugLog, LineGoesToOutputAndDebuggerWhenFileFails) {
  const std::string path = folder.path(sub), out = folder.path("out"), debugger = folder.path("debugger");
  const std::pair<std::function<void()>, int> obstacles[] = {
      {[&] { fs::remove(folder.path("sub")); }, -1},
      {[&] { fs::create_directories(path); }, -1},
      {[&] { fs::create_symlink("/dev/full", path); }, -1},
      {[&] { mkfifo(path.c_str(), 0666); }, -1},  // nobody reads it
      {[] {}, 0}};
  in_new_process([&] {
    halvark_log_debug_init(folder.suite_path("sub\\").c_str());
    const ScopedVariable destination("ORX_DEBUG_OUTPUT", debugger.c_str());
    ASSERT_NE(std::freopen(out.c_str(), "w", stdout), nullptr);
    for (const auto& [obstacle, result] : obstacles) {
      fs::remove(path);
      obstacle();
      std::fputs("host, ", stdout);
      errno = 77;
      EXPECT_EQ(halvark_log_debug_write("%s"), result);
      EXPECT_EQ(errno, 77);
      EXPECT_EQ(halvark_log_debug_print(result), 0);
    }
  });
  EXPECT_EQ(read_file(out), "host, host, %s\nhost, %s\nhost, %s\nhost, %s\n");
  EXPECT_EQ(read_file(debugger), "%s\n%s\n%s\n%s\n%s\n");
}

TEST_F(DebugLog, LineOfCancelledThreadIsWritten) {
  in_new_process([&] {
    halvark_log_debug_init(folder.suite_path("sub").c_str());
    int result = 1;
    on_cancelled_thread([&] { result = halvark_log_debug_write("line"); });
    EXPECT_EQ(result, 0);
  });
  EXPECT_EQ(Content(sub), "Hline\r\n");
}

TEST_F(DebugLog, NewLogGetsRightsAndGroupOfFolder) {
  for (const mode_t mode : {01777U, 02777U, 0700U}) {
    fs::remove_all(folder.path("Halvark"));
    chmod(folder.path().c_str(), mode);
    in_new_process([] {
      umask(077);
      EXPECT_EQ(setgid(5678), geteuid() == 0 ? 0 : -1);  // not the group of the folder
      EXPECT_EQ(halvark_log_debug_write("first"), 0);
    });
    struct stat parent, level, log;
    for (const auto& [path, status] :
         {std::pair("", &parent), {"Halvark/TESSEL", &level}, {main.c_str(), &log}})
      ASSERT_EQ(stat(folder.path(path).c_str(), status), 0) << path;
    EXPECT_EQ(level.st_mode, parent.st_mode);
    EXPECT_EQ(log.st_mode & 07777, mode & 0666);
    EXPECT_TRUE(level.st_gid == parent.st_gid && log.st_gid == parent.st_gid) << level.st_gid << log.st_gid;
    if (mode != 0700) as_nobody([] { EXPECT_EQ(halvark_log_debug_write("second"), 0); });
  }
}

TEST_F(DebugLog, LinkOfOtherUserIsRefusedInSharedFolder) {
  const std::string path = folder.path(sub), victim = folder.path("victim");
  const auto link_of_another = [&] {
    fs::create_symlink("../victim", path);
    return lchown(path.c_str(), 1234, 1234) == 0;  // only the administrator can pretend to be another user
  };
  const auto second_name = [&] { return link(victim.c_str(), path.c_str()) == 0; };
  const auto own_link = [&] { return symlink("../victim", path.c_str()) != 0; };  // false: it is not refused
  const std::pair<mode_t, std::function<bool()>> cases[] = {{0777, link_of_another}, {01777, link_of_another},
                                                            {0775, second_name},     {0777, own_link},
                                                            {0755, link_of_another}, {0755, second_name}};
  for (const auto& [mode, plant] : cases) {
    fs::remove(path);
    write_file(victim, "victim");
    chmod(folder.path("sub").c_str(), mode);
    const bool is_refused = plant() && mode != 0755;
    const int expected = is_refused ? -1 : 0;
    in_new_process([&] { EXPECT_EQ(halvark_log_debug_init(folder.suite_path("sub").c_str()), expected); });
    EXPECT_EQ(Content("victim"), is_refused ? "victim" : "H") << mode;
  }
}

TEST_F(DebugLog, ResetDeletesLogsInCurrentDirectoryOnly) {
  in_new_process([&] {
    fs::current_path(folder.path("sub"));
    for (const char* name : {ORX_LOG_NAME, ORX_THREAD_LOG_NAME, "other"}) write_file(name, "");
    EXPECT_EQ(halvark_log_debug_write("line") + halvark_log_debug_reset() + halvark_log_debug_reset(), 0);
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 1);
    EXPECT_EQ(Content(main), "line\r\n");
  });
}

TEST_F(DebugLog, PathIsCutAndFolderIsLookedForAgain) {
  in_new_process([&] {
    const std::string name(254 - folder.path().size(), 'n');
    fs::create_directory(folder.path(name));
    const std::string header = "Log file '" + folder.suite_path(name);
    EXPECT_EQ(halvark_log_debug_init(folder.suite_path(name).c_str()), 0);
    const std::string first_line = header.substr(0, ORX_LOG_PATH_LENGTH) + "\r\n-";
    EXPECT_TRUE(read_file(folder.path(name + "/DEBU")).starts_with(first_line));
    EXPECT_EQ(halvark_log_debug_init(std::string(100'000, 'n').c_str()), -1);
    const std::string words = kEightyLetters + "/" + kEightyLetters;
    fs::create_directories(folder.path(words));
    EXPECT_EQ(halvark_log_debug_init(folder.suite_path(words).c_str()), 0);
    EXPECT_EQ(Content(words + "/" ORX_LOG_NAME), "H") << "the limit counts characters, not bytes";
    unsetenv("PUBLIC");
    EXPECT_EQ(halvark_log_debug_init(nullptr) + halvark_log_debug_write_thread("line"), -2);
    setenv("PUBLIC", folder.path().c_str(), 1);
    EXPECT_EQ(halvark_log_debug_write_thread("line"), 0) << "the folder is looked for again";
  });
}

}  // namespace
