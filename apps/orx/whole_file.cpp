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

constexpr std::size_t kBlockSize = 65536;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void throw_errno() { throw std::system_error(errno, std::generic_category()); }

File open_file(const fs::path& path, const char* mode) {
  File file(std::fopen(path.string().c_str(), mode));
  if (file == nullptr) throw_errno();
  return file;
}

void write_and_close(File file, const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), file.get()) != text.size()) throw_errno();
  if (std::fclose(file.release()) != 0) throw_errno();
}

void replace_regular_file(const fs::path& target, const fs::file_status& old, const std::string& text) {
  fs::path temporary = target;
  temporary += ".tmp" + std::to_string(std::random_device{}());
  File file = open_file(temporary, "wbx");
  try {
    // The permissions come first, so that nobody can read the text who could not read the old file.
    if (fs::exists(old)) fs::permissions(temporary, old.permissions());
    write_and_close(std::move(file), text);
    fs::rename(temporary, target);
  } catch (...) {
    std::error_code ignored;
    fs::remove(temporary, ignored);
    throw;
  }
}

// Runs the operation on the native path, and turns an error of the system into a Failure that names the file.
template <class Operation>
auto with_named_file(const std::string& file, Operation operation) {
  try {
    return operation(fs::path(native_path(file)));
  } catch (const std::system_error& error) {
    throw Failure(file, error.code().message());
  }
}

}  // namespace

std::string read_file(const std::string& file) {
  return with_named_file(file, [](const fs::path& path) {
    const File input = open_file(path, "rb");
    std::string text;
    std::error_code unknown;  // a pipe has no size
    const std::uintmax_t expected = fs::file_size(path, unknown);
    if (!unknown) text.reserve(expected);
    std::array<char, kBlockSize> buffer;
    std::size_t size = 0;
    do {
      size = std::fread(buffer.data(), 1, buffer.size(), input.get());
      text.append(buffer.data(), size);
    } while (size != 0);
    if (std::ferror(input.get()) != 0) throw_errno();
    return text;
  });
}

void replace_file(const std::string& file, const std::string& text) {
  with_named_file(file, [&](const fs::path& path) {
    std::error_code ignored;
    const fs::file_status old = fs::status(path, ignored);
    if (fs::exists(old) && !fs::is_regular_file(old)) return write_and_close(open_file(path, "wb"), text);
    replace_regular_file(fs::exists(old) ? fs::canonical(path) : path, old, text);
  });
}

}  // namespace orx::cli
