#include "host/settings/user_store.h"

#include <sys/stat.h>

#include "host/settings/file_name.h"
#include "host/settings/foreign_changes.h"
#include "host/settings/report.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

using KORVEN::settings::core::StoreFailure;

constexpr char kReplaced[] = "the file has been replaced and is being read again";

// Reports entries and values of the database that are left out.
UserDatabase::Report reportLeftOut(const UserStoreFiles& files) {
  return
      [name = shownFileName(files.database())](const std::string& path, const std::string& reason) {
        report(name + ": \"" + path + "\" is left out: " + reason);
      };
}

// Ends a transaction; without commit() nothing of it stays.
class Transaction {
 public:
  explicit Transaction(UserDatabase& database) : database_(database) {}
  ~Transaction() { database_.rollBack(); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

 private:
  UserDatabase& database_;
};

}  // namespace

UserStore::UserStore(const UserStoreOptions& options)
    : options_(options), files_(options.directory, options.context) {}

// The thread first: it uses everything else.
UserStore::~UserStore() { watch_.reset(); }

void UserStore::open() {
  auto database = openUserDatabase(files_, options_);
  auto stamp = std::make_unique<UserStoreStamp>(files_.stamp());
  dataVersion_ = database->dataVersion();
  struct stat status;
  inode_ = stat(files_.database().c_str(), &status) == 0 ? status.st_ino : 0;
  database_ = std::move(database);
  stamp_ = std::move(stamp);
  reason_.clear();
}

void UserStore::close(const std::string& reason) {
  database_.reset();
  stamp_.reset();
  reason_ = reason;
  mustCompare_ = true;
}

void UserStore::readAll(Node& root, int level) {
  ForeignChanges contents{{}, false, shownFileName(files_.database())};
  {
    base::MutexLock lock(mutex_);
    try {
      files_.makeDirectory();
      open();
      database_->beginReading();
      Transaction transaction(*database_);
      contents.changes = database_->readAll(reportLeftOut(files_));
      seen_ = database_->lastRevision();
    } catch (const SqliteError& failure) {
      close(failure.what());
      contents.changes.clear();
      report(contents.holder + ": settings cannot be stored: " + failure.what());
      try {
        contents.changes = readWithoutWriting(files_, reportLeftOut(files_));
      } catch (const SqliteError& unreadable) {
        report(contents.holder + ": stored settings cannot be read: " + unreadable.what());
      }
    }
  }
  bringIn(root, level, contents);
}

bool UserStore::apply(const Changes& changes, const Receiver& receive) {
  base::MutexLock lock(mutex_);
  try {
    checkForReplacement();
    if (!database_) throw SqliteError(SQLITE_CANTOPEN, reason_);
    return store(changes, receive);
  } catch (const SqliteError& failure) {
    throw Failure<StoreFailure>(shownFileName(files_.database()), std::string(failure.what()));
  }
}

bool UserStore::store(const Changes& changes, const Receiver& receive) {
  std::int64_t revision;
  {
    database_->beginWriting();
    Transaction transaction(*database_);
    const bool isBehind =
        mustCompare_ || database_->lastRevision() != seen_ + static_cast<std::int64_t>(own_.size());
    if (isBehind && !handOver(receive)) return false;
    revision = store(changes);
  }
  // Another process that took the database for damaged may have set it aside and read it before
  // this commit. What it has restored gets the changes again; a second time they do no harm. Who
  // sets it aside after this look finds the commit in it.
  while (isReplaced()) {
    close(kReplaced);
    open();
    database_->beginWriting();
    Transaction transaction(*database_);
    revision = store(changes);
  }
  noteOwn(revision);
  stamp_->note(revision);
  return true;
}

// Within a write transaction.
std::int64_t UserStore::store(const Changes& changes) {
  for (const Change& change : changes) database_->put(change);
  const std::int64_t revision = database_->record(changes);
  try {
    database_->commit();
  } catch (const SqliteError&) {
    database_->rollBack();
    commitFailed_ = true;
    overwriteFailedCommit();
    throw;
  }
  commitFailed_ = false;
  return revision;
}

// Within a transaction.
bool UserStore::handOver(const Receiver& receive) {
  const std::int64_t dataVersion = database_->dataVersion();
  const std::int64_t last = database_->lastRevision();
  ForeignChanges foreign{{}, false, shownFileName(files_.database())};
  foreign.isEverything = mustCompare_ || last < seen_ || database_->firstRevision() > seen_ + 1;
  foreign.changes =
      foreign.isEverything
          ? database_->readAll(reportLeftOut(files_))
          : database_->changesFor(database_->journalAfter(seen_, own_), reportLeftOut(files_));
  // What throws may have brought in a part of the changes only.
  mustCompare_ = true;
  const bool isWelcome = receive(foreign);
  mustCompare_ = false;
  dataVersion_ = dataVersion;
  seen_ = last;
  own_.clear();
  return isWelcome;
}

void UserStore::catchUp(const Receiver& receive) {
  base::MutexLock lock(mutex_);
  if (!database_) return;
  try {
    database_->beginReading();
    Transaction transaction(*database_);
    handOver(receive);
  } catch (const SqliteError& failure) {
    report(shownFileName(files_.database()) +
           ": changes by other processes cannot be read: " + failure.what());
  }
}

void UserStore::noteOwn(std::int64_t revision) {
  if (revision == seen_ + 1) {
    seen_ = revision;
  } else {
    own_.push_back(revision);
  }
}

// A commit that could not be flushed is rolled back, but stands in the log until something is
// written over it: after a crash it would be found there, as if it had succeeded. So something is
// written over it: a transaction that does nothing.
void UserStore::overwriteFailedCommit() {
  try {
    database_->beginWriting();
    Transaction transaction(*database_);
    const std::int64_t revision = database_->record({});
    database_->commit();
    noteOwn(revision);
    commitFailed_ = false;
  } catch (const SqliteError&) {
    // The thread tries again, and any commit that succeeds does it too.
  }
}

bool UserStore::isCurrent() {
  base::MutexLock lock(mutex_);
  checkForReplacement();
  try {
    return database_ && !hasForeignChanges();
  } catch (const SqliteError&) {
    return false;
  }
}

bool UserStore::hasForeignChanges() {
  return mustCompare_ || database_->dataVersion() != dataVersion_;
}

bool UserStore::isReplaced() const {
  struct stat status;
  return stat(files_.database().c_str(), &status) != 0 || status.st_ino != inode_;
}

void UserStore::checkForReplacement() {
  if (database_ && isReplaced()) close(kReplaced);
}

bool UserStore::watch(const Watcher& watcher) {
  watcher_ = watcher;
  bool isFirst = true;
  watch_ = std::make_unique<StampWatch>(files_.stamp(), [this, isFirst]() mutable {
    if (std::exchange(isFirst, false)) {
      try {
        backUpDaily(files_);
      } catch (const SqliteError& failure) {
        // When it is locked, another process is at it.
        if (failure.code() != SQLITE_BUSY) {
          report(shownFileName(files_.database()) + ": no backup: " + failure.what());
        }
      }
    }
    look();
  });
  return watch_->isRunning();
}

void UserStore::look() {
  if (!needsCatchingUp()) return;
  // A copy, because the watcher may let go of the last reference to this store.
  const Watcher watcher = watcher_;
  watcher();
}

// Once a second at most: it takes long where it fails.
bool UserStore::isTimeToOpen() {
  const auto now = std::chrono::steady_clock::now();
  if (now - triedToOpen_ < std::chrono::milliseconds(900)) return false;
  triedToOpen_ = now;
  return true;
}

bool UserStore::needsCatchingUp() {
  base::MutexLock lock(mutex_);
  checkForReplacement();
  try {
    if (!database_) {
      if (!isTimeToOpen()) return false;
      // A directory that has been there and is gone may be on a file system that is not mounted at
      // the moment: it is waited for, and not made anew in a wrong place.
      if (inode_ == 0) files_.makeDirectory();
      open();
      mustCompare_ = true;
    }
    if (commitFailed_) overwriteFailedCommit();
    return hasForeignChanges();
  } catch (const SqliteError& failure) {
    if (!database_) reason_ = failure.what();
    return false;
  }
}

}  // namespace zlutil::settings::host
