// The store of the user level: a SQLite database in the user's directory, one per context, which
// all processes of the user share. A change is on the disk when apply() returns.
//
// A thread of the store notices commits of other processes: every commit writes to a stamp file,
// and once a second the thread asks the database too. It also opens the database if that failed
// before, or if the file was replaced or missing for a while, and makes the daily backup. If the
// process can have no further thread, look() does all of that but backups. A forked child must not
// use the settings of its parent.
//
// If the database cannot be opened, readAll() still reads as much as it can, and apply() throws
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

class UserStore final : public Store, public StoreArchive {
 public:
  explicit UserStore(const UserStoreOptions& options);
  ~UserStore() override;

  void readAll(Node& root, int level) override;
  bool apply(const Changes& changes, const Receiver& receive) override;
  void catchUp(const Receiver& receive) override;
  void synchronize(const Receiver& receive) override;
  bool keepsChanges() const override { return true; }
  bool isCurrent() override;
  const std::string& readOnlyReason() const override { return readOnlyReason_; }
  std::string sourceOf(const std::string& path) const override;
  bool watch(const Watcher& watcher) override;
  StoreArchive* archive() override { return this; }
  std::vector<PastCommit> commitsFrom(std::int64_t number) override;
  void backUp(const std::string& file) override;
  std::string restore(const std::string& file) override;
  void look() override;

 private:
  void open(const UserStoreLock& lock) REQUIRES(mutex_);
  void close(const std::string& reason) REQUIRES(mutex_);
  void checkPresence() const REQUIRES(mutex_);
  void checkIdentity() const REQUIRES(mutex_);
  std::string reasonToReopen() const REQUIRES(mutex_);
  void checkForReplacement() REQUIRES(mutex_);
  void requireDatabase() REQUIRES(mutex_);
  template <class Work>
  auto withDatabase(UserStoreLock::Mode mode, const Work& work) REQUIRES(mutex_);
  bool store(const Changes& changes, const Receiver& receive, const UserStoreLock& lock)
      REQUIRES(mutex_);
  std::int64_t store(const Changes& changes) REQUIRES(mutex_);
  bool deliverExternalChanges(const Receiver& receive) REQUIRES(mutex_);
  void readExternalChanges(const Receiver& receive) REQUIRES(mutex_);
  void noteOwnRevision(std::int64_t revision) REQUIRES(mutex_);
  bool hasPersisted(std::int64_t revision) REQUIRES(mutex_);
  bool hasExternalChanges() REQUIRES(mutex_);
  bool isBehind() REQUIRES(mutex_);
  bool mayRetryOpening() REQUIRES(mutex_);
  bool needsCatchingUp();
  bool tryBackUp();

  const UserStoreOptions options_;
  const UserStoreFiles files_;
  const std::string readOnlyReason_;  // always empty
  Watcher watcher_;                   // constant after watch()

  base::Mutex mutex_;
  std::unique_ptr<UserDatabase> database_ GUARDED_BY(mutex_);  // null while it cannot be opened
  std::string reason_ GUARDED_BY(mutex_);                      // why it is null
  std::unique_ptr<UserStoreStamp> stamp_ GUARDED_BY(mutex_);
  // Of the database that was opened last; none before that.
  FileIdentity file_ GUARDED_BY(mutex_), directory_ GUARDED_BY(mutex_);
  std::string identity_ GUARDED_BY(mutex_);
  // The tree has all transactions up to this revision, and these later ones of this process.
  std::int64_t seenRevision_ GUARDED_BY(mutex_) = 0;
  std::vector<std::int64_t> ownRevisions_ GUARDED_BY(mutex_);
  std::int64_t highestRevision_ GUARDED_BY(mutex_) = 0;  // of all databases that it has opened
  std::int64_t dataVersion_ GUARDED_BY(mutex_) = 0;
  bool mustCompare_ GUARDED_BY(mutex_) = false;  // the tree with the whole database
  std::chrono::steady_clock::time_point lastAttempt_ GUARDED_BY(mutex_);

  std::unique_ptr<StampWatch> watch_;  // last, because its thread uses the other members
};

}  // namespace zlutil::settings::host
