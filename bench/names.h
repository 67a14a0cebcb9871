// What the nodes and keys of the benchmarks' trees are called. Nodes have 100 keys each where a
// benchmark does not say otherwise.
#pragma once

#include <string>

namespace bench {

inline constexpr int kKeysPerNode = 100;

inline std::string nodeName(int node) { return "node" + std::to_string(node); }
inline std::string keyName(int key) { return "k" + std::to_string(key); }

}  // namespace bench
