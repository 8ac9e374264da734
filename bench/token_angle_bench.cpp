// Tokens and angles against the C library's calls.
#include <benchmark/benchmark.h>
#include <orx/text/angle_text.h>
#include <orx/text/token_parser.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr char kTokens[] = "north:12.5:east:107:pit 4:bench:3020:ore:0.75:end";
constexpr double kPi = 3.141592653589793;
constexpr double kAngle = 0.79413;
constexpr std::size_t kTextSize = 50;

struct Columns {
  long degrees, minutes, seconds;
  double decimal_degrees, decimal_minutes, decimal_seconds;
};

void split_orx(benchmark::State& state) {
  for (auto _ : state) {
    int count = 0;
    char** const tokens = orx_token_parser(kTokens, ":", &count);
    benchmark::DoNotOptimize(tokens);
    orx_token_release(tokens, count);
  }
}

void split_strsep(benchmark::State& state) {
  for (auto _ : state) {
    char* const copy = strdup(kTokens);
    char* tokens[25];
    int count = 0;
    char* rest = copy;
    while (char* token = strsep(&rest, ":")) tokens[count++] = strdup(token);
    benchmark::DoNotOptimize(tokens);
    for (int i = 0; i < count; ++i) std::free(tokens[i]);
    std::free(copy);
  }
}

void read_orx(benchmark::State& state, int mode, const char* text, int packed) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(zel_convert_str_to_ang(mode, text, packed));
  }
}

// `scan` stores as many of degrees, minutes and seconds as its format contains.
template <class Scan>
void read_sscanf(benchmark::State& state, Scan scan, const char* text) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    double d = 0;
    double m = 0;
    double s = 0;
    scan(text, &d, &m, &s);
    benchmark::DoNotOptimize((d + m / 60 + s / 3600) / 180 * kPi);
  }
}

void write_orx(benchmark::State& state, int mode) {
  double angle = kAngle;
  char out[kTextSize];
  for (auto _ : state) {
    benchmark::DoNotOptimize(angle);
    benchmark::DoNotOptimize(zel_convert_ang_to_str(mode, angle, 0, out));
  }
}

// Only the formatting: the angle is already split into columns.
template <class Print>
void write_snprintf(benchmark::State& state, Print print) {
  Columns columns{45, 30, 1, 45.50029738, 30.01784, 1.07};
  char out[kTextSize];
  for (auto _ : state) {
    benchmark::DoNotOptimize(columns);
    print(out, columns);
    benchmark::DoNotOptimize(out);
  }
}

}  // namespace

BENCHMARK(split_orx);
BENCHMARK(split_strsep);
BENCHMARK_CAPTURE(read_orx, degrees, 10, " 45.50029738", 0);
BENCHMARK_CAPTURE(
    read_sscanf, degrees, [](const char* text, double* d, double*, double*) { std::sscanf(text, "%lf", d); },
    " 45.50029738");
BENCHMARK_CAPTURE(read_orx, seconds, 16, "  45:30: 1.07", 0);
BENCHMARK_CAPTURE(
    read_sscanf, seconds,
    [](const char* text, double* d, double* m, double* s) { std::sscanf(text, "%lf:%lf:%lf", d, m, s); },
    "  45:30: 1.07");
BENCHMARK_CAPTURE(read_orx, packed, 16, "  4530 1.07", 1);
BENCHMARK_CAPTURE(
    read_sscanf, packed,
    [](const char* text, double* d, double* m, double* s) { std::sscanf(text, "%4lf%2lf%lf", d, m, s); },
    "  4530 1.07");
BENCHMARK_CAPTURE(write_orx, degrees, 10);
BENCHMARK_CAPTURE(write_snprintf, degrees, [](char* out, const Columns& c) {
  std::snprintf(out, kTextSize, "%12.8lf", c.decimal_degrees);
});
BENCHMARK_CAPTURE(write_orx, whole_seconds, 11);
BENCHMARK_CAPTURE(write_snprintf, whole_seconds, [](char* out, const Columns& c) {
  std::snprintf(out, kTextSize, "%4ld:%2ld:%2ld", c.degrees, c.minutes, c.seconds);
});
BENCHMARK_CAPTURE(write_orx, minutes, 12);
BENCHMARK_CAPTURE(write_snprintf, minutes, [](char* out, const Columns& c) {
  std::snprintf(out, kTextSize, "%4ld:%8.5lf", c.degrees, c.decimal_minutes);
});
BENCHMARK_CAPTURE(write_orx, seconds, 16);
BENCHMARK_CAPTURE(write_snprintf, seconds, [](char* out, const Columns& c) {
  std::snprintf(out, kTextSize, "%4ld:%2ld:%5.2lf", c.degrees, c.minutes, c.decimal_seconds);
});
