// Files in a temporary folder and environment variables, both restored at the end of the scope.
#pragma once

#include <gtest/gtest.h>
#include <orx/frame/environment.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>

namespace orx::testing {

inline const std::string kEightyLetters = [] {
  std::string letters;
  while (letters.size() < 160) letters += "д";
  return letters;
}();

inline std::string read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void write_file(const std::filesystem::path& path, const std::string& content) {
  EXPECT_TRUE(std::ofstream(path, std::ios::binary) << content << std::flush) << path;
}

class TempFolder {
 public:
  TempFolder() {
    const auto parent = std::filesystem::canonical(std::filesystem::temp_directory_path());
    do path_ = parent / ("orx_" + std::to_string(std::random_device()()));
    while (!std::filesystem::create_directory(path_));
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string path(const std::string& name = "") const { return name.empty() ? path_ : path_ / name; }
  std::string suite_path(const std::string& name = "") const {
    std::string path = this->path(name);
    std::ranges::replace(path, '/', '\\');
    return path;
  }

 private:
  std::filesystem::path path_;
};

class ScopedVariable {
 public:
  // Null: the variable is not set.
  ScopedVariable(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    put(value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { put(old_ ? old_->c_str() : nullptr); }

 private:
  void put(const char* value) const {
    value != nullptr ? setenv(name_.c_str(), value, 1) : unsetenv(name_.c_str());
    orx_environment_changed();
  }

  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace orx::testing
