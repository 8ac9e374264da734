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

// The bytes at the beginning of a document in which its declaration is looked for.
constexpr std::size_t kHeadBytes = 512;

// The characters of windows-1252 from 0x80 to 0x9F. The five unused codes are the control characters of
// the same numbers.
constexpr std::array<unsigned short, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The name in the encoding declaration; empty without a declaration. `head` is the start of the document.
std::string declared_encoding(std::string_view head) {
  if (!head.starts_with("<?xml") || head.substr(5).find_first_of(" \t\r\n") != 0) return {};
  head = head.substr(0, head.find("?>"));
  const std::size_t key = head.find("encoding");
  const std::size_t open = head.find_first_of("\"'", std::min(key, head.size()));
  if (open == std::string_view::npos) return {};
  const std::size_t close = head.find(head[open], open + 1);
  if (close == std::string_view::npos) return {};
  return std::string(head.substr(open + 1, close - open - 1));
}

std::string uppercase(std::string text) {
  for (char& c : text) c = to_upper(c);
  return text;
}

// Other characters are not passed to iconv_open, which would read them as options. An empty name would mean
// the encoding of the locale.
bool can_be_in_encoding_name(char c) {
  return is_letter(c) || is_digit(c) || c == '-' || c == '.' || c == '_';
}

constexpr bool is_surrogate(unsigned unit) { return (unit & 0xF800U) == 0xD800U; }
constexpr bool is_high_surrogate(unsigned unit) { return (unit & 0xFC00U) == 0xD800U; }
constexpr bool is_low_surrogate(unsigned unit) { return (unit & 0xFC00U) == 0xDC00U; }

// `file` is negative when open failed, with the error in errno.
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
  // With O_NONBLOCK, open does not wait for the writer of a FIFO.
  SystemPath where = parse_path(path);
  file_ = on_path(where,
                  [](const char* name) { return open(name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); });
  if (!is_readable(file_, reason)) return false;
  char head[kHeadBytes];
  const ssize_t size = pread(file_, head, sizeof head, 0);
  if (size < 0) reason = error_text(errno);
  if (size == 0) reason = "the file is empty";
  return size > 0 && DetectEncoding({head, static_cast<std::size_t>(size)}, reason);
}

// The declaration of a text says how the text would be encoded in a file. An unknown encoding is refused, a
// known one is ignored: the text is UTF-8.
bool Source::OpenText(std::string_view text, std::string& reason) {
  text_ = text;
  if (text.size() > kMaxDocumentBytes) return refuse(reason, kTooLarge);
  if (!SetEncoding(declared_encoding(text.substr(0, kHeadBytes)), reason)) return false;
  form_ = Form::kUtf8;
  return true;
}

bool Source::DetectEncoding(std::string_view head, std::string& reason) {
  using namespace std::string_view_literals;
  if (head.starts_with("\xFF\xFE") || head.starts_with("<\0?\0"sv)) return SetEncoding("UTF-16LE", reason);
  if (head.starts_with("\xFE\xFF") || head.starts_with("\0<\0?"sv)) return SetEncoding("UTF-16BE", reason);
  if (!head.starts_with("\xEF\xBB\xBF")) return SetEncoding(declared_encoding(head), reason);
  if (!SetEncoding(declared_encoding(head.substr(3)), reason)) return false;
  form_ = Form::kUtf8;
  return true;
}

bool Source::SetEncoding(const std::string& encoding, std::string& reason) {
  static constexpr std::pair<std::string_view, Form> kOwn[] = {{"", Form::kUtf8},
                                                               {"UTF-8", Form::kUtf8},
                                                               {"UTF-16", Form::kUtf16LE},
                                                               {"UTF-16LE", Form::kUtf16LE},
                                                               {"UTF-16BE", Form::kUtf16BE},
                                                               {"ISO-8859-1", Form::kLatin1},
                                                               {"LATIN1", Form::kLatin1},
                                                               {"WINDOWS-1252", Form::kWindows1252},
                                                               {"CP1252", Form::kWindows1252}};
  const std::string upper = uppercase(encoding);
  for (const auto& [name, form] : kOwn) {
    if (upper != name) continue;
    form_ = form;
    return true;
  }
  form_ = Form::kConverted;
  const bool is_name = std::ranges::all_of(encoding, can_be_in_encoding_name);
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
  // The parser would take a NUL after the document element for the end of the document.
  if (std::memchr(out, 0, static_cast<std::size_t>(count)) != nullptr) return Fail("it holds a NUL");
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
  if (count < 0) return Fail(strerrordesc_np(errno));
  bytes_read_ += static_cast<std::size_t>(count);
  return bytes_read_ <= kMaxDocumentBytes ? static_cast<int>(count) : Fail(kTooLarge);
}

// Decodes the bytes in raw_. Reads more when they are no complete character.
int Source::Decode(char* out, std::size_t size) noexcept {
  for (;;) {
    const std::size_t count = DecodeRaw(out, size);
    if (problem_ != nullptr) return -1;
    if (count > 0) return static_cast<int>(count);
    if (at_end_) return raw_begin_ < raw_end_ ? Fail("it ends in the middle of a character") : 0;
    if (!FillRaw()) return -1;
  }
}

// Moves the bytes that are left to the beginning of raw_, and appends the next bytes of the document.
bool Source::FillRaw() noexcept {
  const std::size_t rest = raw_end_ - raw_begin_;
  std::memmove(raw_.data(), raw_.data() + raw_begin_, rest);
  raw_begin_ = 0;
  raw_end_ = rest;
  const int more = ReadRaw(raw_.data() + rest, raw_.size() - rest);
  if (more < 0) return false;
  at_end_ = more == 0;
  raw_end_ += static_cast<std::size_t>(more);
  return true;
}

std::size_t Source::DecodeRaw(char* out, std::size_t size) noexcept {
  switch (form_) {
    case Form::kConverted:
      return Convert(out, size);
    case Form::kUtf16LE:
    case Form::kUtf16BE:
      return DecodeUtf16(out, size);
    default:
      return DecodeBytes(out, size);
  }
}

// Encodings with one byte per character. Each character takes at most three bytes of UTF-8.
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

// Stops before a surrogate pair that is cut or invalid. An invalid pair is a failure only in the next call,
// when nothing was decoded before it, so that the parser first gets all characters before the pair.
std::size_t Source::DecodeUtf16(char* out, std::size_t size) noexcept {
  const char* begin = out;
  const char* end = out + size;
  while (raw_end_ - raw_begin_ >= 2 && end - out >= 4) {
    unsigned c = UnitAt(raw_begin_);
    std::size_t units = 1;
    if (is_surrogate(c)) {
      if (is_high_surrogate(c) && raw_end_ - raw_begin_ < 4) break;
      const unsigned low = is_high_surrogate(c) ? UnitAt(raw_begin_ + 2) : 0;
      if (!is_low_surrogate(low)) {
        if (out == begin) Fail("it is not valid in its encoding");
        break;
      }
      c = 0x10000 + ((c & 0x3FFU) << 10U) + (low & 0x3FFU);
      units = 2;
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
  // A full buffer, and a character that continues in bytes not yet read, are not failures.
  if (stopped && errno == EILSEQ && out_left == size) Fail("it is not valid in its encoding");
  raw_begin_ = raw_end_ - in_left;
  return size - out_left;
}

int Source::Fail(const char* problem) noexcept {
  problem_ = problem;
  return -1;
}

}  // namespace orx::platform::dom
