// The tree against std::set and, if it is installed, the AVL set of Boost.Intrusive. The items are ints in
// random or ascending order, and all three compare them through a function pointer. Items have 40 or 64
// bytes: in an array of items whose size is a power of two, the upper nodes of a tree share few sets of the
// cache.
#include <benchmark/benchmark.h>
#include <orx/containers/binary_tree.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>
#include <vector>

#if __has_include(<boost/intrusive/avl_set.hpp>)
#include <boost/intrusive/avl_set.hpp>
#define ORX_BENCH_BOOST 1
#endif

namespace {

using Keys = std::vector<int>;

// Hides a callback from the optimizer, which could not inline the callback of a host either.
template <class Function>
Function hide_from_optimizer(Function function) {
  benchmark::DoNotOptimize(function);
  return function;
}

template <std::size_t item_size>
class OrxTree {
 public:
  explicit OrxTree(const Keys& keys) : items_(keys.size()) {
    bto_init_all_functions(tree_, hide_from_optimizer(compare), nullptr, nullptr);
    for (std::size_t i = 0; i < keys.size(); ++i) items_[i].key = keys[i];
  }
  OrxTree(const OrxTree&) = delete;
  OrxTree& operator=(const OrxTree&) = delete;
  ~OrxTree() { bto_free(tree_); }

  void InsertAll(const Keys& /*keys*/) {
    for (Item& item : items_) bto_add_item(tree_, &item);
  }
  bool Find(int key) { return bto_get_item(tree_, Probe(key)) != nullptr; }
  void Erase(int key) { bto_delete_item(tree_, Probe(key)); }

 private:
  struct Item {
    bto_base_object head;
    int key;
    char rest[item_size - sizeof(bto_base_object) - sizeof(int)];
  };
  // Keys are not negative, so the difference does not overflow.
  static int compare(void* a, void* b) { return static_cast<Item*>(a)->key - static_cast<Item*>(b)->key; }
  Item* Probe(int key) {
    probe_.key = key;
    return &probe_;
  }

  std::vector<Item> items_;
  Item probe_{};
  bto_tree* tree_ = bto_new();
};

class StdSet {
 public:
  explicit StdSet(const Keys& /*keys*/) {}
  void InsertAll(const Keys& keys) {
    for (const int key : keys) set_.insert(key);
  }
  bool Find(int key) const { return set_.find(key) != set_.end(); }
  void Erase(int key) { set_.erase(key); }

 private:
  static bool is_before(int a, int b) { return a < b; }
  std::set<int, bool (*)(int, int)> set_{hide_from_optimizer(is_before)};
};

#if defined(ORX_BENCH_BOOST)
namespace bi = boost::intrusive;

template <std::size_t item_size>
class BoostAvlSet {
 public:
  explicit BoostAvlSet(const Keys& keys) : items_(keys.size()) {
    for (std::size_t i = 0; i < keys.size(); ++i) items_[i].key = keys[i];
  }
  BoostAvlSet(const BoostAvlSet&) = delete;
  BoostAvlSet& operator=(const BoostAvlSet&) = delete;
  ~BoostAvlSet() { set_.clear(); }

  void InsertAll(const Keys& /*keys*/) {
    for (Item& item : items_) set_.insert(item);
  }
  bool Find(int key) { return set_.find(Probe(key)) != set_.end(); }
  void Erase(int key) { set_.erase(Probe(key)); }

 private:
  using Hook = bi::avl_set_base_hook<bi::link_mode<bi::normal_link>>;
  struct Item : Hook {
    int key = 0;
    char rest[item_size - sizeof(Hook) - sizeof(int)];
  };
  static_assert(sizeof(Item) == item_size);
  struct Compare {
    bool (*is_before)(const Item&, const Item&);
    bool operator()(const Item& a, const Item& b) const { return is_before(a, b); }
  };
  static bool is_before(const Item& a, const Item& b) { return a.key < b.key; }
  const Item& Probe(int key) {
    probe_.key = key;
    return probe_;
  }

  std::vector<Item> items_;
  Item probe_;
  bi::avl_set<Item, bi::compare<Compare>, bi::constant_time_size<false>> set_{
      Compare{hide_from_optimizer(is_before)}};
};
#endif

enum Order { kRandom, kAscending };

Keys make_keys(const benchmark::State& state, unsigned seed) {
  Keys keys(static_cast<std::size_t>(state.range(0)));
  std::iota(keys.begin(), keys.end(), 0);
  if (state.range(1) == kRandom) std::shuffle(keys.begin(), keys.end(), std::mt19937(seed));
  return keys;
}

template <class Set>
void insert(benchmark::State& state) {
  const Keys keys = make_keys(state, 1);
  for (auto _ : state) {
    state.PauseTiming();
    {
      Set set(keys);
      state.ResumeTiming();
      set.InsertAll(keys);
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
}

template <class Set>
void find(benchmark::State& state) {
  const Keys keys = make_keys(state, 1);
  const Keys sought = make_keys(state, 2);
  Set set(keys);
  set.InsertAll(keys);
  for (auto _ : state) {
    for (const int key : sought) benchmark::DoNotOptimize(set.Find(key));
  }
}

template <class Set>
void erase(benchmark::State& state) {
  const Keys keys = make_keys(state, 1);
  const Keys erased = make_keys(state, 2);
  for (auto _ : state) {
    state.PauseTiming();
    {
      Set set(keys);
      set.InsertAll(keys);
      state.ResumeTiming();
      for (const int key : erased) set.Erase(key);
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
}

void sizes(benchmark::internal::Benchmark* family) {
  family->ArgNames({"items", "ascending"})->Unit(benchmark::kMillisecond);
  for (const int order : {kRandom, kAscending}) {
    for (const int count : {10'000, 100'000, 1'000'000}) family->Args({count, order});
  }
}

#if defined(ORX_BENCH_BOOST)
#define ORX_BENCH_ALL(operation)                                \
  BENCHMARK_TEMPLATE(operation, OrxTree<40>)->Apply(sizes);     \
  BENCHMARK_TEMPLATE(operation, OrxTree<64>)->Apply(sizes);     \
  BENCHMARK_TEMPLATE(operation, BoostAvlSet<40>)->Apply(sizes); \
  BENCHMARK_TEMPLATE(operation, BoostAvlSet<64>)->Apply(sizes); \
  BENCHMARK_TEMPLATE(operation, StdSet)->Apply(sizes)
#else
#define ORX_BENCH_ALL(operation)                            \
  BENCHMARK_TEMPLATE(operation, OrxTree<40>)->Apply(sizes); \
  BENCHMARK_TEMPLATE(operation, OrxTree<64>)->Apply(sizes); \
  BENCHMARK_TEMPLATE(operation, StdSet)->Apply(sizes)
#endif

ORX_BENCH_ALL(insert);
ORX_BENCH_ALL(find);
ORX_BENCH_ALL(erase);

}  // namespace
