// Publishing a change of a key five deep: without any subscription, with one on another tree only,
// and with one on the root.
#include <benchmark/benchmark.h>

#include "bench/tree.h"
#include "host/change/publication.h"

namespace {

namespace host = zlutil::settings::host;
using bench::DeepTree;
using zlutil::settings::SettingsValueChangeEvent;

void publishRepeatedly(benchmark::State& state, const DeepTree& tree) {
  auto& key = dynamic_cast<host::Key&>(*tree.keys[0].first);
  for (auto _ : state) {
    host::ChangedKeys changed;
    changed.add(key);
    changed.publish();
  }
}

void publishUnheard(benchmark::State& state) { publishRepeatedly(state, DeepTree(1)); }
BENCHMARK(publishUnheard);

void publishHeardElsewhere(benchmark::State& state) {
  const bench::ListenerElsewhere elsewhere;
  publishRepeatedly(state, DeepTree(1));
}
BENCHMARK(publishHeardElsewhere);

void publishHeardAtTheRoot(benchmark::State& state) {
  const DeepTree tree(1);
  int heard = 0;
  const zlutil::eventmgr::ScopedConnection connection(
      tree.root->addListener<SettingsValueChangeEvent>(
          [&heard](const SettingsValueChangeEvent&) { ++heard; }));
  publishRepeatedly(state, tree);
}
BENCHMARK(publishHeardAtTheRoot);

}  // namespace
