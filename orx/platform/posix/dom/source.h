// Reads the bytes of a document and converts them to UTF-8.
//
// The encoding of a file is that of its byte order mark, otherwise that of its declaration, otherwise UTF-8.
// UTF-8, UTF-16, ISO-8859-1 and windows-1252 are decoded here. Other encodings are read if the system has a
// converter for them.
#pragma once

#include <orx/base/utf8.h>
#include <orx/platform/dom_rules.h>
#include <orx/platform/posix/support/cancellation_block.h>

#include <iconv.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace orx::platform::dom {

// While a source lives, a cancellation of the thread is delayed: it could not unwind through the parser that
// calls Read.
class Source {
 public:
  Source() = default;
  ~Source();
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  // Call one of these first. False with the reason when the source cannot be read. The text must outlive the
  // source; it is UTF-8, but a declaration with an unknown encoding is refused.
  bool OpenFile(const char* path, std::string& reason);
  bool OpenText(std::string_view text, std::string& reason);

  // Stores the next bytes, at most `size`, which is at least 4. Returns their number, 0 at the end, or -1
  // after a failure. Never throws.
  int Read(char* out, int size) noexcept;

  std::size_t bytes_read() const { return bytes_read_; }

  // The reason why Read failed, or null.
  const char* problem() const { return problem_; }

  // Whether all bytes so far were valid UTF-8. Read also returns invalid bytes, because the parser reports
  // the line in which they are.
  bool is_valid() const { return is_valid_ && validator_.IsComplete(); }

 private:
  enum class Form { kUtf8, kUtf16LE, kUtf16BE, kLatin1, kWindows1252, kConverted };

  bool DetectEncoding(std::string_view head, std::string& reason);
  bool SetEncoding(const std::string& encoding, std::string& reason);
  int ReadRaw(char* out, std::size_t size) noexcept;
  int Decode(char* out, std::size_t size) noexcept;
  bool FillRaw() noexcept;
  std::size_t DecodeRaw(char* out, std::size_t size) noexcept;
  std::size_t DecodeBytes(char* out, std::size_t size) noexcept;
  std::size_t DecodeUtf16(char* out, std::size_t size) noexcept;
  unsigned UnitAt(std::size_t position) const noexcept;
  std::size_t Convert(char* out, std::size_t size) noexcept;
  int Fail(const char* problem) noexcept;  // always -1

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
  std::array<char, 8192> raw_;  // from raw_begin_ to raw_end_: read, but not decoded yet
  std::size_t raw_begin_ = 0;
  std::size_t raw_end_ = 0;
  bool at_end_ = false;
};

}  // namespace orx::platform::dom
