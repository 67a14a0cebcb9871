#include "host/user_store/user_store.h"

#include <algorithm>
#include <cerrno>

#include "host/change/external_changes.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

using KORVEN::settings::core::StoreFailure;

// How long a look at what others have done waits for them; changes of this process wait for it.
constexpr int kLookWait = 100;  // milliseconds

constexpr char kReplaced[] = "the file has been replaced and is being read again";
constexpr char kRemoved[] =
    "the file has been removed. Put it back, or start the program anew without it";
constexpr char kElsewhere[] =
    "another directory has taken the place of its own, perhaps because a file system is not"
    " mounted. It is used again when its own is back";
constexpr char kAnother[] =
    "another database has taken its place. Put the first one back, or start the program anew to"
    " use the other";

// Reports entries and values of the database that are left out.
UserDatabase::Report reportLeftOut(const UserStoreFiles& files) {
  return
      [name = shownFileName(files.database())](const std::string& path, const std::string& reason) {
        logError(name + ": \"" + path + "\" is left out: " + reason);
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

void UserStore::open(const UserStoreLock& alone) {
  checkIdentity();
  auto database = openUserDatabase(files_, options_.lockWait, alone);
  auto stamp = std::make_unique<UserStoreStamp>(files_.stamp());
  dataVersion_ = database->dataVersion();
  file_ = FileIdentity(files_.database());
  directory_ = FileIdentity(files_.directory());
  identity_ = database->identity();
  database_ = std::move(database);
  stamp_ = std::move(stamp);
  reason_.clear();
}

// What has been there and is gone is waited for, and not made anew in a wrong place.
void UserStore::checkPlace() const {
  if (!file_) return;
  const FileIdentity directory(files_.directory()), file(files_.database());
  if (!directory) throw SqliteError(SQLITE_CANTOPEN, systemText(directory.error()));
  if (file) return;
  const char* const missing = directory == directory_ ? kRemoved : kElsewhere;
  throw SqliteError(SQLITE_CANTOPEN, file.error() == ENOENT ? missing : systemText(file.error()));
}

// Nor is another database taken for it. One that is damaged, or of a version that gave none an
// identity, has to stand in the same directory.
void UserStore::checkIdentity() const {
  if (!file_) return;
  const bool isAtHome = FileIdentity(files_.directory()) == directory_;
  try {
    const std::optional<std::string> found = identityOf(files_, options_.lockWait);
    if (found ? *found == identity_ : isAtHome) return;
  } catch (const SqliteError& error) {
    if (!error.isDamage()) throw;
    if (isAtHome) return;
  }
  throw SqliteError(SQLITE_CANTOPEN, isAtHome ? kAnother : kElsewhere);
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
    base::MutexLock lock(mutex_);
    try {
      files_.makeDirectory();
      const UserStoreLock alone(files_, UserStoreLock::kAlone, options_.lockWait);
      open(alone);
      database_->beginReading();
      Transaction transaction(*database_);
      contents.changes = database_->readAll(reportLeftOut(files_));
      seen_ = highest_ = database_->lastRevision();
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

bool UserStore::apply(const Changes& changes, const Receiver& receive) {
  base::MutexLock lock(mutex_);
  try {
    checkForReplacement();
    if (!database_) throw SqliteError(SQLITE_CANTOPEN, reason_);
    const UserStoreLock alone(files_, UserStoreLock::kAlone, options_.lockWait);
    checkForReplacement();
    if (!database_) throw SqliteError(SQLITE_CANTOPEN, reason_);
    database_->connection().setLockWait(options_.lockWait);
    return store(changes, receive, alone);
  } catch (const SqliteError& failure) {
    throw Failure<StoreFailure>(shownFileName(files_.database()), std::string(failure.what()));
  }
}

bool UserStore::store(const Changes& changes, const Receiver& receive, const UserStoreLock& alone) {
  std::int64_t revision;
  {
    database_->beginWriting();
    Transaction transaction(*database_);
    // After an older file has been put in its place, the others must not take what follows for
    // transactions that they know.
    const std::int64_t known = std::max(highest_, stamp_->last());
    if (database_->lastRevision() < known) database_->skipTo(known + 2);
    const bool isBehind =
        mustCompare_ || database_->lastRevision() != seen_ + static_cast<std::int64_t>(own_.size());
    if (isBehind && !handOver(receive)) return false;
    revision = store(changes);
  }
  // Somebody may have put another file in its place during the commit. That one gets the changes
  // again; a second time they do no harm.
  for (std::string reason = reasonToOpenAnew(); !reason.empty(); reason = reasonToOpenAnew()) {
    close(reason);
    checkPlace();
    open(alone);
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
  database_->put(changes);
  const std::int64_t revision = database_->record(changes);
  try {
    database_->commit();
  } catch (const SqliteError&) {
    database_->rollBack();
    if (hasStayed(revision)) return revision + 1;
    throw;
  }
  return revision;
}

// Within a transaction.
bool UserStore::handOver(const Receiver& receive) {
  const std::int64_t dataVersion = database_->dataVersion();
  const std::int64_t last = database_->lastRevision();
  ExternalChanges foreign{{}, false, shownFileName(files_.database())};
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
  highest_ = std::max(highest_, last);
  own_.clear();
  return isWelcome;
}

void UserStore::catchUp(const Receiver& receive) {
  base::MutexLock lock(mutex_);
  if (!database_) return;
  try {
    const UserStoreLock shared(files_, UserStoreLock::kShared, kLookWait);
    database_->connection().setLockWait(kLookWait);
    database_->beginReading();
    Transaction transaction(*database_);
    handOver(receive);
  } catch (const SqliteError& failure) {
    // What is locked is looked at again, as it is after every commit.
    if (failure.code() == SQLITE_BUSY) return;
    logError(shownFileName(files_.database()) +
             ": changes by other processes cannot be read: " + failure.what());
  }
}

void UserStore::noteOwn(std::int64_t revision) {
  highest_ = std::max(highest_, revision);
  if (revision == seen_ + 1) {
    seen_ = revision;
  } else {
    own_.push_back(revision);
  }
}

// A commit that fails is rolled back, except when all that failed was to flush the end of it: then
// it is complete for everybody, and lasts once the next one has been flushed. So another follows
// that does nothing.
bool UserStore::hasStayed(std::int64_t revision) {
  try {
    if (database_->lastRevision() < revision) return false;
    database_->beginWriting();
    Transaction transaction(*database_);
    database_->record({});
    database_->commit();
    noteOwn(revision);
    return true;
  } catch (const SqliteError&) {
    // The thread finds out what there is.
    mustCompare_ = true;
    return false;
  }
}

bool UserStore::isCurrent() {
  base::MutexLock lock(mutex_);
  checkForReplacement();
  try {
    if (!database_) return false;
    const UserStoreLock shared(files_, UserStoreLock::kShared, kLookWait);
    return !hasExternalChanges();
  } catch (const SqliteError&) {
    return false;
  }
}

bool UserStore::hasExternalChanges() {
  database_->connection().setLockWait(kLookWait);
  return mustCompare_ || database_->dataVersion() != dataVersion_;
}

std::string UserStore::reasonToOpenAnew() const {
  const FileIdentity file(files_.database());
  if (!file) return systemText(file.error());
  return file == file_ ? std::string() : kReplaced;
}

void UserStore::checkForReplacement() {
  if (!database_) return;
  const std::string reason = reasonToOpenAnew();
  if (!reason.empty()) close(reason);
}

bool UserStore::watch(const Watcher& watcher) {
  watcher_ = watcher;
  bool isBackUpDue = true;
  watch_ = std::make_unique<StampWatch>(files_.stamp(), [this, isBackUpDue]() mutable {
    if (isBackUpDue) isBackUpDue = !isBackedUp();
    look();
  });
  return watch_->isRunning();
}

// False while it cannot be opened, and when other processes kept it locked for too long.
bool UserStore::isBackedUp() {
  {
    base::MutexLock lock(mutex_);
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
      checkPlace();
      if (!file_) files_.makeDirectory();
      const UserStoreLock alone(files_, UserStoreLock::kAlone, options_.lockWait);
      open(alone);
      mustCompare_ = true;
    }
    const UserStoreLock shared(files_, UserStoreLock::kShared, kLookWait);
    const bool isBehind = hasExternalChanges();
    database_->connection().useRollbackJournal();
    return isBehind;
  } catch (const SqliteError& failure) {
    if (!database_) reason_ = failure.what();
    return false;
  }
}

}  // namespace zlutil::settings::host
