// Counters of changes, by which a reader learns without a call that a value which it has cached may
// be out of date. Java caches effective values and lists of names by them. An option of the service
// beside the contract: a host may leave table() out.
//
// A key has two counters: that of its node's name and its own, and that of its own name alone, for
// readers to whom the node is the root, whose name they do not know. The list of a node's children
// has the counters of the node's name and an empty one. Keys and lists share counters: one that has
// moved says that something may have changed, one that has not moved says that nothing has. A
// reader takes the count, reads, and caches both; the cached value holds as long as the count is
// the same.
//
// The service counts a key when its value changes at any level and when the key enters or leaves
// the tree, by itself or with a node above it. It counts a list when an entry enters or leaves it,
// or its node the tree. It counts once readers can find the change, before the call that made the
// change returns and before the event of it. A removal is counted before another entry can be added
// under the same path.
//
// The counters are one table for all trees, which stays mapped until the process ends, so a reader
// may look at any time, even after its tree has gone. Any thread.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/export.h"

namespace zlutil {
namespace settings {

class SETTINGS_HOST_API ChangeCounters {
 public:
  using Counter = std::atomic<std::uint64_t>;
  static_assert(sizeof(Counter) == sizeof(std::uint64_t) && Counter::is_always_lock_free,
                "others read the counters as plain 64-bit words");

  static constexpr std::size_t kCounters = 4096;
  using Table = std::array<Counter, kCounters>;

  SETTINGS_HOST_OPTION static Table& table();

  // Returns the position of the counter of a key of a node; an empty node name stands for the root.
  // ChangeCounters.java computes the same position.
  static std::size_t position(std::string_view node, std::string_view key) {
    return (31 * mark(key) + mark(node)) * 0x9E3779B9u >> 20;
  }

  // Counts a change of a key.
  static void add(std::string_view node, std::string_view key) {
    Table& counters = table();
    counters[position(node, key)].fetch_add(1, std::memory_order_acq_rel);
    counters[position({}, key)].fetch_add(1, std::memory_order_acq_rel);
  }

  // Counts a change of the list of a node's children.
  static void addList(std::string_view node) { add(node, {}); }

  // Counts a change of everything.
  static void addAll() {
    for (Counter& counter : table()) counter.fetch_add(1, std::memory_order_acq_rel);
  }

 private:
  // Distinguishes most names by their first and last four bytes and their length.
  static std::uint32_t mark(std::string_view name) {
    const std::size_t size = name.size();
    if (size >= 4) return word(name.data()) * 37 + word(name.data() + size - 4) + 7 * size32(size);
    std::uint32_t bytes = 0;
    for (const char byte : name) bytes = bytes << 8 | static_cast<unsigned char>(byte);
    return bytes * 38 + 7 * size32(size);
  }

  static std::uint32_t word(const char* bytes) {
    const auto at = [bytes](int i) {
      return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i]));
    };
    return at(0) << 24 | at(1) << 16 | at(2) << 8 | at(3);
  }

  static std::uint32_t size32(std::size_t size) { return static_cast<std::uint32_t>(size); }
};

}  // namespace settings
}  // namespace zlutil
