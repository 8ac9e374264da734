// Database fields and IsNumeric, against bare calls of the C library and a hand-written scan.
#include <benchmark/benchmark.h>
#include <orx/text/field_value.h>
#include <orx/text/strings.h>

#include <cstdlib>

namespace {

constexpr const char* kNumbers[] = {"0", "12.5", "-1234.5678", "6543210.123", "1.5e-3", "0.0333333333333333"};

void field_orx(benchmark::State& state, int type) {
  for (auto _ : state) {
    for (const char* text : kNumbers) {
      benchmark::DoNotOptimize(text);
      int special = 0;
      double value = 0;
      orxdb_StrToVal(text, nullptr, nullptr, type, 0, sizeof value, &special, &value);
      benchmark::DoNotOptimize(value);
    }
  }
}

void field_strtod(benchmark::State& state) {
  for (auto _ : state) {
    for (const char* text : kNumbers) {
      benchmark::DoNotOptimize(text);
      benchmark::DoNotOptimize(std::strtod(text, nullptr));
    }
  }
}

const char* skip_digits(const char* text) {
  while (*text >= '0' && *text <= '9') ++text;
  return text;
}

const char* skip_sign(const char* text) { return *text == '-' || *text == '+' ? text + 1 : text; }

// What a program would contain that only needs the answer for numbers of this form.
bool is_number(const char* text) {
  while (*text == ' ') ++text;
  text = skip_digits(skip_sign(text));
  if (*text == '.') text = skip_digits(text + 1);
  if (*text == 'e' || *text == 'E') text = skip_digits(skip_sign(text + 1));
  while (*text == ' ') ++text;
  return *text == '\0';
}

void numeric_orx(benchmark::State& state) {
  const CStringA texts[] = {"0", "12.5", "-1234.5678", "6543210.123", "1.5e-3", "0.0333333333333333"};
  for (auto _ : state) {
    for (const CStringA& text : texts) benchmark::DoNotOptimize(IsNumeric(text));
  }
}

void numeric_scan(benchmark::State& state) {
  for (auto _ : state) {
    for (const char* text : kNumbers) {
      benchmark::DoNotOptimize(text);
      benchmark::DoNotOptimize(is_number(text));
    }
  }
}

BENCHMARK_CAPTURE(field_orx, number, orxdbNumber);
BENCHMARK_CAPTURE(field_orx, double, orxdbDouble);
BENCHMARK(field_strtod);
BENCHMARK(numeric_orx);
BENCHMARK(numeric_scan);

}  // namespace
