// Questions about files against the calls of the C and C++ libraries that answer them too.
#include <benchmark/benchmark.h>
#include <glob.h>
#include <orx/frame/file_queries.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

// 200 small files, which go with the process.
class Folder {
 public:
  Folder() {
    fs::create_directories(path);
    for (int i = 0; i < 200; ++i) std::ofstream(path / ("drill hole " + std::to_string(i) + ".dat")) << i;
  }
  ~Folder() { fs::remove_all(path); }

  const fs::path path = fs::temp_directory_path() / ("orx_bench_" + std::to_string(getpid()));
};

std::string native(const char* name) {
  static const Folder folder;
  return folder.path / name;
}

std::string suite(const char* name) {
  std::string path = native(name);
  std::ranges::replace(path, '/', '\\');
  return path;
}

void exists_orx(benchmark::State& state) {
  const std::string path = suite("drill hole 7.dat");
  for (auto _ : state) benchmark::DoNotOptimize(FileExists(path.c_str()));
}

void exists_filesystem(benchmark::State& state) {
  const std::string path = native("drill hole 7.dat");
  for (auto _ : state) {
    std::error_code error;
    benchmark::DoNotOptimize(fs::is_regular_file(path.c_str(), error));
  }
}

void match_orx(benchmark::State& state) {
  const std::string pattern = suite("*9?.dat");
  for (auto _ : state) benchmark::DoNotOptimize(get_file_length(pattern.c_str()));
}

void match_glob(benchmark::State& state) {
  const std::string pattern = native("*9?.dat");
  for (auto _ : state) {
    glob_t found{};
    if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
      benchmark::DoNotOptimize(fs::file_size(found.gl_pathv[0]));
    }
    globfree(&found);
  }
}

void stack_orx(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(stackavail());
}

void stack_pthread(benchmark::State& state) {
  for (auto _ : state) {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    benchmark::DoNotOptimize(attributes);
    pthread_attr_destroy(&attributes);
  }
}

BENCHMARK(exists_orx);
BENCHMARK(exists_filesystem);
BENCHMARK(match_orx);
BENCHMARK(match_glob);
BENCHMARK(stack_orx);
BENCHMARK(stack_pthread);

}  // namespace
