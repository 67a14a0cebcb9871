// The state that the entries of one tree share: its context, its locks, and the store of each
// level. Every entry shares the tree, so it outlives the last of them.
//
// Two locks, acquired in this order: writer() by the one thread that changes the tree, lock() to
// read the entries' memory or to change it. TreeEdit (host/change/tree_edit.h) has the rules for
// changes. Readers acquire lock() only, so they never wait for validators, storage or listeners.
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
#include "host/tree/unmatched_values.h"
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

  // Returns a tree in memory that belongs to no context; every level is writable.
  static boost::intrusive_ptr<Tree> makeStandalone();

  contextmgr::ZcrID context() const { return context_; }
  bool isStandalone() const { return context_ == contextmgr::AnyZcrID; }

  TreeLock& lock() { return lock_; }
  WriterMutex& writer() { return writer_; }

  Store& store(int level) const { return *stores_[level]; }
  bool isReadOnly(int level) const { return !store(level).readOnlyReason().empty(); }

  // From now on external changes are applied below `root`. Called once at most, before any other
  // thread knows the tree.
  void connect(const boost::weak_ptr<Entry>& root);
  // Makes every read and change call look(), because no thread watches the stores. Called before
  // any other thread, except those of stores, knows the tree.
  void setMustLook() { mustLook_ = true; }
  // Empty if the tree is not connected, or its root is gone.
  boost::shared_ptr<Entry> root() const { return root_.lock(); }
  // The queue of events of external changes; null if the tree is not connected.
  ExternalEvents* externalEvents() const { return externalEvents_.get(); }

  // Guarded by lock().
  FormerNames& formerNames() { return formerNames_; }
  LeftOut& leftOut() { return leftOut_; }

  // Returns whether no thread watches for external changes, so that look() must.
  bool mustLook() const { return mustLook_; }
  // Applies external changes if mustLook(). Called before every read and change, with no lock held.
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
  FormerNames formerNames_;
  LeftOut leftOut_;
};
using TreePtr = boost::intrusive_ptr<Tree>;

}  // namespace zlutil::settings::host
