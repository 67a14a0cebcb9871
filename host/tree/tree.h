// What the entries of one tree have in common: its context, its lock, and the store behind each
// level. Every entry shares it, so it outlives the last of them, also when an entry has been
// removed or its root is gone.
//
// Two locks, taken in this order:
//   writer()  held by the one thread that is changing the tree, over the store's I/O
//   lock()    guards the entries' memory: held for reading by everyone who looks, and for writing
//             only while a change is made visible
// Neither is held while a validator or a listener runs. Readers take lock() only, so they never
// wait for validation, storage or listeners.
#pragma once

#include <array>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>
#include <memory>
#include <string>

#include "host/tree/level_order.h"
#include "host/tree/store.h"
#include "host/tree/tree_lock.h"
#include "host/tree/writer_mutex.h"
#include "service/context.h"

namespace zlutil::settings::host {

class Entry;
class ExternalEvents;

class Tree : public boost::intrusive_ref_counter<Tree> {
 public:
  using Stores = std::array<std::shared_ptr<Store>, kLevelCount>;

  Tree(contextmgr::ZcrID context, Stores stores);
  ~Tree();

  // A tree in memory only, with every level writable, which belongs to no context.
  static boost::intrusive_ptr<Tree> makeStandalone();

  contextmgr::ZcrID context() const { return context_; }
  bool isStandalone() const { return context_ == contextmgr::AnyZcrID; }

  TreeLock& lock() { return lock_; }
  WriterMutex& writer() { return writer_; }

  Store& store(int level) const { return *stores_[level]; }
  bool isReadOnly(int level) const { return !store(level).readOnlyReason().empty(); }

  // From now on changes by others come in below `root`. Once at most, before anyone else knows the
  // tree.
  void connect(const boost::weak_ptr<Entry>& root);
  // Nobody will say when there are such changes. Before anyone else but stores knows the tree.
  void setMustLook() { mustLook_ = true; }
  // Empty when the tree is not connected, or its root is gone.
  boost::shared_ptr<Entry> root() const { return root_.lock(); }
  // What listeners are still to hear of changes by others; null when the tree is not connected.
  ExternalEvents* externalEvents() const { return externalEvents_.get(); }

  // To be called with no lock held before anything is read or changed: catches up with others where
  // nothing else does it.
  bool mustLook() const { return mustLook_; }
  void look() {
    if (mustLook_) lookAtStores();
  }

 private:
  void lookAtStores();

  const contextmgr::ZcrID context_;
  TreeLock lock_;
  WriterMutex writer_;
  const Stores stores_;
  boost::weak_ptr<Entry> root_;  // constant after connect()
  std::shared_ptr<ExternalEvents>
      externalEvents_;  // constant after connect(); shared with its thread
  bool mustLook_ = false;
};
using TreePtr = boost::intrusive_ptr<Tree>;

}  // namespace zlutil::settings::host
