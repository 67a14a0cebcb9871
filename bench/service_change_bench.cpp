// Changing values: one at a time, with and without listeners elsewhere, and as one commit of n
// values beside n single sets.
#include <benchmark/benchmark.h>

#include <array>

#include "service/events.h"
#include "service/settings.h"
#include "service/z_settings.h"

namespace {

using zlutil::settings::Settings;
using zlutil::settings::SettingsValueChangeEvent;
using zlutil::settings::ZSettings;
using SettingsPtr = boost::shared_ptr<Settings>;

SettingsPtr add(const SettingsPtr& parent, const std::string& name, bool isKey) {
  const SettingsPtr entry = ZSettings::createSettingsNode(name, isKey, true, {});
  entry->attachTo(parent);
  return entry;
}

// A tree with a node five deep that holds `keys` keys.
struct DeepTree {
  explicit DeepTree(int keys) : root(ZSettings::createSettingsNode("r", false, true, {})) {
    node = root;
    for (int depth = 1; depth < 5; ++depth) node = add(node, "n", false);
    for (int key = 0; key < keys; ++key) {
      values.emplace_back(add(node, "k" + std::to_string(key), true), 0);
    }
  }

  SettingsPtr root, node;
  zlutil::settings::SettingsValues values;
};

void setInt(benchmark::State& state) {
  const DeepTree tree(1);
  const DeepTree other(1);
  zlutil::eventmgr::ScopedConnection elsewhere(
      other.root->addListener<SettingsValueChangeEvent>([](const SettingsValueChangeEvent&) {}));
  const std::string key = "k0", level = "user";
  int value = 0;
  for (auto _ : state) tree.node->setAny(key, ++value, level);
}
BENCHMARK(setInt);

void setIntWithOneListener(benchmark::State& state) {
  const DeepTree tree(1);
  int heard = 0;
  zlutil::eventmgr::ScopedConnection connection(tree.root->addListener<SettingsValueChangeEvent>(
      [&heard](const SettingsValueChangeEvent&) { ++heard; }));
  const std::string key = "k0", level = "user";
  int value = 0;
  for (auto _ : state) tree.node->setAny(key, ++value, level);
}
BENCHMARK(setIntWithOneListener);

void askWhoListens(benchmark::State& state) {
  const DeepTree tree(1);
  const DeepTree other(1);
  zlutil::eventmgr::ScopedConnection elsewhere(
      other.root->addListener<SettingsValueChangeEvent>([](const SettingsValueChangeEvent&) {}));
  const auto& events = zlutil::eventmgr::EventMgr::instance();
  const auto id = tree.node->getID();
  for (auto _ : state) benchmark::DoNotOptimize(events.mayHaveSubscribers(id));
}
BENCHMARK(askWhoListens);

// Every commit changes every value: two lists take turns.
void commitOfN(benchmark::State& state) {
  const DeepTree tree(static_cast<int>(state.range(0)));
  std::array<zlutil::settings::SettingsValues, 2> lists{tree.values, tree.values};
  for (auto& change : lists[1]) change.second = 1;
  int turn = 0;
  for (auto _ : state) {
    turn = 1 - turn;
    tree.root->setMultiple(boost::make_iterator_range(lists[turn].cbegin(), lists[turn].cend()),
                           "user", 0);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(commitOfN)->RangeMultiplier(10)->Range(1, 100000);

void singleSetsOfN(benchmark::State& state) {
  DeepTree tree(static_cast<int>(state.range(0)));
  std::vector<std::string> names;
  for (const auto& value : tree.values) names.push_back(value.first->getName());
  const std::string level = "user";
  int value = 0;
  for (auto _ : state) {
    ++value;
    for (const std::string& name : names) tree.node->setAny(name, value, level);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(singleSetsOfN)->RangeMultiplier(10)->Range(1, 100000);

// The same with paths, as transactions have them.
void commitOfNPaths(benchmark::State& state) {
  const DeepTree tree(static_cast<int>(state.range(0)));
  using Changes = std::vector<std::pair<std::string, boost::any>>;
  std::array<Changes, 2> lists;
  for (const auto& value : tree.values) {
    for (int turn : {0, 1}) lists[turn].emplace_back(value.first->getPath(), turn);
  }
  int turn = 0;
  for (auto _ : state) {
    turn = 1 - turn;
    tree.root->multipleSet(lists[turn].cbegin(), lists[turn].cend(), "user");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(commitOfNPaths)->RangeMultiplier(10)->Range(100, 100000);

void singleSetsOfNPaths(benchmark::State& state) {
  const DeepTree tree(static_cast<int>(state.range(0)));
  const std::vector<std::string> path(4, "n");
  std::vector<std::string> names;
  for (const auto& value : tree.values) names.push_back(value.first->getName());
  const std::string level = "user";
  int value = 0;
  for (auto _ : state) {
    ++value;
    for (const std::string& name : names) {
      tree.root->findDescendant(path)->setAny(name, value, level);
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(singleSetsOfNPaths)->RangeMultiplier(10)->Range(100, 100000);

}  // namespace
