// Counters by which a reader that keeps what it has read learns, without a call, that it may be out
// of date. Java keeps values in effect and lists of names by them. An option of the service beside
// the contract: a host may leave table() out.
//
// A key counts under two of them: under its name together with its node's, and under its name alone
// for readers to whom the node is the root, so that they know no name of it. The list of a node's
// children counts likewise, under the node's name with an empty one. Keys and lists share counters:
// one that has moved says that something may have changed, one that has not moved says that nothing
// has. Reading by them goes: take the count, read, keep both; what was read holds as long as the
// count is the same.
//
// The service adds to the counters of a key whenever the key's value changes at any level, and when
// the key enters or leaves the tree, by itself or with a node above it; to those of a list when an
// entry enters or leaves it, or its node the tree. It does so not before a reader finds the change,
// and before the call that made it returns or an event tells of it. What leaves is counted before
// anything can be added in its place.
//
// The counters are one table for all trees and stay where they are until the process ends, so a
// reader may look at any time, whatever has become of the tree. Any thread.
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

  // Where the counter of a key of a node stands; an empty name is no node's. A reader in another
  // language has to come to the same place (ChangeCounters.java).
  static std::size_t place(std::string_view node, std::string_view key) {
    return (31 * mark(key) + mark(node)) * 0x9E3779B9u >> 20;
  }

  // Counts a change of a key.
  static void add(std::string_view node, std::string_view key) {
    Table& counters = table();
    counters[place(node, key)].fetch_add(1, std::memory_order_acq_rel);
    counters[place({}, key)].fetch_add(1, std::memory_order_acq_rel);
  }

  // Counts a change of the list of a node's children.
  static void addList(std::string_view node) { add(node, {}); }

  // Counts a change of everything.
  static void addAll() {
    for (Counter& counter : table()) counter.fetch_add(1, std::memory_order_acq_rel);
  }

 private:
  // Tells most names apart by their first and last four bytes and their length.
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
