// Unique keys against calls of the C library: all calls that a key needs, and only the two that format it.
#include <benchmark/benchmark.h>
#include <orx/platform/clock.h>
#include <orx/text/unique_key.h>
#include <time.h>

#include <cstdio>

namespace {

constexpr int kLastNumber = 999999;

void format_key(const tm& now, int& counter, char (&out)[32]) {
  char stamp[16];
  strftime(stamp, sizeof stamp, "%Y%m%d%H%M%S", &now);
  counter = counter % kLastNumber + 1;
  std::snprintf(out, sizeof out, "%s%06d", stamp, counter);
  benchmark::DoNotOptimize(out);
}

// The counter starts again before it overflows, or the run would mostly wait for the next second.
void key_orx(benchmark::State& state) {
  char out[32];
  char last[32] = "";
  int counter = 0;
  for (auto _ : state) {
    GenerateKey(out, sizeof out, last, &counter);
    benchmark::DoNotOptimize(out);
    if (counter == kLastNumber) counter = 0;
  }
}

void key_localtime_strftime_snprintf(benchmark::State& state) {
  char out[32];
  int counter = 0;
  for (auto _ : state) {
    const time_t seconds = time(nullptr);
    tm now;
    localtime_r(&seconds, &now);
    format_key(now, counter, out);
  }
}

void key_strftime_snprintf(benchmark::State& state) {
  const time_t seconds = time(nullptr);
  tm now;
  localtime_r(&seconds, &now);
  char out[32];
  int counter = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(now);
    format_key(now, counter, out);
  }
}

// The share of the clock in a key.
void clock_orx(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(orx::platform::local_time());
}

BENCHMARK(key_orx);
BENCHMARK(key_localtime_strftime_snprintf);
BENCHMARK(key_strftime_snprintf);
BENCHMARK(clock_orx);

}  // namespace
