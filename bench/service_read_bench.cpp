// Reading a value by path, as the bridge does: findDescendant for the node, then getValue. The time
// is real time divided by the reads of all threads: two independent threads take half of one's.
#include <benchmark/benchmark.h>

#include <map>

#include "bench/generated_settings.h"
#include "service/settings.h"

namespace {

using zlutil::settings::Settings;

const boost::shared_ptr<Settings>& treeOf(int keys) {
  static std::map<int, boost::shared_ptr<Settings>> trees;
  boost::shared_ptr<Settings>& tree = trees[keys];
  if (!tree) {
    tree = Settings::importAsStandaloneObject(base::to_ustring(bench::SettingsOnDisk(keys).path()));
  }
  return tree;
}

void readIntByPath(benchmark::State& state) {
  static boost::shared_ptr<Settings> tree;
  const int nodes = static_cast<int>(state.range(0)) / bench::kKeysPerNode;
  if (state.thread_index() == 0) tree = treeOf(static_cast<int>(state.range(0)));
  std::vector<std::vector<std::string>> paths;
  for (int node = 0; node < nodes; ++node) paths.push_back({bench::nodeName(node)});
  const std::string key = bench::keyName(4), noLevel;
  std::size_t next = state.thread_index() * paths.size() / 2;
  for (auto _ : state) {
    const auto node = tree->findDescendant(paths[next++ % paths.size()]);
    benchmark::DoNotOptimize(node->getValue(key, noLevel));
  }
}
BENCHMARK(readIntByPath)->Arg(1000)->Arg(100000)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace
