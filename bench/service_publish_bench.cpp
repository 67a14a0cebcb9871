// Publishing a change of a key five deep: with no subscription anywhere, with one on another tree
// only, and with one on the root.
#include <benchmark/benchmark.h>

#include <boost/make_shared.hpp>

#include "host/settings/publication.h"
#include "service/events.h"

namespace {

using namespace zlutil::settings;
using zlutil::eventmgr::ScopedConnection;

struct DeepKey {
  DeepKey() : root(makeNode("r")) {
    host::NodePtr node = root;
    for (int depth = 1; depth < 5; ++depth) {
      const host::NodePtr below = makeNode("n");
      below->attachTo(node);
      node = below;
    }
    key = boost::make_shared<host::Key>(node->treePtr(), "k", 0, true, host::ValidatorPtr());
    key->attachTo(node);
  }

  static host::NodePtr makeNode(const std::string& name) {
    return boost::make_shared<host::Node>(host::Tree::makeStandalone(), name, true,
                                          host::ValidatorPtr());
  }

  host::NodePtr root;
  host::KeyPtr key;
};

void publishRepeatedly(benchmark::State& state, const DeepKey& deep) {
  for (auto _ : state) {
    host::ChangedKeys changed;
    changed.add(*deep.key);
    changed.publish();
  }
}

void publishUnheard(benchmark::State& state) {
  const DeepKey deep;
  publishRepeatedly(state, deep);
}
BENCHMARK(publishUnheard);

void publishHeardElsewhere(benchmark::State& state) {
  const DeepKey deep;
  const DeepKey other;
  const ScopedConnection elsewhere(
      other.root->addListener<SettingsValueChangeEvent>([](const SettingsValueChangeEvent&) {}));
  publishRepeatedly(state, deep);
}
BENCHMARK(publishHeardElsewhere);

void publishHeardAtTheRoot(benchmark::State& state) {
  const DeepKey deep;
  int heard = 0;
  const ScopedConnection connection(deep.root->addListener<SettingsValueChangeEvent>(
      [&heard](const SettingsValueChangeEvent&) { ++heard; }));
  publishRepeatedly(state, deep);
}
BENCHMARK(publishHeardAtTheRoot);

}  // namespace
