#include "host/settings/user_store.h"

#include <sys/stat.h>

#include <unordered_set>

#include "host/settings/file_name.h"
#include "host/settings/foreign_changes.h"
#include "host/settings/report.h"
#include "host/settings/stored_difference.h"
#include "host/settings/stored_value.h"
#include "service/failures.h"
#include "values/value_kinds.h"

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

// Refuses one change after what others have done.
class Conflict {
 public:
  Conflict(UserDatabase& database, const std::vector<JournalEntry>& entries) : database_(database) {
    for (const JournalEntry& entry : entries) {
      auto& paths = entry.sign == JournalEntry::kRemove   ? removed_
                    : entry.sign == JournalEntry::kDefine ? defined_
                                                          : valued_;
      paths.insert(entry.path);
    }
  }

  void operator()(const PutValue& change) const {
    checkRemoved(change.path);
    if (!valued_.count(change.path)) return;
    const int kind = database_.storedKind(change.path);
    if (kind == boostany::kNoValue || kind == kindOfValue(change.value)) return;
    refuse(change.path, "has been given another type");
  }
  void operator()(const DefineEntry& change) const {
    checkRemoved(change.path);
    if (defined_.count(change.path)) refuse(change.path, "has been added");
  }
  void operator()(const EraseValue& change) const { checkRemoved(change.path); }
  void operator()(const RemoveSubtree&) const {}

 private:
  void checkRemoved(const std::string& path) const {
    if (removed_.empty()) return;
    for (std::size_t end = path.find('.'); true; end = path.find('.', end + 1)) {
      if (removed_.count(path.substr(0, end))) refuse(path, "has been removed");
      if (end == std::string::npos) return;
    }
  }

  [[noreturn]] static void refuse(const std::string& path, const char* what) {
    throw SqliteError(SQLITE_CONSTRAINT,
                      '"' + path + "\" " + what + " by another process meanwhile");
  }

  UserDatabase& database_;
  std::unordered_set<std::string> removed_, defined_, valued_;
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
  level_ = level;
  Changes contents;
  {
    base::MutexLock lock(mutex_);
    try {
      files_.makeDirectory();
      open();
      database_->beginReading();
      Transaction transaction(*database_);
      contents = database_->readAll(reportLeftOut(files_));
      seen_ = database_->lastRevision();
    } catch (const SqliteError& failure) {
      close(failure.what());
      contents.clear();
      const std::string name = shownFileName(files_.database());
      report(name + ": settings cannot be stored: " + failure.what());
      try {
        contents = readWithoutWriting(files_, reportLeftOut(files_));
      } catch (const SqliteError& unreadable) {
        report(name + ": stored settings cannot be read: " + unreadable.what());
      }
    }
  }
  applyForeignChanges(root, level, [&contents](const Node&) { return std::move(contents); });
}

void UserStore::apply(const Changes& changes) {
  base::MutexLock lock(mutex_);
  try {
    checkForReplacement();
    if (!database_) throw SqliteError(SQLITE_CANTOPEN, reason_);
    std::int64_t revision = store(changes, true);
    // Another process that took the database for damaged may have set it aside and read it before
    // this commit. What it has restored gets the changes again; a second time they do no harm. Who
    // sets it aside after this look finds the commit in it.
    while (isReplaced()) {
      close(kReplaced);
      open();
      revision = store(changes, false);
    }
    noteOwn(revision);
    stamp_->note(revision);
  } catch (const SqliteError& failure) {
    throw Failure<StoreFailure>(shownFileName(files_.database()), std::string(failure.what()));
  }
}

std::int64_t UserStore::store(const Changes& changes, bool mayConflict) {
  database_->beginWriting();
  Transaction transaction(*database_);
  if (mayConflict && database_->lastRevision() != seen_ + static_cast<std::int64_t>(own_.size())) {
    refuseConflicts(changes);
  }
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

void UserStore::refuseConflicts(const Changes& changes) {
  if (mustCompare_ || database_->firstRevision() > seen_ + 1) {
    throw SqliteError(SQLITE_CONSTRAINT, "it has changed and is being read again");
  }
  const Conflict conflict(*database_, database_->journalAfter(seen_, own_));
  for (const Change& change : changes) std::visit(conflict, change);
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

void UserStore::watch(const Watcher& watcher) {
  // Copies, because the watcher may let go of the last reference to this store.
  const auto source = [this](const Node& root) { return changesByOthers(root); };
  bool isFirst = true, wasCutShort = false;
  watch_ = std::make_unique<StampWatch>(files_.stamp(), [=]() mutable {
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
    if (!needsLook(wasCutShort)) return;
    // A watcher that throws may have brought in a part of the changes only.
    wasCutShort = true;
    watcher(source);
    wasCutShort = false;
  });
}

bool UserStore::needsLook(bool afterCutShort) {
  base::MutexLock lock(mutex_);
  if (afterCutShort) mustCompare_ = true;
  checkForReplacement();
  try {
    if (!database_) {
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

Changes UserStore::changesByOthers(const Node& root) {
  base::MutexLock lock(mutex_);
  if (!database_) return {};
  try {
    const std::int64_t dataVersion = database_->dataVersion();
    database_->beginReading();
    Transaction transaction(*database_);
    const std::int64_t last = database_->lastRevision();
    Changes changes;
    if (mustCompare_ || last < seen_ || database_->firstRevision() > seen_ + 1) {
      changes = differenceFrom(root, level_, database_->readAll(reportLeftOut(files_)));
    } else {
      changes = database_->changesFor(database_->journalAfter(seen_, own_), reportLeftOut(files_));
    }
    dataVersion_ = dataVersion;
    seen_ = last;
    own_.clear();
    mustCompare_ = false;
    return changes;
  } catch (const SqliteError& failure) {
    report(shownFileName(files_.database()) +
           ": changes by other processes cannot be read: " + failure.what());
    return {};
  }
}

}  // namespace zlutil::settings::host
