// The names of the nodes and keys of the benchmarks' trees. A node has 100 keys unless a benchmark
// says otherwise.
#pragma once

#include <string>

namespace bench {

inline constexpr int kKeysPerNode = 100;

inline std::string nodeName(int node) { return "node" + std::to_string(node); }
inline std::string keyName(int key) { return "k" + std::to_string(key); }

}  // namespace bench
