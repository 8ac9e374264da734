/* The samples of a drill hole: a balanced tree orders them by depth, a list ranks them by grade. */
#include <orx/orx.h>

#include <stdio.h>
#include <stdlib.h>

/* An item of the tree begins with links, which only the tree uses. */
typedef struct Sample {
  bto_base_object links;
  double depth; /* of the upper end, in metres; the tree orders by it */
  double gold;  /* grams per tonne */
} Sample;

/* Sorting a list swaps the contents of its items. A swap of samples would break the tree, so the items of the
   list are pointers to samples. */
typedef struct Rank {
  const Sample* sample;
} Rank;

/* A difference would not do as the result: 0.4 would become the int 0. */
static int by_depth(void* a, void* b) {
  const Sample* first = a;
  const Sample* second = b;
  return (first->depth > second->depth) - (first->depth < second->depth);
}

static int richest_first(void* a, void* b) {
  const Rank* first = a;
  const Rank* second = b;
  return (first->sample->gold < second->sample->gold) - (first->sample->gold > second->sample->gold);
}

static int swap_ranks(void* a, void* b) {
  const Rank first = *(Rank*)a;
  *(Rank*)a = *(Rank*)b;
  *(Rank*)b = first;
  return 0;
}

/* The visit callback gets only the item, so its results are global. */
static genlist* ranking;
static int unranked;

static int rank_sample(void* sample) {
  Rank* rank = malloc(sizeof *rank);
  if (rank != NULL) rank->sample = sample;
  if (rank != NULL && genlist_add(ranking, rank) == 0) return 0;
  free(rank);
  ++unranked;
  return 0;
}

/* The tree silently releases a second item with the same key, so a host that reports it must search first. */
static int add_sample(bto_tree* tree, double depth, double gold) {
  Sample key = {.depth = depth};
  if (bto_get_item(tree, &key) != NULL) {
    printf("refused: there is a sample at %.1f m\n", depth);
    return 0;
  }
  Sample* sample = malloc(sizeof *sample);
  if (sample == NULL) return 1;
  sample->depth = depth;
  sample->gold = gold;
  bto_add_item(tree, sample); /* the tree owns the sample from here on */
  return 0;
}

static void print_ranking(const char* title) {
  printf("%s\n", title);
  for (const Rank* rank = genlist_get_first_node(ranking); rank != NULL;
       rank = genlist_get_next_node(ranking))
    printf("%6.1f m %6.2f g/t\n", rank->sample->depth, rank->sample->gold);
}

static int report(bto_tree* tree) {
  static const double kAssays[][2] = {{3.0, 0.85}, {0.0, 0.12}, {4.5, 2.4},
                                      {1.5, 1.31}, {3.0, 9.99}, {6.0, 55.0}};
  for (size_t i = 0; i < sizeof kAssays / sizeof *kAssays; ++i)
    if (add_sample(tree, kAssays[i][0], kAssays[i][1]) != 0) return 1;

  Sample rejected = {.depth = 6.0};
  bto_delete_item(tree, &rejected);

  bto_traverse_tree(tree);
  if (unranked != 0) return 1;
  print_ranking("by depth");
  if (genlist_sort(ranking) != 0) return 1;
  print_ranking("by grade");
  return 0;
}

int main(void) {
  bto_tree* tree = bto_new();
  ranking = genlist_new(richest_first, swap_ranks, free);
  bto_init_all_functions(tree, by_depth, rank_sample, bto_free_base_object);
  const int failed = tree == NULL || ranking == NULL || report(tree) != 0;
  if (failed) fprintf(stderr, "Out of memory.\n");
  genlist_free(ranking); /* first, since its items point to samples of the tree */
  bto_free(tree);
  return failed;
}
