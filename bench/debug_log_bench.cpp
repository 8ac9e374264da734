// A line of the debug log against the bare system calls and against the streams of the C library. Each side
// opens the file, writes the same bytes and closes the file.
#include <orx/frame/debug_log.h>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

constexpr char kText[] = "Block model pit_1: 120000 of 480000 blocks read, 12 of them without a grade";
constexpr char kLine[] = "Block model pit_1: 120000 of 480000 blocks read, 12 of them without a grade\r\n";

void write_bare(const char* path) {
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  benchmark::DoNotOptimize(write(file, kLine, sizeof kLine - 1));
  close(file);
}

void write_stream(const char* path) {
  std::FILE* file = std::fopen(path, "a");
  std::fprintf(file, "%s\r\n", kText);
  std::fflush(file);
  std::fclose(file);
}

void write_orx(const char*) { halvark_log_debug_write(kText); }

// Each run begins with an empty file.
void log_line(benchmark::State& state, void (*write_line)(const char*)) {
  std::string folder = std::filesystem::temp_directory_path() / "orx_bench_XXXXXX";
  if (mkdtemp(folder.data()) == nullptr || halvark_log_debug_init(folder.c_str()) != 0) {
    state.SkipWithError("no folder");
    return;
  }
  const std::string path = folder + "/DEBUG.LOG";
  for (auto _ : state) write_line(path.c_str());
  std::filesystem::remove_all(folder);
}

BENCHMARK_CAPTURE(log_line, orx, write_orx);
BENCHMARK_CAPTURE(log_line, open_write_close, write_bare);
BENCHMARK_CAPTURE(log_line, fopen_fprintf_fflush_fclose, write_stream);

}  // namespace
