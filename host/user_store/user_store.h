// The store of the user level: a SQLite database in the user's directory, one per context, which
// all processes of the user share. What apply() has stored is on the disk when it returns.
//
// A thread of the store's notices what other processes have committed, by a stamp file that every
// commit writes to and, as the net under it, by asking the database once a second. It also opens
// the database when that was not possible before, or when the file has been replaced or was away
// for a while, and makes the daily backup. Where the process can have no further thread, look()
// does all of that but backups. A process that forks must not use its settings in the child.
//
// Where the database cannot be opened, readAll() still gives what can be read, and apply() throws
// StoreFailure with the path and the system's reason.
#pragma once

#include <chrono>

#include "base/mutex.h"
#include "base/thread_annotations.h"
#include "host/os/file_identity.h"
#include "host/user_store/stamp_watch.h"
#include "host/user_store/user_store_opening.h"
#include "host/user_store/user_store_stamp.h"

namespace zlutil::settings::host {

class UserStore final : public Store {
 public:
  explicit UserStore(const UserStoreOptions& options);
  ~UserStore() override;

  void readAll(Node& root, int level) override;
  bool apply(const Changes& changes, const Receiver& receive) override;
  void catchUp(const Receiver& receive) override;
  bool keepsChanges() const override { return true; }
  bool isCurrent() override;
  const std::string& readOnlyReason() const override { return writable_; }
  bool watch(const Watcher& watcher) override;
  void look() override;

 private:
  void open(const UserStoreLock& alone) REQUIRES(mutex_);
  void close(const std::string& reason) REQUIRES(mutex_);
  void checkPlace() const REQUIRES(mutex_);
  void checkIdentity() const REQUIRES(mutex_);
  std::string reasonToOpenAnew() const REQUIRES(mutex_);
  void checkForReplacement() REQUIRES(mutex_);
  bool store(const Changes& changes, const Receiver& receive, const UserStoreLock& alone)
      REQUIRES(mutex_);
  std::int64_t store(const Changes& changes) REQUIRES(mutex_);
  bool handOver(const Receiver& receive) REQUIRES(mutex_);
  void noteOwn(std::int64_t revision) REQUIRES(mutex_);
  bool hasStayed(std::int64_t revision) REQUIRES(mutex_);
  bool hasExternalChanges() REQUIRES(mutex_);
  bool isTimeToOpen() REQUIRES(mutex_);
  bool needsCatchingUp();
  bool isBackedUp();

  const UserStoreOptions options_;
  const UserStoreFiles files_;
  const std::string writable_;
  Watcher watcher_;  // constant after watch()

  base::Mutex mutex_;
  std::unique_ptr<UserDatabase> database_ GUARDED_BY(mutex_);  // null while it cannot be opened
  std::string reason_ GUARDED_BY(mutex_);                      // why it is null
  std::unique_ptr<UserStoreStamp> stamp_ GUARDED_BY(mutex_);
  // Of the database when it was open the last time; none before the first time.
  FileIdentity file_ GUARDED_BY(mutex_), directory_ GUARDED_BY(mutex_);
  std::string identity_ GUARDED_BY(mutex_);
  // The tree has what the transactions up to this one have done, and these later ones of its own.
  std::int64_t seen_ GUARDED_BY(mutex_) = 0;
  std::vector<std::int64_t> own_ GUARDED_BY(mutex_);
  std::int64_t highest_ GUARDED_BY(mutex_) = 0;  // of all transactions that it has ever met
  std::int64_t dataVersion_ GUARDED_BY(mutex_) = 0;
  bool mustCompare_ GUARDED_BY(mutex_) = false;  // the tree with everything that is stored
  std::chrono::steady_clock::time_point triedToOpen_ GUARDED_BY(mutex_);

  std::unique_ptr<StampWatch> watch_;  // last: its thread uses the rest
};

}  // namespace zlutil::settings::host
