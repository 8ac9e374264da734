// Lists against std::list, and the sorts against their own callbacks. Both sides compare through the same
// function pointer. What a sort costs beyond its callbacks is what it takes more than a replay of the calls
// that it made.
#include <benchmark/benchmark.h>
#include <orx/containers/generic_list.h>
#include <orx/text/sorting.h>

#include <cstddef>
#include <iterator>
#include <list>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kMany = 1000000;
constexpr std::size_t kSorted = 20000;

int compare_items(void* a, void* b) {
  const int x = *static_cast<int*>(a), y = *static_cast<int*>(b);
  return (x > y) - (x < y);
}

int swap_items(void* a, void* b) {
  std::swap(*static_cast<int*>(a), *static_cast<int*>(b));
  return 0;
}

// In order, but for one in sixteen that comes up to eight places late.
std::vector<int> nearly_sorted() {
  std::mt19937 random(1);
  std::vector<int> items(kMany);
  for (std::size_t i = 0; i < kMany; ++i) {
    const auto value = static_cast<int>(16 * i);
    items[i] = random() % 16 == 0 ? value - static_cast<int>(random() % 128) : value;
  }
  return items;
}

struct OwnList {
  genlist* list;

  explicit OwnList(genlist_compare_fn compare = compare_items, genlist_swap_fn swap = swap_items)
      : list(genlist_new(compare, swap, nullptr)) {}
  OwnList(const OwnList&) = delete;
  OwnList& operator=(const OwnList&) = delete;
  ~OwnList() { genlist_free(list); }
  void Append(int* item) { genlist_add(list, item); }
  void Insert(int* item) { genlist_insert(list, item); }
  long Walk() {
    long sum = 0;
    for (void* item = genlist_get_first_node(list); item != nullptr; item = genlist_get_next_node(list))
      sum += *static_cast<int*>(item);
    return sum;
  }
};

struct StandardList {
  std::list<void*> list;
  genlist_compare_fn compare = compare_items;

  void Append(int* item) { list.push_back(item); }
  void Insert(int* item) {
    benchmark::DoNotOptimize(compare);
    auto place = list.end();
    if (!list.empty() && compare(item, list.front()) <= 0) {
      place = list.begin();
    } else {
      while (place != list.begin() && compare(item, *std::prev(place)) < 0) --place;
    }
    list.insert(place, item);
  }
  long Walk() {
    long sum = 0;
    for (void* item : list) sum += *static_cast<int*>(item);
    return sum;
  }
};

// A list is released outside of the time of what filled it.
template <typename List, typename Fill>
void fill(benchmark::State& state, Fill step) {
  std::vector<int> items = nearly_sorted();
  for (auto _ : state) {
    auto list = std::make_unique<List>();
    for (int& item : items) step(*list, &item);
    benchmark::DoNotOptimize(list->Walk());
    state.PauseTiming();
    list.reset();
    state.ResumeTiming();
  }
}

template <typename List>
void append_and_walk(benchmark::State& state) {
  fill<List>(state, [](List& list, int* item) { list.Append(item); });
}

template <typename List>
void insert_nearly_sorted(benchmark::State& state) {
  fill<List>(state, [](List& list, int* item) { list.Insert(item); });
}

template <typename List>
void release(benchmark::State& state) {
  std::vector<int> items = nearly_sorted();
  for (auto _ : state) {
    state.PauseTiming();
    auto list = std::make_unique<List>();
    for (int& item : items) list->Append(&item);
    state.ResumeTiming();
    list.reset();
  }
}

std::vector<int> values;

int compare_values(int i, int j) { return compare_items(&values[std::size_t(i)], &values[std::size_t(j)]); }
int swap_values(int i, int j) { return swap_items(&values[std::size_t(i)], &values[std::size_t(j)]); }

template <typename Place>
using Callback = int (*)(Place, Place);

// What a sort called.
template <typename Place>
struct Call {
  bool swaps;
  Place first, second;
};
template <typename Place>
std::vector<Call<Place>> calls;

template <typename Place, bool swaps, Callback<Place> callback>
int noted(Place first, Place second) {
  calls<Place>.push_back({swaps, first, second});
  return callback(first, second);
}

template <typename Place>
void replay(Callback<Place> compare, Callback<Place> swap) {
  benchmark::DoNotOptimize(compare);
  benchmark::DoNotOptimize(swap);
  for (const auto& call : calls<Place>) {
    if (call.swaps) {
      swap(call.first, call.second);
    } else {
      benchmark::DoNotOptimize(compare(call.first, call.second));
    }
  }
}

const std::vector<int>& shuffled() {
  static const std::vector<int> made = [] {
    std::mt19937 random(2);
    std::vector<int> items(kSorted);
    for (int& item : items) item = static_cast<int>(random() >> 1);
    return items;
  }();
  return made;
}

template <auto sort>
void sorting(benchmark::State& state) {
  for (auto _ : state) {
    values = shuffled();
    sort(kSorted, compare_values, swap_values);
  }
}

template <auto sort>
void callbacks_alone(benchmark::State& state) {
  calls<int>.clear();
  values = shuffled();
  sort(kSorted, noted<int, false, compare_values>, noted<int, true, swap_values>);
  for (auto _ : state) {
    values = shuffled();
    replay<int>(compare_values, swap_values);
  }
}

void sorting_list(benchmark::State& state) {
  std::vector<int> items(kSorted);
  OwnList own;
  for (int& item : items) own.Append(&item);
  for (auto _ : state) {
    items = shuffled();
    genlist_sort(own.list);
  }
}

void callbacks_of_list_alone(benchmark::State& state) {
  calls<void*>.clear();
  std::vector<int> items = shuffled();
  OwnList own(noted<void*, false, compare_items>, noted<void*, true, swap_items>);
  for (int& item : items) own.Append(&item);
  genlist_sort(own.list);
  for (auto _ : state) {
    items = shuffled();
    replay<void*>(compare_items, swap_items);
  }
}

BENCHMARK(append_and_walk<OwnList>)->Unit(benchmark::kMillisecond);
BENCHMARK(append_and_walk<StandardList>)->Unit(benchmark::kMillisecond);
BENCHMARK(insert_nearly_sorted<OwnList>)->Unit(benchmark::kMillisecond);
BENCHMARK(insert_nearly_sorted<StandardList>)->Unit(benchmark::kMillisecond);
// The time measured is a small part of the time taken.
BENCHMARK(release<OwnList>)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(release<StandardList>)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(sorting<qksort>)->Unit(benchmark::kMicrosecond);
BENCHMARK(callbacks_alone<qksort>)->Unit(benchmark::kMicrosecond);
BENCHMARK(sorting<sm_sort>)->Unit(benchmark::kMicrosecond);
BENCHMARK(callbacks_alone<sm_sort>)->Unit(benchmark::kMicrosecond);
BENCHMARK(sorting_list)->Unit(benchmark::kMicrosecond);
BENCHMARK(callbacks_of_list_alone)->Unit(benchmark::kMicrosecond);

}  // namespace
