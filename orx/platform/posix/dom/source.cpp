#include <orx/platform/posix/dom/source.h>

#include <orx/base/ascii.h>
#include <orx/platform/posix/drive_path.h>
#include <orx/platform/posix/support/error_text.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace orx::platform::dom {
namespace {

// The characters of windows-1252 from 0x80 to 0x9F; the five that it leaves open are the controls of the same
// number.
constexpr std::array<unsigned short, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Empty when the document does not say.
std::string declared_encoding(std::string_view head) {
  if (!head.starts_with("<?xml") || head.substr(5).find_first_of(" \t\r\n") != 0) return {};
  head = head.substr(0, head.find("?>"));
  const std::size_t key = head.find("encoding");
  const std::size_t open = head.find_first_of("\"'", std::min(key, head.size()));
  if (open == std::string_view::npos) return {};
  const std::size_t close = head.find(head[open], open + 1);
  return std::string(close == std::string_view::npos ? "" : head.substr(open + 1, close - open - 1));
}

std::string in_capitals(std::string text) {
  for (char& c : text) c = to_upper(c);
  return text;
}

// The converter takes other names for that of the locale, or for options.
bool is_of_encoding_name(char c) { return is_letter(c) || is_digit(c) || c == '-' || c == '.' || c == '_'; }

bool is_readable(int file, std::string& reason) {
  struct stat status;
  if (file < 0 || fstat(file, &status) != 0) {
    reason = error_text(errno);
  } else if (S_ISDIR(status.st_mode)) {
    reason = "it is a folder";
  } else if (!S_ISREG(status.st_mode)) {
    reason = "it is not a regular file";
  } else if (static_cast<std::size_t>(status.st_size) > kMaxDocumentBytes) {
    reason = kTooLarge;
  } else {
    return true;
  }
  return false;
}

}  // namespace

Source::~Source() {
  if (file_ >= 0) close(file_);
  if (converter_ != no_converter()) iconv_close(converter_);
}

bool Source::OpenFile(const char* path, std::string& reason) {
  // Without O_NONBLOCK a FIFO would be waited on.
  SystemPath where = parse_path(path);
  file_ = on_path(where,
                  [](const char* name) { return open(name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); });
  if (!is_readable(file_, reason)) return false;
  char head[512];
  const ssize_t size = pread(file_, head, sizeof head, 0);
  if (size < 0) reason = error_text(errno);
  if (size == 0) reason = "the file is empty";
  return size > 0 && ChooseBySight({head, static_cast<std::size_t>(size)}, reason);
}

// What its declaration says is how a text would be encoded in a file.
bool Source::OpenText(std::string_view text, std::string& reason) {
  text_ = text;
  if (text.size() > kMaxDocumentBytes) {
    reason = kTooLarge;
    return false;
  }
  return Choose(declared_encoding(text.substr(0, 512)), reason) && (form_ = Form::kUtf8, true);
}

bool Source::ChooseBySight(std::string_view head, std::string& reason) {
  using namespace std::string_view_literals;
  if (head.starts_with("\xFF\xFE") || head.starts_with("<\0?\0"sv)) return Choose("UTF-16LE", reason);
  if (head.starts_with("\xFE\xFF") || head.starts_with("\0<\0?"sv)) return Choose("UTF-16BE", reason);
  if (!head.starts_with("\xEF\xBB\xBF")) return Choose(declared_encoding(head), reason);
  return Choose(declared_encoding(head.substr(3)), reason) && (form_ = Form::kUtf8, true);
}

bool Source::Choose(const std::string& encoding, std::string& reason) {
  static constexpr std::pair<std::string_view, Form> kOwn[] = {{"", Form::kUtf8},
                                                               {"UTF-8", Form::kUtf8},
                                                               {"UTF-16", Form::kUtf16LE},
                                                               {"UTF-16LE", Form::kUtf16LE},
                                                               {"UTF-16BE", Form::kUtf16BE},
                                                               {"ISO-8859-1", Form::kLatin1},
                                                               {"LATIN1", Form::kLatin1},
                                                               {"WINDOWS-1252", Form::kWindows1252},
                                                               {"CP1252", Form::kWindows1252}};
  for (const auto& [name, form] : kOwn) {
    if (in_capitals(encoding) != name) continue;
    form_ = form;
    return true;
  }
  form_ = Form::kConverted;
  const bool is_name = std::ranges::all_of(encoding, is_of_encoding_name);
  if (is_name) converter_ = iconv_open("UTF-8", encoding.c_str());
  if (converter_ != no_converter()) return true;
  if (is_name && errno == ENOMEM) throw std::bad_alloc();
  reason = is_name ? "unknown encoding \"" + encoding + '"' : "unknown encoding";
  return false;
}

int Source::Read(char* out, int size) noexcept {
  const int count = form_ == Form::kUtf8 ? ReadRaw(out, static_cast<std::size_t>(size))
                                         : Decode(out, static_cast<std::size_t>(size));
  if (count <= 0) return count;
  // The parser would take a NUL behind the root for the end.
  if (std::memchr(out, 0, static_cast<std::size_t>(count)) != nullptr) return Stop("it holds a NUL");
  is_valid_ &= validator_.Feed(reinterpret_cast<unsigned char*>(out), static_cast<std::size_t>(count));
  return count;
}

int Source::ReadRaw(char* out, std::size_t size) noexcept {
  ssize_t count = 0;
  if (file_ < 0) {
    count = static_cast<ssize_t>(text_.copy(out, size));
    text_.remove_prefix(static_cast<std::size_t>(count));
  } else {
    do {
      count = read(file_, out, size);
    } while (count < 0 && errno == EINTR);
  }
  if (count < 0) return Stop(strerrordesc_np(errno));
  bytes_read_ += static_cast<std::size_t>(count);
  return bytes_read_ <= kMaxDocumentBytes ? static_cast<int>(count) : Stop(kTooLarge);
}

int Source::Decode(char* out, std::size_t size) noexcept {
  for (;;) {
    const bool is_utf16 = form_ == Form::kUtf16LE || form_ == Form::kUtf16BE;
    const std::size_t count = form_ == Form::kConverted ? Convert(out, size)
                              : is_utf16                ? DecodeUtf16(out, size)
                                                        : DecodeBytes(out, size);
    if (problem_ != nullptr) return -1;
    if (count > 0) return static_cast<int>(count);
    if (at_end_) return raw_begin_ < raw_end_ ? Stop("it ends in the middle of a character") : 0;
    raw_end_ =
        static_cast<std::size_t>(std::copy(&raw_[raw_begin_], &raw_[0] + raw_end_, &raw_[0]) - &raw_[0]);
    raw_begin_ = 0;
    const int more = ReadRaw(&raw_[raw_end_], raw_.size() - raw_end_);
    if (more < 0) return -1;
    at_end_ = more == 0;
    raw_end_ += static_cast<std::size_t>(more);
  }
}

std::size_t Source::DecodeBytes(char* out, std::size_t size) noexcept {
  const char* begin = out;
  const char* end = out + size;
  while (raw_begin_ < raw_end_ && end - out >= 3) {
    unsigned c = static_cast<unsigned char>(raw_[raw_begin_++]);
    if (form_ == Form::kWindows1252 && c >= 0x80 && c < 0xA0) c = kWindows1252[c - 0x80];
    out = utf8::encode(c, out);
  }
  return static_cast<std::size_t>(out - begin);
}

unsigned Source::UnitAt(std::size_t position) const noexcept {
  const unsigned first = static_cast<unsigned char>(raw_[position]);
  const unsigned second = static_cast<unsigned char>(raw_[position + 1]);
  return form_ == Form::kUtf16LE ? first | second << 8U : first << 8U | second;
}

std::size_t Source::DecodeUtf16(char* out, std::size_t size) noexcept {
  const char* begin = out;
  const char* end = out + size;
  while (raw_end_ - raw_begin_ >= 2 && end - out >= 4) {
    unsigned c = UnitAt(raw_begin_);
    const std::size_t units = (c & 0xF800U) == 0xD800 ? 2 : 1;
    if (units == 2) {
      if (raw_end_ - raw_begin_ < 4 && (c & 0x400U) == 0) break;
      const unsigned low = (c & 0x400U) == 0 ? UnitAt(raw_begin_ + 2) : 0;
      if ((low & 0xFC00U) != 0xDC00) {
        if (out == begin) Stop("it is not valid in its encoding");
        break;
      }
      c = 0x10000 + ((c & 0x3FFU) << 10U) + (low & 0x3FFU);
    }
    raw_begin_ += 2 * units;
    out = utf8::encode(c, out);
  }
  return static_cast<std::size_t>(out - begin);
}

std::size_t Source::Convert(char* out, std::size_t size) noexcept {
  char* in = &raw_[0] + raw_begin_;
  std::size_t in_left = raw_end_ - raw_begin_;
  std::size_t out_left = size;
  const bool stopped = iconv(converter_, &in, &in_left, &out, &out_left) == static_cast<std::size_t>(-1);
  // Room that ran out, or a character that goes on in the bytes to come, is no problem.
  if (stopped && errno == EILSEQ && out_left == size) Stop("it is not valid in its encoding");
  raw_begin_ = raw_end_ - in_left;
  return size - out_left;
}

int Source::Stop(const char* problem) noexcept {
  problem_ = problem;
  return -1;
}

}  // namespace orx::platform::dom
