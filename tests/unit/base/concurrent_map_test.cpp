#include "base/concurrent_map.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#ifdef __SANITIZE_THREAD__
// TBB takes the memory of its entries from an allocator of its own, whose locks the thread
// sanitizer does not see: it takes an entry in memory that another thread has released for a race.
namespace tbb::detail::r1 {
void* allocate_memory(std::size_t size) { return std::malloc(size); }
void deallocate_memory(void* memory) { std::free(memory); }
}  // namespace tbb::detail::r1
#endif

namespace test {
// A key that may throw when it is compared, as the key of a dead entry does.
struct Name {
  std::string text;
  bool isDead = false;
};
}  // namespace test

namespace zlutil::threadutil {
template <>
struct Hash<test::Name> {
  // Few different hashes, so that keys share buckets.
  static std::size_t hash(const test::Name& name) { return name.text.size(); }
  static bool equal(const test::Name& left, const test::Name& right) {
    if (left.isDead || right.isDead) throw std::runtime_error("dead");
    return left.text == right.text;
  }
};
}  // namespace zlutil::threadutil

namespace test {
namespace {

using Interface = zlutil::threadutil::ConcurrentMap<Name, std::shared_ptr<int>>;
using Map = zlutil::threadutil::ConcurrentTBBHashMap<Interface>;

std::shared_ptr<int> number(int value) { return std::make_shared<int>(value); }

std::map<std::string, int> contentsOf(const Interface& map) {
  std::map<std::string, int> contents;
  map.forEach([&](std::pair<const Name, const std::shared_ptr<int>>& entry) {
    contents[entry.first.text] = *entry.second;
  });
  return contents;
}

TEST(ConcurrentMap, KeepsTheFirstValueOfAKeyUntilItIsErased) {
  Map map;
  EXPECT_TRUE(map.insert({{"a"}, number(1)}));
  EXPECT_FALSE(map.insert({{"a"}, number(2)}));
  EXPECT_TRUE(map.insert({{"b"}, number(3)}));
  EXPECT_EQ(map.size(), 2u);
  EXPECT_EQ(**map.find({"a"}), 1);
  EXPECT_FALSE(map.find({"c"}));
  const auto erased = map.erase({"a"});
  ASSERT_TRUE(erased);
  EXPECT_EQ(erased->use_count(), 1) << "the map has kept a copy";
  EXPECT_FALSE(map.erase({"a"}));
  EXPECT_EQ(contentsOf(map), (std::map<std::string, int>{{"b", 3}}));
}

TEST(ConcurrentMap, MakesAMissingValueOnceAndKeepsNoneIfThatFails) {
  Map map;
  int made = 0;
  const auto make = [&] { return number(++made); };
  EXPECT_EQ(*map.findOrInsertNew({"a"}, make), 1);
  EXPECT_EQ(*map.findOrInsertNew({"a"}, make), 1);
  const auto fail = []() -> std::shared_ptr<int> { throw std::runtime_error("no"); };
  EXPECT_THROW(map.findOrInsertNew({"b"}, fail), std::runtime_error);
  EXPECT_FALSE(map.find({"b"}));
  EXPECT_EQ(*map.findOrInsertNew({"b"}, make), 2);
}

TEST(ConcurrentMap, StaysUnchangedIfAKeyCannotBeCompared) {
  Map map;
  map.insert({{"a"}, number(1)});
  map.insert({{"bb"}, number(2)});
  EXPECT_THROW(map.insert({{"c", true}, number(3)}), std::runtime_error);
  EXPECT_THROW(map.find({"c", true}), std::runtime_error);
  EXPECT_THROW(map.erase({"c", true}), std::runtime_error);
  EXPECT_EQ(contentsOf(map), (std::map<std::string, int>{{"a", 1}, {"bb", 2}}));
  EXPECT_TRUE(map.insert({{"c"}, number(3)}));
}

TEST(ConcurrentMap, ChangesEveryValueAndReleasesAll) {
  Map map;
  const std::shared_ptr<int> held = number(5);
  map.insert({{"a"}, held});
  map.insert({{"b"}, number(6)});
  map.forEach([](std::pair<const Name, std::shared_ptr<int>>& entry) {
    entry.second = number(*entry.second + 1);
  });
  EXPECT_EQ(contentsOf(map), (std::map<std::string, int>{{"a", 6}, {"b", 7}}));
  EXPECT_EQ(held.use_count(), 1);
  map.clear();
  EXPECT_EQ(map.size(), 0u);
  EXPECT_TRUE(map.insert({{"a"}, number(8)}));
}

TEST(ConcurrentMap, KeepsEveryEntryUnderConcurrentUse) {
  constexpr int kThreads = 4, kRounds = 2000;
  Map map;
  std::atomic<int> entered{0}, left{0};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int round = 0; round < kRounds; ++round) {
        const Name name{std::to_string((round * kThreads + thread) % 97)};
        if (map.insert({name, number(round)})) ++entered;
        if (round % 3 == 0 && map.erase(name)) ++left;
        if (round % 500 == 0) map.forEach([](std::pair<const Name, std::shared_ptr<int>>&) {});
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(map.size(), static_cast<std::size_t>(entered - left));
}

}  // namespace
}  // namespace test
