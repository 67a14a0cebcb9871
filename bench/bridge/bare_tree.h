// The tree of the floors: nodes and keys in hash tables, a key with a slot for each of four levels.
// It has no types, locks, validation or stores; no thread may read it while one changes it.
#pragma once

#include <jni.h>

#include <array>
#include <boost/any.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace bench {

inline constexpr std::array<std::string_view, 4> kLevels = {"session", "user", "workgroup",
                                                            "factory"};

struct BareListener {
  jobject listener, source;  // global references, never released
};

struct BareKey {
  std::array<boost::any, kLevels.size()> values;
  std::vector<BareListener> listeners;
  std::vector<std::string> parentPath;  // for the events
  jobject javaPath = nullptr, javaName = nullptr;
  std::string name;

  const boost::any& effectiveValue() const {
    for (const boost::any& value : values) {
      if (!value.empty()) return value;
    }
    return values.back();
  }

  const boost::any& value(std::string_view level) const {
    return level.empty() ? effectiveValue() : values[indexOf(level)];
  }

  static std::size_t indexOf(std::string_view level) {
    std::size_t index = 0;
    while (kLevels.at(index) != level) ++index;
    return index;
  }
};

struct BareNode {
  std::unordered_map<std::string, std::unique_ptr<BareNode>> nodes;
  std::unordered_map<std::string, std::unique_ptr<BareKey>> keys;

  // Returns the node at the path; null if there is none.
  BareNode* at(const std::vector<std::string>& path) {
    BareNode* node = this;
    for (const std::string& name : path) {
      const auto found = node->nodes.find(name);
      if (found == node->nodes.end()) return nullptr;
      node = found->second.get();
    }
    return node;
  }

  BareKey* key(const std::string& name) {
    const auto found = keys.find(name);
    return found == keys.end() ? nullptr : found->second.get();
  }
};

inline BareNode& treeOf(jlong handle) { return *reinterpret_cast<BareNode*>(handle); }

}  // namespace bench
