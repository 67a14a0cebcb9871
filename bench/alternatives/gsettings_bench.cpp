// The service and GSettings with its memory back end, the same work in one process. GSettings has
// two levels (a value and its default in the schema); a key that is read here has only the default,
// ours a value at the lowest of four levels. One GSettings object for each node is held and found
// by path in a map, because making one for each read would take longer.
#define G_SETTINGS_ENABLE_BACKEND
#include <benchmark/benchmark.h>
#include <gio/gio.h>
#include <gio/gsettingsbackend.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <unordered_map>

#include "bench/temporary_directory.h"
#include "bench/tree.h"

namespace {

using bench::SettingsPtr;
using zlutil::settings::SettingsValueChangeEvent;

constexpr int kNodes = 1000;
constexpr int kListedKeys = 1000;
constexpr int kItems = 100;
const std::string kSession = "session", kNoLevel;

// Keys of every node: ints, but for a text and an array.
const std::string kInt = bench::keyName(1), kText = bench::keyName(2), kDoubles = bench::keyName(3);

std::vector<double> doubles() { return std::vector<double>(kItems, 0.25); }

std::string keyOfSchema(const std::string& name, const std::string& type,
                        const std::string& value) {
  return "<key name='" + name + "' type='" + type + "'><default>" + value + "</default></key>";
}

// One schema for the nodes, one for the node with many keys.
std::string schemas() {
  std::string items;
  for (const double item : doubles()) items += (items.empty() ? "" : ",") + std::to_string(item);
  std::string text = "<schemalist><schema id='bench.node'>";
  for (int key = 0; key < bench::kKeysPerNode; ++key) {
    const std::string name = bench::keyName(key);
    text += name == kText      ? keyOfSchema(name, "s", "'a text of 20 letters'")
            : name == kDoubles ? keyOfSchema(name, "ad", "[" + items + "]")
                               : keyOfSchema(name, "i", std::to_string(key));
  }
  text += "</schema><schema id='bench.listed'>";
  for (int key = 0; key < kListedKeys; ++key) {
    text += keyOfSchema(bench::keyName(key), "i", std::to_string(key));
  }
  return text + "</schema></schemalist>";
}

// GSettings objects on a memory back end of their own.
class GTree {
 public:
  explicit GTree(int nodes) : backend_(g_memory_settings_backend_new()) {
    for (int node = 0; node < nodes; ++node) {
      const std::string name = bench::nodeName(node);
      nodes_[name] = make("bench.node", "/" + name + "/");
    }
  }
  ~GTree() {
    for (const auto& node : nodes_) g_object_unref(node.second);
    g_object_unref(backend_);
  }
  GTree(const GTree&) = delete;
  GTree& operator=(const GTree&) = delete;

  GSettings* at(const std::string& path) const { return nodes_.find(path)->second; }

  GSettings* make(const char* schema, const std::string& path) const {
    GSettingsSchema* const found = g_settings_schema_source_lookup(source(), schema, FALSE);
    GSettings* const made = g_settings_new_full(found, backend_, path.c_str());
    g_settings_schema_unref(found);
    return made;
  }

 private:
  static GSettingsSchemaSource* source() {
    static GSettingsSchemaSource* const compiled = compile();
    return compiled;
  }

  static GSettingsSchemaSource* compile() {
    const bench::TemporaryDirectory directory;
    std::ofstream(directory.path() + "/bench.gschema.xml") << schemas();
    if (std::system((SCHEMA_COMPILER " " + directory.path()).c_str()) != 0) std::abort();
    return g_settings_schema_source_new_from_directory(directory.path().c_str(), nullptr, TRUE,
                                                       nullptr);
  }

  GSettingsBackend* backend_;
  std::unordered_map<std::string, GSettings*> nodes_;
};

struct OurTree {
  OurTree() : root(bench::makeRoot()) {
    for (int number = 0; number < kNodes; ++number) {
      const SettingsPtr node = bench::add(root, bench::nodeName(number), false);
      for (int key = 0; key < bench::kKeysPerNode; ++key) {
        const std::string name = bench::keyName(key);
        bench::add(node, name, true);
        node->setAny(name,
                     name == kText      ? boost::any(std::string("a text of 20 letters"))
                     : name == kDoubles ? boost::any(doubles())
                                        : boost::any(key),
                     "factory");
      }
    }
    listed = bench::add(root, "listed", false);
    for (int key = 0; key < kListedKeys; ++key) {
      bench::add(listed, bench::keyName(key), true);
      listed->setAny(bench::keyName(key), key, "factory");
    }
  }

  SettingsPtr root, listed;
};

// Leaked on purpose, so that the exit is quick.
const GTree& theirs() {
  static const GTree* const tree = new GTree(kNodes);
  return *tree;
}

const OurTree& ours() {
  static const OurTree* const tree = new OurTree;
  return *tree;
}

// Calls `work` with the paths of the nodes in turn.
template <class Work>
void forNodesInTurn(benchmark::State& state, const Work& work) {
  ours();
  theirs();
  std::vector<std::vector<std::string>> paths;
  for (int node = 0; node < kNodes; ++node) paths.push_back({bench::nodeName(node)});
  std::size_t next = state.thread_index() * kNodes / 2;
  for (auto _ : state) work(paths[next++ % kNodes]);
}

void ourRead(benchmark::State& state, const std::string& key) {
  const SettingsPtr& root = ours().root;
  forNodesInTurn(state, [&](const std::vector<std::string>& path) {
    benchmark::DoNotOptimize(root->findDescendant(path)->getValue(key, kNoLevel));
  });
}

void oursReadInt(benchmark::State& state) { ourRead(state, kInt); }
void oursReadText(benchmark::State& state) { ourRead(state, kText); }
void oursReadDoubles(benchmark::State& state) { ourRead(state, kDoubles); }

void gsettingsReadInt(benchmark::State& state) {
  forNodesInTurn(state, [](const std::vector<std::string>& path) {
    benchmark::DoNotOptimize(g_settings_get_int(theirs().at(path[0]), kInt.c_str()));
  });
}

void gsettingsReadText(benchmark::State& state) {
  forNodesInTurn(state, [](const std::vector<std::string>& path) {
    gchar* const text = g_settings_get_string(theirs().at(path[0]), kText.c_str());
    benchmark::DoNotOptimize(std::string(text));
    g_free(text);
  });
}

void gsettingsReadDoubles(benchmark::State& state) {
  forNodesInTurn(state, [](const std::vector<std::string>& path) {
    GVariant* const value = g_settings_get_value(theirs().at(path[0]), kDoubles.c_str());
    gsize count;
    const auto* items =
        static_cast<const double*>(g_variant_get_fixed_array(value, &count, sizeof(double)));
    benchmark::DoNotOptimize(std::vector<double>(items, items + count));
    g_variant_unref(value);
  });
}

void oursSet(benchmark::State& state) {
  int value = 0;
  forNodesInTurn(state, [&](const std::vector<std::string>& path) {
    ours().root->findDescendant(path)->setAny(kInt, ++value, kSession);
  });
}

// Uses one object only, because the back end notifies every object of every change.
void gsettingsSet(benchmark::State& state) {
  const GTree one(1);
  GSettings* const node = one.at(bench::nodeName(0));
  int value = 0;
  for (auto _ : state) g_settings_set_int(node, kInt.c_str(), ++value);
}

// Runs the main loop, in which GSettings delivers, until all listeners have been called.
void gsettingsDeliver(benchmark::State& state) {
  const GTree one(1);
  GSettings* const node = one.at(bench::nodeName(0));
  static long heard;
  void (*const onChange)(GSettings*, gchar*, gpointer) = [](GSettings*, gchar*, gpointer) {
    ++heard;
  };
  for (int i = 0; i < state.range(0); ++i) {
    g_signal_connect(node, ("changed::" + kInt).c_str(), G_CALLBACK(onChange), nullptr);
  }
  // GSettings notifies only of keys that have been read.
  int value = g_settings_get_int(node, kInt.c_str());
  for (auto _ : state) {
    const long all = heard + state.range(0);
    g_settings_set_int(node, kInt.c_str(), ++value);
    while (heard < all) g_main_context_iteration(nullptr, TRUE);
  }
}

void oursDeliver(benchmark::State& state) {
  const SettingsPtr node = ours().root->getChild(bench::nodeName(0));
  std::vector<std::unique_ptr<zlutil::eventmgr::ScopedConnection>> connections;
  long heard = 0;
  for (int i = 0; i < state.range(0); ++i) {
    connections.push_back(std::make_unique<zlutil::eventmgr::ScopedConnection>(
        node->getChild(kInt)->addListener<SettingsValueChangeEvent>(
            [&heard](const SettingsValueChangeEvent&) { ++heard; })));
  }
  static int value = 0;
  for (auto _ : state) node->setAny(kInt, ++value, kSession);
  if (heard == 0) state.SkipWithError("no listener was called");
}

void oursChange(benchmark::State& state) {
  zlutil::settings::SettingsValues values;
  for (int key = 0; key < state.range(0); ++key) {
    values.emplace_back(ours().listed->getChild(bench::keyName(key)), 0);
  }
  static int value = 0;
  for (auto _ : state) {
    ++value;
    for (auto& change : values) change.second = value;
    ours().root->setMultiple(boost::make_iterator_range(values.cbegin(), values.cend()), kSession,
                             0);
  }
}

// Uses several objects, because one can apply at most 255 changes.
void gsettingsChange(benchmark::State& state) {
  const GTree tree(0);
  std::vector<GSettings*> objects;
  for (int i = 0; i < state.range(0) / bench::kKeysPerNode; ++i) {
    objects.push_back(tree.make("bench.listed", "/" + bench::nodeName(i) + "/"));
    g_settings_delay(objects.back());
  }
  int value = 0;
  for (auto _ : state) {
    ++value;
    for (GSettings* const object : objects) {
      for (int key = 0; key < bench::kKeysPerNode; ++key) {
        g_settings_set_int(object, bench::keyName(key).c_str(), value);
      }
      g_settings_apply(object);
    }
  }
  for (GSettings* const object : objects) g_object_unref(object);
}

void oursList(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<std::string> names;
    for (const SettingsPtr& child : ours().listed->getChildren()) names.push_back(child->getName());
    benchmark::DoNotOptimize(names);
  }
}

void gsettingsList(benchmark::State& state) {
  const GTree tree(0);
  GSettings* const object = tree.make("bench.listed", "/listed/");
  GSettingsSchema* schema;
  g_object_get(object, "settings-schema", &schema, nullptr);
  for (auto _ : state) {
    gchar** const names = g_settings_schema_list_keys(schema);
    benchmark::DoNotOptimize(names);
    g_strfreev(names);
  }
  g_settings_schema_unref(schema);
  g_object_unref(object);
}

BENCHMARK(oursReadInt)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(gsettingsReadInt)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(oursReadText);
BENCHMARK(gsettingsReadText);
BENCHMARK(oursReadDoubles);
BENCHMARK(gsettingsReadDoubles);
BENCHMARK(oursSet);
BENCHMARK(gsettingsSet);
BENCHMARK(oursDeliver)->Arg(1)->Arg(100);
BENCHMARK(gsettingsDeliver)->Arg(1)->Arg(100);
BENCHMARK(oursChange)->Arg(1000);
BENCHMARK(gsettingsChange)->Arg(1000);
BENCHMARK(oursList);
BENCHMARK(gsettingsList);

}  // namespace
