// CStringA against std::string, on texts of 64 characters.
#include <orx/compat/string_a.h>

#include <benchmark/benchmark.h>

#include <string>
#include <thread>

namespace {

constexpr char kText[] = "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef";
constexpr int kAppends = 100;

void append_char(CStringA& text, char c) { text.AppendChar(c); }
void append_char(std::string& text, char c) { text.push_back(c); }

template <class String>
void copy(benchmark::State& state) {
  const String text(kText);
  for (auto _ : state) {
    String copy_of_text(text);
    benchmark::DoNotOptimize(copy_of_text);
  }
}

// Reference counts cost more once the process has started a second thread, so these cases run last.
template <class String>
void copy_after_a_thread(benchmark::State& state) {
  std::thread([] {}).join();
  copy<String>(state);
}

template <class String>
void construct(benchmark::State& state) {
  const char* text = kText;
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    String string(text);
    benchmark::DoNotOptimize(string);
  }
}

template <class String>
void append_texts(benchmark::State& state) {
  const char* text = kText;
  for (auto _ : state) {
    String result;
    for (int i = 0; i < kAppends; ++i) {
      benchmark::DoNotOptimize(text);
      result += text;
    }
    benchmark::DoNotOptimize(result);
  }
}

template <class String>
void append_chars(benchmark::State& state) {
  for (auto _ : state) {
    String result;
    for (int i = 0; i < kAppends; ++i) {
      append_char(result, 'x');
      benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(result);
  }
}

}  // namespace

BENCHMARK(copy<CStringA>);
BENCHMARK(copy<std::string>);
BENCHMARK(construct<CStringA>);
BENCHMARK(construct<std::string>);
BENCHMARK(append_texts<CStringA>);
BENCHMARK(append_texts<std::string>);
BENCHMARK(append_chars<CStringA>);
BENCHMARK(append_chars<std::string>);
BENCHMARK(copy_after_a_thread<CStringA>);
BENCHMARK(copy_after_a_thread<std::string>);

BENCHMARK_MAIN();
