#include "host/user_store/user_store.h"

#include <algorithm>
#include <cerrno>

#include "host/change/external_changes.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/user_store/database_copy.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

using KORVEN::settings::core::StoreFailure;
using KORVEN::settings::core::UnreadableStore;

// The longest wait for others while looking for their changes, in milliseconds. Changes of this
// process wait for the look.
constexpr int kLookWait = 100;

constexpr char kReplaced[] = "the file has been replaced and is being read again";
constexpr char kRemoved[] =
    "the file has been removed. Put it back, or restart the program without it";
constexpr char kElsewhere[] =
    "its directory has been replaced by another one, perhaps because a file system is not mounted."
    " The file is used again when its own directory is back";
constexpr char kAnother[] =
    "it has been replaced by another database. Put the first one back, or restart the program to"
    " use the other one";

// Returns a function that reports the entries and values that are left out.
UserDatabase::Report reportLeftOut(const UserStoreFiles& files) {
  return
      [name = shownFileName(files.database())](const std::string& path, const std::string& reason) {
        logError(name + ": \"" + path + "\" is left out: " + reason);
      };
}

// A scope that rolls the transaction back at its end, unless it has been committed.
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

// Ends the thread first, because it uses the other members.
UserStore::~UserStore() { watch_.reset(); }

void UserStore::open(const UserStoreLock& lock) {
  checkIdentity();
  auto database = openUserDatabase(files_, options_.lockWait, lock);
  database->keepHistory(options_.history);
  auto stamp = std::make_unique<UserStoreStamp>(files_.stamp());
  dataVersion_ = database->dataVersion();
  file_ = FileIdentity(files_.database());
  directory_ = FileIdentity(files_.directory());
  identity_ = database->identity();
  database_ = std::move(database);
  stamp_ = std::move(stamp);
  reason_.clear();
}

// Throws if the file that was open is missing: making a new one would hide its settings.
void UserStore::checkPresence() const {
  if (!file_) return;
  const FileIdentity directory(files_.directory()), file(files_.database());
  if (!directory) throw SqliteError(SQLITE_CANTOPEN, systemText(directory.error()));
  if (file) return;
  const char* const missing = directory == directory_ ? kRemoved : kElsewhere;
  throw SqliteError(SQLITE_CANTOPEN, file.error() == ENOENT ? missing : systemText(file.error()));
}

// Throws if another database has replaced the one that was open. A damaged database, or one of a
// version without identities, is accepted only in the same directory.
void UserStore::checkIdentity() const {
  if (!file_) return;
  const bool isInItsDirectory = FileIdentity(files_.directory()) == directory_;
  try {
    const std::optional<std::string> found = identityOf(files_, options_.lockWait);
    if (found ? *found == identity_ : isInItsDirectory) return;
  } catch (const SqliteError& error) {
    if (!error.isDamage()) throw;
    if (isInItsDirectory) return;
  }
  throw SqliteError(SQLITE_CANTOPEN, isInItsDirectory ? kAnother : kElsewhere);
}

void UserStore::close(const std::string& reason) {
  database_.reset();
  stamp_.reset();
  reason_ = reason;
  mustCompare_ = true;
}

void UserStore::readAll(Node& root, int level) {
  ExternalChanges contents{{}, false, shownFileName(files_.database())};
  {
    base::MutexLock mutexLock(mutex_);
    try {
      files_.makeDirectory();
      const UserStoreLock lock(files_, UserStoreLock::kExclusive, options_.lockWait);
      open(lock);
      database_->beginReading();
      Transaction transaction(*database_);
      contents.changes = database_->readAll(reportLeftOut(files_));
      seenRevision_ = highestRevision_ = database_->lastRevision();
    } catch (const SqliteError& failure) {
      close(failure.what());
      contents.changes.clear();
      logError(contents.holder + ": settings cannot be stored: " + failure.what());
      try {
        contents.changes = readWithoutWriting(files_, reportLeftOut(files_));
      } catch (const SqliteError& unreadable) {
        logError(contents.holder + ": stored settings cannot be read: " + unreadable.what());
      }
    }
  }
  applyExternalChanges(root, level, contents);
}

// Calls `work(lock)` with the database open and locked. Throws StoreFailure in place of
// SqliteError.
template <class Work>
auto UserStore::withDatabase(UserStoreLock::Mode mode, const Work& work) {
  try {
    requireDatabase();
    const UserStoreLock lock(files_, mode, options_.lockWait);
    requireDatabase();
    database_->connection().setLockWait(options_.lockWait);
    return work(lock);
  } catch (const SqliteError& failure) {
    throw Failure<StoreFailure>(shownFileName(files_.database()), std::string(failure.what()));
  }
}

bool UserStore::apply(const Changes& changes, const Receiver& receive) {
  base::MutexLock mutexLock(mutex_);
  return withDatabase(UserStoreLock::kExclusive, [&](const UserStoreLock& lock) REQUIRES(mutex_) {
    return store(changes, receive, lock);
  });
}

bool UserStore::store(const Changes& changes, const Receiver& receive, const UserStoreLock& lock) {
  std::int64_t revision;
  {
    database_->beginWriting();
    Transaction transaction(*database_);
    // After an older file has replaced the database, the next revisions must not be those that
    // other processes already know.
    const std::int64_t known = std::max(highestRevision_, stamp_->last());
    if (database_->lastRevision() < known) database_->skipTo(known + 2);
    const auto ownCount = static_cast<std::int64_t>(ownRevisions_.size());
    const bool mustDeliver = mustCompare_ || database_->lastRevision() != seenRevision_ + ownCount;
    if (mustDeliver && !deliverExternalChanges(receive)) return false;
    revision = store(changes);
  }
  // The file may have been replaced during the commit. The new one gets the same changes; storing
  // them a second time is harmless.
  for (std::string reason = reasonToReopen(); !reason.empty(); reason = reasonToReopen()) {
    close(reason);
    checkPresence();
    open(lock);
    database_->beginWriting();
    Transaction transaction(*database_);
    revision = store(changes);
  }
  noteOwnRevision(revision);
  stamp_->note(revision);
  return true;
}

// The caller must have begun a write transaction.
std::int64_t UserStore::store(const Changes& changes) {
  database_->put(changes);
  const std::int64_t revision = database_->record(changes);
  try {
    database_->commit();
  } catch (const SqliteError&) {
    database_->rollBack();
    if (hasPersisted(revision)) return revision + 1;
    throw;
  }
  return revision;
}

// The caller must have begun a transaction.
bool UserStore::deliverExternalChanges(const Receiver& receive) {
  const std::int64_t dataVersion = database_->dataVersion();
  const std::int64_t last = database_->lastRevision();
  ExternalChanges external{{}, false, shownFileName(files_.database())};
  external.isEverything =
      mustCompare_ || last < seenRevision_ || database_->firstRevision() > seenRevision_ + 1;
  external.changes =
      external.isEverything
          ? database_->readAll(reportLeftOut(files_))
          : database_->changesFor(database_->journalAfter(seenRevision_, ownRevisions_),
                                  reportLeftOut(files_));
  // If this throws, the tree may have a part of the changes only.
  mustCompare_ = true;
  const bool canStillChange = receive(external);
  mustCompare_ = false;
  dataVersion_ = dataVersion;
  seenRevision_ = last;
  highestRevision_ = std::max(highestRevision_, last);
  ownRevisions_.clear();
  return canStillChange;
}

void UserStore::catchUp(const Receiver& receive) {
  base::MutexLock mutexLock(mutex_);
  if (!database_) return;
  try {
    const UserStoreLock lock(files_, UserStoreLock::kShared, kLookWait);
    database_->connection().setLockWait(kLookWait);
    readExternalChanges(receive);
  } catch (const SqliteError& failure) {
    // The next look tries again.
    if (failure.code() == SQLITE_BUSY) return;
    logError(shownFileName(files_.database()) +
             ": changes by other processes cannot be read: " + failure.what());
  }
}

void UserStore::synchronize(const Receiver& receive) {
  base::MutexLock mutexLock(mutex_);
  try {
    requireDatabase();
    const UserStoreLock lock(files_, UserStoreLock::kShared, options_.lockWait);
    requireDatabase();
    database_->connection().setLockWait(options_.lockWait);
    if (isBehind()) readExternalChanges(receive);
  } catch (const SqliteError& failure) {
    throw Failure<UnreadableStore>(shownFileName(files_.database()), std::string(failure.what()));
  }
}

void UserStore::readExternalChanges(const Receiver& receive) {
  database_->beginReading();
  Transaction transaction(*database_);
  deliverExternalChanges(receive);
}

void UserStore::noteOwnRevision(std::int64_t revision) {
  highestRevision_ = std::max(highestRevision_, revision);
  if (revision == seenRevision_ + 1) {
    seenRevision_ = revision;
  } else {
    ownRevisions_.push_back(revision);
  }
}

// Returns whether a commit that failed is in the database all the same. If only its last flush
// failed, every process sees the commit, and the flush of the next commit makes it durable: so this
// commits an empty transaction.
bool UserStore::hasPersisted(std::int64_t revision) {
  try {
    if (database_->lastRevision() < revision) return false;
    database_->beginWriting();
    Transaction transaction(*database_);
    database_->record({});
    database_->commit();
    noteOwnRevision(revision);
    return true;
  } catch (const SqliteError&) {
    // The thread compares the tree with the database.
    mustCompare_ = true;
    return false;
  }
}

bool UserStore::isCurrent() {
  base::MutexLock mutexLock(mutex_);
  checkForReplacement();
  try {
    if (!database_) return false;
    const UserStoreLock lock(files_, UserStoreLock::kShared, kLookWait);
    return !hasExternalChanges();
  } catch (const SqliteError&) {
    return false;
  }
}

bool UserStore::hasExternalChanges() {
  database_->connection().setLockWait(kLookWait);
  return isBehind();
}

// Returns whether the tree lacks a change by another process, or may lack one.
bool UserStore::isBehind() { return mustCompare_ || database_->dataVersion() != dataVersion_; }

std::string UserStore::reasonToReopen() const {
  const FileIdentity file(files_.database());
  if (!file) return systemText(file.error());
  return file == file_ ? std::string() : kReplaced;
}

void UserStore::checkForReplacement() {
  if (!database_) return;
  const std::string reason = reasonToReopen();
  if (!reason.empty()) close(reason);
}

// Throws the reason why the database cannot be used.
void UserStore::requireDatabase() {
  checkForReplacement();
  if (!database_) throw SqliteError(SQLITE_CANTOPEN, reason_);
}

std::string UserStore::sourceOf(const std::string&) const {
  return shownFileName(files_.database());
}

std::vector<PastCommit> UserStore::commitsFrom(std::int64_t number) {
  base::MutexLock mutexLock(mutex_);
  return withDatabase(UserStoreLock::kShared, [&](const UserStoreLock&) REQUIRES(mutex_) {
    database_->beginReading();
    Transaction transaction(*database_);
    return database_->history().commitsFrom(number);
  });
}

void UserStore::backUp(const std::string& file) {
  base::MutexLock mutexLock(mutex_);
  withDatabase(UserStoreLock::kShared, [&](const UserStoreLock&) REQUIRES(mutex_) {
    replaceByCopy(database_->connection(), file);
  });
}

std::string UserStore::restore(const std::string& file) {
  base::MutexLock mutexLock(mutex_);
  return withDatabase(UserStoreLock::kExclusive, [&](const UserStoreLock&) REQUIRES(mutex_) {
    CopiedContent copied(*database_, file);
    const std::string kept = files_.beforeRestoring();
    writeCopy(database_->connection(), kept);
    files_.flushDirectory();
    database_->beginWriting();
    Transaction transaction(*database_);
    const std::int64_t known =
        std::max({highestRevision_, stamp_->last(), database_->lastRevision()});
    copied.putInPlace(known + 2);
    database_->commit();
    mustCompare_ = true;
    highestRevision_ = known + 2;
    stamp_->note(highestRevision_);
    return kept;
  });
}

bool UserStore::watch(const Watcher& watcher) {
  watcher_ = watcher;
  bool isBackUpDue = true;
  watch_ = std::make_unique<StampWatch>(files_.stamp(), [this, isBackUpDue]() mutable {
    if (isBackUpDue) isBackUpDue = !tryBackUp();
    look();
  });
  return watch_->isRunning();
}

// Makes the daily backup. Returns false if it has to be tried again: the database is closed, or
// other processes kept it locked for too long.
bool UserStore::tryBackUp() {
  {
    base::MutexLock mutexLock(mutex_);
    if (!database_) return false;
  }
  try {
    backUpDaily(files_, kLookWait);
  } catch (const SqliteError& failure) {
    if (failure.code() == SQLITE_BUSY) return false;
    logError(shownFileName(files_.database()) + ": no backup: " + failure.what());
  }
  return true;
}

void UserStore::look() {
  if (!needsCatchingUp()) return;
  // A copy, because the watcher may release the last reference to this store.
  const Watcher watcher = watcher_;
  watcher();
}

// Allows one attempt a second, because a failing one takes long.
bool UserStore::mayRetryOpening() {
  const auto now = std::chrono::steady_clock::now();
  if (now - lastAttempt_ < std::chrono::milliseconds(900)) return false;
  lastAttempt_ = now;
  return true;
}

bool UserStore::needsCatchingUp() {
  base::MutexLock mutexLock(mutex_);
  checkForReplacement();
  try {
    if (!database_) {
      if (!mayRetryOpening()) return false;
      checkPresence();
      if (!file_) files_.makeDirectory();
      const UserStoreLock lock(files_, UserStoreLock::kExclusive, options_.lockWait);
      open(lock);
      mustCompare_ = true;
    }
    const UserStoreLock lock(files_, UserStoreLock::kShared, kLookWait);
    const bool hasChanges = hasExternalChanges();
    database_->connection().useRollbackJournal();
    return hasChanges;
  } catch (const SqliteError& failure) {
    if (!database_) reason_ = failure.what();
    return false;
  }
}

}  // namespace zlutil::settings::host
