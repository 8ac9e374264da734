#include <orx/frame/application_data.h>
#include <orx/frame/debug_log.h>
#include <orx/frame/native_path.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

#include "commands.h"
#include "failure.h"

namespace orx::cli {
namespace {

static_assert(ORX_LOG_PATH_LENGTH + 1 >= ORX_APPLICATION_DATA_PATH_SIZE);
constexpr std::streamoff kBlock = 65536;
constexpr std::size_t kHead = 512;
constexpr std::chrono::milliseconds kPause(200);

volatile std::sig_atomic_t was_asked_to_end = 0;

void ask_to_end(int /*signal*/) { was_asked_to_end = 1; }

std::string log_file(const LogArguments& arguments) {
  std::array<char, ORX_LOG_PATH_LENGTH + 1> folder{};
  GetApplicationDataPath(folder.data(), ORX_LOG_PATH_LENGTH);
  std::string name = folder.data();
  if (name.empty()) throw Failure("the log", "there is no folder for it (PUBLIC is not set)");
  if (!name.ends_with('\\')) name += '\\';
  name += arguments.thread_log ? ORX_THREAD_LOG_NAME : ORX_LOG_NAME;
  name.resize(std::min<std::size_t>(name.size(), ORX_LOG_PATH_LENGTH));
  std::array<char, 4096> path{};
  if (orx_path_to_native(name.c_str(), path.data(), path.size()) != 0) {
    throw Failure(name, "the path is too long, or its drive has no folder");
  }
  return path.data();
}

std::streamoff size_of(std::istream& file) {
  file.seekg(0, std::ios::end);
  return file.tellg();
}

// Where the last so many lines begin. Reads no more of the file than them.
std::streamoff start_of_last(std::istream& file, int lines) {
  const std::streamoff size = size_of(file);
  std::string block;
  std::streamoff begin = lines > 0 ? size : 0;
  while (begin > 0) {
    const std::streamoff end = begin;
    begin = std::max<std::streamoff>(end - kBlock, 0);
    block.resize(static_cast<std::size_t>(end - begin));
    file.seekg(begin);
    if (!file.read(block.data(), end - begin)) return size;
    for (std::streamoff at = end; at-- > begin;) {
      const bool ends_line = block[static_cast<std::size_t>(at - begin)] == '\n' && at != size - 1;
      if (ends_line && --lines == 0) return at + 1;
    }
  }
  return lines > 0 ? 0 : size;
}

// A log that is read on and on, also when it is emptied or replaced meanwhile.
class Reader {
 public:
  explicit Reader(std::string path) : path_(std::move(path)) {}

  // False, with errno, if there is no log.
  bool Skip(int lines) {
    std::ifstream file = Open();
    if (!file) return false;
    at_ = start_of_last(file, lines);
    return true;
  }

  // Gives what came since, line by line; a line without an end only if nothing more is to come.
  template <class Give>
  void Read(bool is_final, Give give) {
    std::ifstream file = Open();
    if (!file) at_ = 0;
    if (!file || at_ == size_of(file)) return;
    file.seekg(at_);
    for (std::string line; std::getline(file, line) && (is_final || !file.eof());) {
      at_ += static_cast<std::streamoff>(line.size()) + 1;
      if (line.ends_with('\r')) line.pop_back();
      give(line);
    }
  }

 private:
  // A log that is shorter, or begins otherwise than it did (its header has the time), is read from its start.
  std::ifstream Open() {
    errno = 0;
    std::ifstream file(path_, std::ios::binary);
    if (!file) return file;
    std::string head(kHead, '\0');
    file.read(head.data(), kHead);
    head.resize(static_cast<std::size_t>(file.gcount()));
    if (file.bad()) return file;  // a folder, for one
    file.clear();
    if (size_of(file) < at_ || !head.starts_with(head_)) at_ = 0;
    head_ = head;
    return file;
  }

  std::string path_;
  std::string head_;
  std::streamoff at_ = 0;
};

void follow(Reader& reader, std::ostream& out) {
  std::signal(SIGINT, ask_to_end);
  std::signal(SIGTERM, ask_to_end);
  while (was_asked_to_end == 0) {
    reader.Read(/*is_final=*/false, [&](const std::string& line) { out << one_line(line) << '\n'; });
    out.flush();
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace

void log_path(const LogArguments& arguments, std::ostream& out) {
  const std::string path = log_file(arguments);
  if (arguments.format == Format::kJson) return write(out, Record{{"Path", path}}, Format::kJson);
  out << one_line(path) << '\n';
}

void log_tail(const LogArguments& arguments, std::ostream& out) {
  const std::string path = log_file(arguments);
  Reader reader(path);
  if (!reader.Skip(arguments.count) && !(arguments.follow && errno == ENOENT)) {
    throw Failure(path, std::generic_category().message(errno));
  }
  if (arguments.follow) return follow(reader, out);
  Table table{{"Line"}, {}};
  reader.Read(/*is_final=*/true, [&](const std::string& line) {
    if (arguments.format == Format::kText) out << one_line(line) << '\n';
    if (arguments.format == Format::kJson) table.rows.push_back({line});
  });
  if (arguments.format == Format::kJson) write(out, table, Format::kJson);
}

}  // namespace orx::cli
