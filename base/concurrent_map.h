// A map that many threads may use at once.
//
// ConcurrentMap is the interface, ConcurrentTBBHashMap its implementation over TBB's
// concurrent_hash_map. Operations on one entry hold the whole-map lock shared and rely on the locks
// of TBB's buckets; operations on the whole map (clear, forEach, size) hold it exclusively. A key's
// copy constructor, hash and equality run under these locks. They may throw; the map is then
// unchanged.
//
// erase() moves the value out, so the caller releases what it owns outside of all locks.
#pragma once

#include <tbb/concurrent_hash_map.h>
#include <tbb/tbb_allocator.h>

#include <boost/function.hpp>
#include <boost/optional.hpp>
#include <boost/thread/locks.hpp>
#include <boost/thread/shared_mutex.hpp>
#include <utility>

namespace zlutil {
namespace threadutil {

// Hashes and compares the keys of a map; specialised for each key type.
template <class Key>
struct Hash;

template <class Key, class Value>
class ConcurrentMap {
 public:
  using KeyType = Key;
  using ValueType = Value;

  virtual ~ConcurrentMap() = default;

  virtual void clear() = 0;
  // Returns the erased value, nothing if there was none.
  virtual boost::optional<Value> erase(const Key& key) = 0;
  virtual boost::optional<Value> find(const Key& key) const = 0;
  // Returns the value of the key. If there is none, enters the result of `make` and returns it.
  virtual Value findOrInsertNew(const Key& key, const boost::function0<Value>& make) = 0;
  virtual void forEach(const boost::function1<void, std::pair<const Key, Value>&>& visit) = 0;
  virtual void forEach(
      const boost::function1<void, std::pair<const Key, const Value>&>& visit) const = 0;
  // Returns false, and stores nothing, if the key is present.
  virtual bool insert(const std::pair<const Key, Value>& entry) = 0;
  virtual std::size_t size() const = 0;
};

template <class Map>
class ConcurrentTBBHashMap;

template <class Key, class Value>
class ConcurrentTBBHashMap<ConcurrentMap<Key, Value>> : public ConcurrentMap<Key, Value> {
  using Table = tbb::concurrent_hash_map<Key, Value, Hash<Key>,
                                         tbb::tbb_allocator<std::pair<const Key, Value>>>;
  using SharedLock = boost::shared_lock<boost::shared_mutex>;

 public:
  // Excludes all other operations on the map for its lifetime.
  class WholeMapLock {
   public:
    explicit WholeMapLock(const ConcurrentTBBHashMap& map) : lock_(map.mutex_) {}

   private:
    boost::unique_lock<boost::shared_mutex> lock_;
  };

  void clear() override {
    Table dropped;
    {
      const WholeMapLock lock(*this);
      dropped.swap(table_);
    }
  }

  boost::optional<Value> erase(const Key& key) override {
    boost::optional<Value> erased;
    const SharedLock lock(mutex_);
    typename Table::accessor found;
    if (table_.find(found, key)) {
      erased = std::move(found->second);
      table_.erase(found);
    }
    return erased;
  }

  boost::optional<Value> find(const Key& key) const override {
    const SharedLock lock(mutex_);
    typename Table::const_accessor found;
    if (!table_.find(found, key)) return boost::none;
    return found->second;
  }

  Value findOrInsertNew(const Key& key, const boost::function0<Value>& make) override {
    const SharedLock lock(mutex_);
    typename Table::accessor found;
    if (table_.insert(found, key)) {
      try {
        found->second = make();
      } catch (...) {
        table_.erase(found);
        throw;
      }
    }
    return found->second;
  }

  void forEach(const boost::function1<void, std::pair<const Key, Value>&>& visit) override {
    const WholeMapLock lock(*this);
    for (auto& entry : table_) visit(entry);
  }

  void forEach(
      const boost::function1<void, std::pair<const Key, const Value>&>& visit) const override {
    const WholeMapLock lock(*this);
    for (const auto& entry : table_) {
      std::pair<const Key, const Value> copy(entry);
      visit(copy);
    }
  }

  bool insert(const std::pair<const Key, Value>& entry) override {
    const SharedLock lock(mutex_);
    return table_.insert(entry);
  }

  std::size_t size() const override {
    const WholeMapLock lock(*this);
    return table_.size();
  }

 private:
  mutable boost::shared_mutex mutex_;
  Table table_;
};

}  // namespace threadutil
}  // namespace zlutil
