// The store of a level that machines share on an etcd cluster. The level is in memory, so reading
// needs no network; a ClusterWatch keeps it current. A change is one transaction of etcd, on the
// condition that no key that it writes is later than the tree knows; if one is, the tree gets the
// later content, and decides whether the change is still possible.
//
// If no member answers, the level is what the local copy has, and apply() throws at once.
#pragma once

#include <unordered_map>

#include "base/mutex.h"
#include "base/thread_annotations.h"
#include "host/shared_store/cluster_watch.h"
#include "host/shared_store/cluster_writer.h"
#include "host/shared_store/key_layout.h"
#include "host/shared_store/local_copy.h"
#include "host/shared_store/tree_progress.h"
#include "host/tree/store_library.h"

namespace zlutil::settings::host {

class SharedStore final : public Store, private ClusterListener {
 public:
  // Throws std::invalid_argument.
  explicit SharedStore(const SharedStoreOptions& options);
  ~SharedStore() override;

  void readAll(Node& root, int level) override;
  bool apply(const Changes& changes, const Receiver& receive) override;
  void catchUp(const Receiver& receive) override;
  void synchronize(const Receiver& receive) override { catchUp(receive); }
  bool keepsChanges() const override { return true; }
  bool isCurrent() override;
  const std::string& readOnlyReason() const override { return readOnlyReason_; }
  std::string sourceOf(const std::string&) const override { return name_; }
  bool watch(const Watcher& watcher) override;
  void look() override;

 private:
  using Item = TreeProgress::Item;

  void onContent(const AnswerHeader& header, std::vector<KeyValue> items) override;
  void onEvents(const AnswerHeader& header, std::vector<WatchEvent> events) override;
  void onAway(const std::string& reason) override;
  void onAnswers() override;
  bool onIdle() override;

  void fill(Node& root, const std::vector<KeyValue>& found);
  void noteValidator(const std::string& path, const ValidatorChoice& validator) REQUIRES(mutex_);
  void add(KeyReader::Reading reading, std::int64_t revision, std::vector<Item>& items)
      REQUIRES(mutex_);
  bool deliver(const Receiver& receive);
  WritePlan plan(const Changes& changes, const std::string& commit);
  bool takeLater(const std::vector<KeyValue>& later, const Receiver& receive);
  void noteCommitted(const WritePlan& plan, std::int64_t revision);
  void requireAnswers();
  void loadAgain();

  const SharedStoreOptions options_;
  const ClusterOptions cluster_;
  const std::string name_;            // in messages
  const std::string readOnlyReason_;  // always empty
  int level_ = 0;                     // constant after readAll()
  Watcher watcher_;                   // constant after watch()

  // Used by the thread of the watch, once there is one.
  KeyReader reader_;
  LocalCopy copy_;
  int reports_ = 0;        // of ignored keys
  bool hasLoaded_ = true;  // since the last onIdle()

  // Used under the tree's writer(), as every call that changes the tree is.
  ClusterWriter writer_;
  TreeProgress progress_;

  base::Mutex mutex_;
  // What the watch has brought and the tree does not have: everything, and then events.
  bool hasContent_ GUARDED_BY(mutex_) = false;
  std::vector<Item> content_ GUARDED_BY(mutex_), events_ GUARDED_BY(mutex_);
  std::int64_t contentRevision_ GUARDED_BY(mutex_) = 0, received_ GUARDED_BY(mutex_) = 0;
  bool mustLoad_ GUARDED_BY(mutex_) = false;
  std::string away_ GUARDED_BY(mutex_);  // why no member answers; "" if one does
  std::unordered_map<std::string, ValidatorChoice> validators_ GUARDED_BY(mutex_);  // by path
  std::chrono::steady_clock::time_point lastReport_ GUARDED_BY(mutex_);

  std::unique_ptr<ClusterWatch> watch_;  // last, because its thread uses the other members
};

}  // namespace zlutil::settings::host
