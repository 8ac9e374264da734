#include "whole_file.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <system_error>

#include "failure.h"
#include "suite_file.h"

namespace orx::cli {
namespace {

namespace fs = std::filesystem;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void fail() { throw std::system_error(errno, std::generic_category()); }

File open(const fs::path& path, const char* mode) {
  File file(std::fopen(path.string().c_str(), mode));
  if (file == nullptr) fail();
  return file;
}

void write(File file, const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), file.get()) != text.size()) fail();
  if (std::fclose(file.release()) != 0) fail();
}

void replace(const fs::path& target, const fs::file_status& old, const std::string& text) {
  fs::path temporary = target;
  temporary += ".tmp" + std::to_string(std::random_device{}());
  File file = open(temporary, "wbx");
  try {
    // Before there is anything to read.
    if (fs::exists(old)) fs::permissions(temporary, old.permissions());
    write(std::move(file), text);
    fs::rename(temporary, target);
  } catch (...) {
    std::error_code ignored;
    fs::remove(temporary, ignored);
    throw;
  }
}

// With the reason of the system, and no more.
template <class Operation>
auto told(const std::string& file, Operation operation) {
  try {
    return operation(fs::path(native_path(file)));
  } catch (const std::system_error& error) {
    throw Failure(file, error.code().message());
  }
}

}  // namespace

std::string read_file(const std::string& file) {
  return told(file, [](const fs::path& path) {
    const File input = open(path, "rb");
    std::string text;
    std::error_code unknown;  // a pipe has no size
    const std::uintmax_t expected = fs::file_size(path, unknown);
    if (!unknown) text.reserve(expected);
    std::array<char, 65536> buffer;
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), input.get())) {
      text.append(buffer.data(), size);
    }
    if (std::ferror(input.get()) != 0) fail();
    return text;
  });
}

void replace_file(const std::string& file, const std::string& text) {
  told(file, [&](const fs::path& path) {
    std::error_code unknown;
    const fs::file_status old = fs::status(path, unknown);
    if (fs::exists(old) && !fs::is_regular_file(old)) return write(open(path, "wb"), text);
    replace(fs::exists(old) ? fs::canonical(path) : path, old, text);
  });
}

}  // namespace orx::cli
