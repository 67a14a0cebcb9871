// The files of one user store, and the lock that every process holds while it uses them. Names are
// bytes for the system.
//
//   settings-<context>.db              the database
//   settings-<context>.db-journal      the pages that a transaction overwrites, until it is
//   complete settings-<context>.db-wal, -shm    the log of earlier versions, until it has been
//   applied settings-<context>.stamp           the last commits, see user_store_stamp.h
//   settings-<context>.lock            locked while any of them is used, see UserStoreLock
//   settings-<context>.db.backup-1     the newest backup; -2 and -3 are older
//   settings-<context>.db.damaged-...  a copy of a damaged database, with the time
//   settings-<context>.db.before-...   a copy of the database before a backup was restored
//   settings-<context>.db.restored     a complete database that will replace the damaged one
//
// Functions throw SqliteError. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/os/file_descriptor.h"

namespace zlutil::settings::host {

inline constexpr int kBackupGenerations = 3;
// The suffixes of a database and of the files that SQLite applies to it when it opens it.
inline constexpr const char* kDatabaseSuffixes[] = {"", "-journal", "-wal"};

class UserStoreFiles {
 public:
  UserStoreFiles(const std::string& directory, std::uint64_t context);

  const std::string& directory() const { return directory_; }
  const std::string& database() const { return database_; }
  std::string journal() const { return database_ + "-journal"; }
  std::string wal() const { return database_ + "-wal"; }
  std::string sharedMemory() const { return database_ + "-shm"; }
  std::string stamp() const { return base_ + ".stamp"; }
  std::string lock() const { return base_ + ".lock"; }
  // 1 is the newest.
  std::string backup(int generation) const;
  std::string restored() const { return database_ + ".restored"; }
  // The copy from which a database is restored, and the restored one until it is complete.
  std::string salvaged() const { return database_ + ".salvaged"; }
  std::string unfinished() const { return database_ + ".unfinished"; }
  // Returns a new name for a damaged database, which no file has yet with any of the suffixes.
  std::string damaged() const;
  // Returns a new name for a copy of the database before another one is restored.
  std::string beforeRestoring() const;

  // Makes the directory, and those above it, for the user alone. Throws if everybody may write it.
  void makeDirectory() const;
  // Throws if everybody may write the directory.
  void checkDirectory() const;
  // Flushes the directory's entries to the disk.
  void flushDirectory() const;

 private:
  std::string newName(const char* reason) const;

  const std::string directory_;
  const std::string base_;
  const std::string database_;
};

// A scope that holds the lock file of a store: shared while reading, exclusive while writing,
// opening, restoring or backing up. The database's own locks do not suffice: the system drops them
// as soon as any code of the process closes a descriptor of the file, for example after copying it.
class UserStoreLock {
 public:
  enum Mode { kShared, kExclusive };

  // Waits at most `wait` milliseconds. Throws SqliteError (SQLITE_BUSY) if that is not enough.
  UserStoreLock(const UserStoreFiles& files, Mode mode, int wait);

  // The identity of the store's database, which the lock file keeps for a database that has lost
  // it; empty if it has none. setIdentity() needs the exclusive lock, and changes nothing if it
  // fails.
  std::string identity() const;
  void setIdentity(const std::string& identity) const;

 private:
  std::optional<FileDescriptor> descriptor_;
};

// Opens a file for reading and writing, or makes it for the user alone. Follows no link. A file
// that root makes belongs to the owner of the directory. Returns the descriptor, or -1 with errno
// set.
int openOrMakeFile(const std::string& file);

// Makes an empty file in the same way if there is none.
void makeFile(const std::string& file);

// Flushes the file's content to the disk.
void flushFile(const std::string& file);

// Renames a file. Replaces a file that has the name `to`.
void moveFile(const std::string& from, const std::string& to);

// Copies the database to a new first generation of backups and removes the oldest one, unless the
// first one is younger than a day. Waits for other processes for at most `lockWait` milliseconds.
void backUpDaily(const UserStoreFiles& files, int lockWait);

}  // namespace zlutil::settings::host
