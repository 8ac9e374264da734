// The bytes of a document, as UTF-8 whatever the document is encoded in.
//
// The encoding is that of a byte order mark, else that of the declaration, else UTF-8. UTF-8, UTF-16,
// ISO-8859-1 and windows-1252 need nothing of the system; other encodings are read where it has a conversion
// for them.
#pragma once

#include <orx/platform/posix/dom/rules.h>
#include <orx/platform/posix/support/cancellation_block.h>
#include <orx/platform/posix/support/utf8.h>

#include <iconv.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace orx::platform::dom {

// While it lives, a cancellation of the thread waits: it could not unwind through the parser that reads.
class Source {
 public:
  Source() = default;
  ~Source();
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  // False with the reason. The text outlives the source.
  bool OpenFile(const char* path, std::string& reason);
  bool OpenText(std::string_view text, std::string& reason);

  // The next bytes, at most `size` (at least 4); 0 at the end, -1 after a problem. Never throws.
  int Read(char* out, int size) noexcept;

  std::size_t bytes_read() const { return bytes_read_; }
  // What Read ran into, or null.
  const char* problem() const { return problem_; }
  // Whether all was valid UTF-8; Read hands on what is not, since the parser can tell where it stands.
  bool is_valid() const { return is_valid_ && validator_.IsComplete(); }

 private:
  enum class Form { kUtf8, kUtf16LE, kUtf16BE, kLatin1, kWindows1252, kConverted };

  bool ChooseBySight(std::string_view head, std::string& reason);
  bool Choose(const std::string& encoding, std::string& reason);
  int ReadRaw(char* out, std::size_t size) noexcept;
  int Decode(char* out, std::size_t size) noexcept;
  std::size_t DecodeBytes(char* out, std::size_t size) noexcept;
  std::size_t DecodeUtf16(char* out, std::size_t size) noexcept;
  unsigned UnitAt(std::size_t position) const noexcept;
  std::size_t Convert(char* out, std::size_t size) noexcept;
  int Stop(const char* problem) noexcept;

  static iconv_t no_converter() { return reinterpret_cast<iconv_t>(-1); }

  const CancellationBlock cancellation_;
  int file_ = -1;
  std::string_view text_;
  std::size_t bytes_read_ = 0;
  const char* problem_ = nullptr;
  utf8::Validator validator_;
  bool is_valid_ = true;

  Form form_ = Form::kUtf8;
  iconv_t converter_ = no_converter();
  std::array<char, 8192> raw_;  // read, and from raw_begin_ to raw_end_ not decoded yet
  std::size_t raw_begin_ = 0;
  std::size_t raw_end_ = 0;
  bool at_end_ = false;
};

}  // namespace orx::platform::dom
