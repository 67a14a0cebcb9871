// Changing values: single sets with and without a listener, and one commit of n values beside n
// single sets.
#include <benchmark/benchmark.h>

#include <array>

#include "bench/tree.h"

namespace {

using bench::DeepTree;
using bench::SettingsPtr;
using zlutil::settings::SettingsValueChangeEvent;
using zlutil::settings::SettingsValues;

const std::string kLevel = "user";

void setRepeatedly(benchmark::State& state, const DeepTree& tree) {
  const std::string key = bench::keyName(0);
  int value = 0;
  for (auto _ : state) tree.node->setAny(key, ++value, kLevel);
}

void setInt(benchmark::State& state) {
  const bench::ListenerElsewhere elsewhere;
  setRepeatedly(state, DeepTree(1));
}
BENCHMARK(setInt);

void setIntWithOneListener(benchmark::State& state) {
  const DeepTree tree(1);
  int heard = 0;
  const zlutil::eventmgr::ScopedConnection connection(
      tree.root->addListener<SettingsValueChangeEvent>(
          [&heard](const SettingsValueChangeEvent&) { ++heard; }));
  setRepeatedly(state, tree);
}
BENCHMARK(setIntWithOneListener);

void askWhoListens(benchmark::State& state) {
  const bench::ListenerElsewhere elsewhere;
  const DeepTree tree(1);
  const auto& events = zlutil::eventmgr::EventMgr::instance();
  const auto id = tree.node->getID();
  for (auto _ : state) benchmark::DoNotOptimize(events.mayHaveSubscribers(id));
}
BENCHMARK(askWhoListens);

// Commits two lists in turn, so that every commit changes every value.
template <class Changes, class Commit>
void commitInTurn(benchmark::State& state, const std::array<Changes, 2>& lists,
                  const Commit& commit) {
  int turn = 0;
  for (auto _ : state) {
    turn = 1 - turn;
    commit(lists[turn]);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void commitOfN(benchmark::State& state) {
  const DeepTree tree(static_cast<int>(state.range(0)));
  std::array<SettingsValues, 2> lists{tree.keys, tree.keys};
  for (auto& change : lists[1]) change.second = 1;
  commitInTurn(state, lists, [&tree](const SettingsValues& changes) {
    tree.root->setMultiple(boost::make_iterator_range(changes.cbegin(), changes.cend()), kLevel, 0);
  });
}
BENCHMARK(commitOfN)->RangeMultiplier(10)->Range(1, 100000);

// Commits by path, as transactions do.
void commitOfNPaths(benchmark::State& state) {
  const DeepTree tree(static_cast<int>(state.range(0)));
  using Changes = std::vector<std::pair<std::string, boost::any>>;
  std::array<Changes, 2> lists;
  for (const auto& key : tree.keys) {
    for (int turn : {0, 1}) lists[turn].emplace_back(key.first->getPath(), turn);
  }
  commitInTurn(state, lists, [&tree](const Changes& changes) {
    tree.root->multipleSet(changes.cbegin(), changes.cend(), kLevel);
  });
}
BENCHMARK(commitOfNPaths)->RangeMultiplier(10)->Range(100, 100000);

// Sets every key of the tree by its name, on the node that `nodeOf` returns each time.
template <class NodeOf>
void setOneByOne(benchmark::State& state, const NodeOf& nodeOf) {
  const DeepTree tree(static_cast<int>(state.range(0)));
  std::vector<std::string> names;
  for (const auto& key : tree.keys) names.push_back(key.first->getName());
  int value = 0;
  for (auto _ : state) {
    ++value;
    for (const std::string& name : names) nodeOf(tree)->setAny(name, value, kLevel);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void singleSetsOfN(benchmark::State& state) {
  setOneByOne(state, [](const DeepTree& tree) -> const SettingsPtr& { return tree.node; });
}
BENCHMARK(singleSetsOfN)->RangeMultiplier(10)->Range(1, 100000);

void singleSetsOfNPaths(benchmark::State& state) {
  const std::vector<std::string> path(4, "n");
  setOneByOne(state, [&path](const DeepTree& tree) { return tree.root->findDescendant(path); });
}
BENCHMARK(singleSetsOfNPaths)->RangeMultiplier(10)->Range(100, 100000);

}  // namespace
