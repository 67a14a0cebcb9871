// Prints the resident memory, in kilobytes, of a process with a tree of that many settings:
//
//   shared_memory_bench plain COUNT                   in memory
//   shared_memory_bench shared COUNT CLUSTER_DIR      from a cluster that runs and has them
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "bench/shared_cluster.h"

namespace {

using namespace zlutil::settings::host;

long residentKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.compare(0, 6, "VmRSS:") == 0) return std::atol(line.c_str() + 6);
  }
  return 0;
}

NodePtr plainTree(int count) {
  const auto root = boost::make_shared<Node>(Tree::makeStandalone(), "s", true, ValidatorPtr());
  ExternalChanges contents;
  for (int i = 0; i < 100; ++i) {
    contents.changes.push_back(DefineEntry{"n" + std::to_string(i), false, 0, {}});
  }
  for (int i = 0; i < count; ++i) {
    const std::string path = "n" + std::to_string(i % 100) + ".k" + std::to_string(i);
    contents.changes.push_back(DefineEntry{path, true, zlutil::boostany::kKindOf<int>, {}});
    contents.changes.push_back(PutValue{path, i});
  }
  applyExternalChanges(*root, kWorkgroup, contents);
  return root;
}

}  // namespace

int main(int, char** argv) {
  const int count = std::atoi(argv[2]);
  const NodePtr root = argv[3] ? test::openShared(bench::optionsOf(argv[3])) : plainTree(count);
  const std::string last = std::to_string(count - 1);
  if (!root->getChild("n99") || !root->getChild("n99")->getChild("k" + last)) std::abort();
  // The watch has been opened, and the store is at rest.
  std::this_thread::sleep_for(std::chrono::seconds(3));
  std::printf("%ld\n", residentKilobytes());
  std::fflush(stdout);
  std::_Exit(0);
}
