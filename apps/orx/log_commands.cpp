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
constexpr std::streamoff kBlockSize = 65536;
constexpr std::size_t kHeadSize = 512;  // enough for the header with the time
constexpr std::chrono::milliseconds kPollInterval(200);

volatile std::sig_atomic_t end_is_requested = 0;

void request_end(int /*signal*/) { end_is_requested = 1; }

// Keeps at most the first `count` characters of a UTF-8 text.
void cut_characters(std::string& text, std::size_t count) {
  const auto is_first_too_many = [&count](char c) {
    const bool starts_character = (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    return starts_character && count-- == 0;
  };
  text.erase(std::find_if(text.begin(), text.end(), is_first_too_many), text.end());
}

std::string log_file_of(const LogArguments& arguments) {
  std::array<char, ORX_LOG_PATH_LENGTH + 1> folder{};
  GetApplicationDataPath(folder.data(), ORX_LOG_PATH_LENGTH);
  std::string name = folder.data();
  if (name.empty()) throw Failure("the log", "there is no folder for it (PUBLIC is not set)");
  if (!name.ends_with('\\')) name += '\\';
  name += arguments.thread_log ? ORX_THREAD_LOG_NAME : ORX_LOG_NAME;
  cut_characters(name, ORX_LOG_PATH_LENGTH);  // as the library does
  std::array<char, ORX_PATH_SIZE> path{};
  if (orx_path_to_native(name.c_str(), path.data(), path.size()) != 0) {
    throw Failure(name, "the path is too long, or its drive has no folder");
  }
  return path.data();
}

std::streamoff size_of(std::istream& file) {
  file.seekg(0, std::ios::end);
  return file.tellg();
}

// The offset where the last `lines` lines begin. Reads the file backwards in blocks, so that the tail of a
// large log is found quickly. The line end of the last line does not count.
std::streamoff start_of_last(std::istream& file, int lines) {
  const std::streamoff size = size_of(file);
  std::string block;
  std::streamoff begin = lines > 0 ? size : 0;
  while (begin > 0) {
    const std::streamoff end = begin;
    begin = std::max<std::streamoff>(end - kBlockSize, 0);
    block.resize(static_cast<std::size_t>(end - begin));
    file.seekg(begin);
    if (!file.read(block.data(), end - begin)) return size;
    for (std::streamoff at = end - 1; at >= begin; --at) {
      const bool ends_line = block[static_cast<std::size_t>(at - begin)] == '\n' && at != size - 1;
      if (ends_line) --lines;
      if (lines == 0) return at + 1;
    }
  }
  return lines > 0 ? 0 : size;
}

// Reads a log that grows. Each call opens the file again, and notices when the log was emptied or replaced
// since the last call. `at_` is the offset of the next line, `head_` the start of the file at the last call.
class LogReader {
 public:
  explicit LogReader(std::string path) : path_(std::move(path)) {}

  // Skips all but the last `lines` lines. Returns false and sets errno if the log cannot be read.
  bool Skip(int lines) {
    std::ifstream file = Open();
    if (!file) return false;
    at_ = start_of_last(file, lines);
    return true;
  }

  // Calls `handle` for each new line. A line without a line end waits for the rest of it, unless `is_final`.
  template <class Handle>
  void Read(bool is_final, Handle handle) {
    std::ifstream file = Open();
    if (!file) at_ = 0;
    if (!file || at_ == size_of(file)) return;
    file.seekg(at_);
    for (std::string line; std::getline(file, line) && (is_final || !file.eof());) {
      at_ += static_cast<std::streamoff>(line.size()) + 1;
      if (line.ends_with('\r')) line.pop_back();
      handle(line);
    }
  }

 private:
  // A log that is shorter than before, or that begins differently (its header contains the time), is read
  // from its start.
  std::ifstream Open() {
    errno = 0;
    std::ifstream file(path_, std::ios::binary);
    if (!file) return file;
    std::string head(kHeadSize, '\0');
    file.read(head.data(), kHeadSize);
    head.resize(static_cast<std::size_t>(file.gcount()));
    if (file.bad()) return file;  // for example a folder
    file.clear();
    if (size_of(file) < at_ || !head.starts_with(head_)) at_ = 0;
    head_ = head;
    return file;
  }

  std::string path_;
  std::string head_;
  std::streamoff at_ = 0;
};

void follow(LogReader& reader, std::ostream& out) {
  std::signal(SIGINT, request_end);
  std::signal(SIGTERM, request_end);
  while (end_is_requested == 0) {
    reader.Read(/*is_final=*/false, [&](const std::string& line) { out << one_line(line) << '\n'; });
    out.flush();
    std::this_thread::sleep_for(kPollInterval);
  }
}

}  // namespace

void log_path(const LogArguments& arguments, std::ostream& out) {
  const std::string path = log_file_of(arguments);
  if (arguments.format == Format::kJson) return write_record(out, Record{{"Path", path}}, Format::kJson);
  out << one_line(path) << '\n';
}

void log_tail(const LogArguments& arguments, std::ostream& out) {
  const std::string path = log_file_of(arguments);
  LogReader reader(path);
  if (!reader.Skip(arguments.count) && !(arguments.follow && errno == ENOENT)) {
    throw Failure(path, std::generic_category().message(errno));
  }
  if (arguments.follow) return follow(reader, out);
  Table table{{"Line"}, {}};
  reader.Read(/*is_final=*/true, [&](const std::string& line) {
    if (arguments.format == Format::kText) out << one_line(line) << '\n';
    if (arguments.format == Format::kJson) table.rows.push_back({line});
  });
  if (arguments.format == Format::kJson) write_table(out, table, Format::kJson);
}

}  // namespace orx::cli
