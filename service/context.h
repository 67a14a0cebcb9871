// Identifiers of runtime contexts. The service keeps one settings tree for each context. Values are
// immutable and may be used on any thread.
#pragma once

#include <cstdint>

#include "base/export.h"

namespace zlutil {
namespace contextmgr {

class ZcrID {
 public:
  constexpr explicit ZcrID(std::uint64_t value) : value_(value) {}
  constexpr std::uint64_t value() const { return value_; }

  friend constexpr bool operator==(ZcrID a, ZcrID b) { return a.value_ == b.value_; }
  friend constexpr bool operator!=(ZcrID a, ZcrID b) { return a.value_ != b.value_; }
  friend constexpr bool operator<(ZcrID a, ZcrID b) { return a.value_ < b.value_; }

 private:
  std::uint64_t value_;
};

// Any context: stands for the process's own where a tree is asked for; that of standalone trees.
inline constexpr ZcrID AnyZcrID{0};

// The process's own context.
inline constexpr ZcrID BlessedZcrID{1};

}  // namespace contextmgr
}  // namespace zlutil
