// Lists against std::list, and the sorts against their own callbacks. Both sides compare through the same
// function pointer. The own cost of a sort is its time minus the time of a replay of its callbacks.
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

constexpr std::size_t kListItems = 1'000'000;
constexpr std::size_t kSortedItems = 20'000;

int compare_items(void* a, void* b) {
  const int x = *static_cast<int*>(a);
  const int y = *static_cast<int*>(b);
  return (x > y) - (x < y);
}

int swap_items(void* a, void* b) {
  std::swap(*static_cast<int*>(a), *static_cast<int*>(b));
  return 0;
}

// Ascending, except that one item in sixteen comes up to eight places late.
std::vector<int> nearly_sorted_values() {
  std::mt19937 random(1);
  std::vector<int> items(kListItems);
  for (std::size_t i = 0; i < kListItems; ++i) {
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

// Measures filling and walking a list, but not releasing it.
template <typename List, typename Fill>
void fill(benchmark::State& state, Fill step) {
  std::vector<int> items = nearly_sorted_values();
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
  std::vector<int> items = nearly_sorted_values();
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

// A callback that a sort called.
template <typename Place>
struct Call {
  bool swaps;
  Place first, second;
};
template <typename Place>
std::vector<Call<Place>> calls;

template <typename Place, bool swaps, Callback<Place> callback>
int record_call(Place first, Place second) {
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

const std::vector<int>& shuffled_values() {
  static const std::vector<int> made = [] {
    std::mt19937 random(2);
    std::vector<int> items(kSortedItems);
    for (int& item : items) item = static_cast<int>(random() >> 1);
    return items;
  }();
  return made;
}

template <auto sort>
void sorting(benchmark::State& state) {
  for (auto _ : state) {
    values = shuffled_values();
    sort(kSortedItems, compare_values, swap_values);
  }
}

template <auto sort>
void callbacks_alone(benchmark::State& state) {
  calls<int>.clear();
  values = shuffled_values();
  sort(kSortedItems, record_call<int, false, compare_values>, record_call<int, true, swap_values>);
  for (auto _ : state) {
    values = shuffled_values();
    replay<int>(compare_values, swap_values);
  }
}

void sorting_list(benchmark::State& state) {
  std::vector<int> items(kSortedItems);
  OwnList own;
  for (int& item : items) own.Append(&item);
  for (auto _ : state) {
    items = shuffled_values();
    genlist_sort(own.list);
  }
}

void callbacks_of_list_alone(benchmark::State& state) {
  calls<void*>.clear();
  std::vector<int> items = shuffled_values();
  OwnList own(record_call<void*, false, compare_items>, record_call<void*, true, swap_items>);
  for (int& item : items) own.Append(&item);
  genlist_sort(own.list);
  for (auto _ : state) {
    items = shuffled_values();
    replay<void*>(compare_items, swap_items);
  }
}

BENCHMARK(append_and_walk<OwnList>)->Unit(benchmark::kMillisecond);
BENCHMARK(append_and_walk<StandardList>)->Unit(benchmark::kMillisecond);
BENCHMARK(insert_nearly_sorted<OwnList>)->Unit(benchmark::kMillisecond);
BENCHMARK(insert_nearly_sorted<StandardList>)->Unit(benchmark::kMillisecond);
// Only a small part of the run is measured, so the number of iterations is fixed.
BENCHMARK(release<OwnList>)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(release<StandardList>)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(sorting<qksort>)->Unit(benchmark::kMicrosecond);
BENCHMARK(callbacks_alone<qksort>)->Unit(benchmark::kMicrosecond);
BENCHMARK(sorting<sm_sort>)->Unit(benchmark::kMicrosecond);
BENCHMARK(callbacks_alone<sm_sort>)->Unit(benchmark::kMicrosecond);
BENCHMARK(sorting_list)->Unit(benchmark::kMicrosecond);
BENCHMARK(callbacks_of_list_alone)->Unit(benchmark::kMicrosecond);

}  // namespace
