// Loading a settings file, beside its floor: the same file read by the same XML parser into a bare
// tree of hash tables, without types, levels, checks or locks. `bytes_per_key` is the growth of the
// heap.
#include <benchmark/benchmark.h>
#include <expat.h>
#include <malloc.h>

#include <cstring>
#include <memory>
#include <unordered_map>
#include <vector>

#include "bench/generated_settings.h"
#include "service/settings.h"

namespace {

using zlutil::settings::Settings;

struct BareNode {
  std::unordered_map<std::string, std::unique_ptr<BareNode>> nodes;
  std::unordered_map<std::string, std::string> keys;
};

struct BareLoad {
  std::vector<BareNode*> open;
  std::string key, text;
};

const char* nameOf(const char** attributes) {
  for (; *attributes; attributes += 2) {
    if (std::strcmp(*attributes, "name") == 0) return attributes[1];
  }
  return "";
}

void onBegin(void* data, const char* element, const char** attributes) {
  BareLoad& load = *static_cast<BareLoad*>(data);
  load.text.clear();
  if (std::strcmp(element, "node") == 0) {
    auto& child = load.open.back()->nodes[nameOf(attributes)];
    child = std::make_unique<BareNode>();
    load.open.push_back(child.get());
  } else if (std::strcmp(element, "key") == 0) {
    load.key = nameOf(attributes);
  }
}

void onEnd(void* data, const char* element) {
  BareLoad& load = *static_cast<BareLoad*>(data);
  if (std::strcmp(element, "node") == 0) {
    load.open.pop_back();
  } else if (std::strcmp(element, "value") == 0) {
    load.open.back()->keys[load.key] = load.text;
  }
}

void onText(void* data, const char* text, int length) {
  static_cast<BareLoad*>(data)->text.append(text, length);
}

std::unique_ptr<BareNode> loadBare(const std::string& path) {
  auto root = std::make_unique<BareNode>();
  BareLoad load{{root.get()}, {}, {}};
  const XML_Parser parser = XML_ParserCreate(nullptr);
  XML_SetUserData(parser, &load);
  XML_SetElementHandler(parser, onBegin, onEnd);
  XML_SetCharacterDataHandler(parser, onText);
  std::ifstream file(path, std::ios::binary);
  constexpr int kChunk = 256 * 1024;
  do {
    file.read(static_cast<char*>(XML_GetBuffer(parser, kChunk)), kChunk);
    XML_ParseBuffer(parser, static_cast<int>(file.gcount()), file.eof());
  } while (!file.eof());
  XML_ParserFree(parser);
  return root;
}

// Loads once per iteration; the time to destroy the tree does not count.
template <class Load>
void measure(benchmark::State& state, const Load& load) {
  const int keys = static_cast<int>(state.range(0));
  const bench::SettingsOnDisk file(keys);
  double bytes = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const std::size_t before = mallinfo2().uordblks;
    state.ResumeTiming();
    auto root = load(file.path());
    state.PauseTiming();
    bytes = static_cast<double>(mallinfo2().uordblks - before);
    root.reset();
    state.ResumeTiming();
  }
  state.counters["bytes_per_key"] = bytes / keys;
  state.counters["time_per_key"] = benchmark::Counter(
      keys, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void loadSettings(benchmark::State& state) {
  measure(state, [](const std::string& path) {
    return Settings::importAsStandaloneObject(base::to_ustring(path));
  });
}
BENCHMARK(loadSettings)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void floorExpatAndHashTree(benchmark::State& state) { measure(state, loadBare); }
BENCHMARK(floorExpatAndHashTree)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
