// A folder that goes with its scope, and whole files in it.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace orx::testing {

// Both throw when the file can't be had.
inline std::string read_file(const std::filesystem::path& path) {
  std::ifstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void write_file(const std::filesystem::path& path, const std::string& content) {
  std::ofstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(path, std::ios::binary);
  file << content << std::flush;
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

}  // namespace orx::testing
