// The files of one user store, and what keeps processes that open it at the same time apart. Names
// are bytes for the system.
//
//   settings-<context>.db              the database, with -wal and -shm beside it while in use
//   settings-<context>.stamp           the last commits, see user_store_stamp.h
//   settings-<context>.lock            locked by the process that is opening, restoring, backing up
//   settings-<context>.db.backup-1     the last good state but one day or more old; -2 and -3 older
//   settings-<context>.db.damaged-...  a database that was set aside, with the time
//   settings-<context>.db.restored     a complete database that is to take the damaged one's place
//
// Functions throw SqliteError. Any thread.
#pragma once

#include <cstdint>
#include <string>

#include "host/settings/file_descriptor.h"

namespace zlutil::settings::host {

inline constexpr int kBackupGenerations = 3;

class UserStoreFiles {
 public:
  UserStoreFiles(const std::string& directory, std::uint64_t context);

  const std::string& directory() const { return directory_; }
  const std::string& database() const { return database_; }
  std::string wal() const { return database_ + "-wal"; }
  std::string sharedMemory() const { return database_ + "-shm"; }
  std::string stamp() const { return base_ + ".stamp"; }
  std::string lock() const { return base_ + ".lock"; }
  // 1 is the newest.
  std::string backup(int generation) const;
  std::string restored() const { return database_ + ".restored"; }
  // A name for the damaged database that no file has yet.
  std::string damaged() const;

  // Makes the directory, and those above it, for the user alone.
  void makeDirectory() const;
  // Has the directory's entries written to the disk.
  void flushDirectory() const;

 private:
  const std::string directory_;
  const std::string base_;
  const std::string database_;
};

// Holds the lock file of a store.
class UserStoreLock {
 public:
  // Waits at most `timeout` milliseconds.
  UserStoreLock(const UserStoreFiles& files, int timeout);

 private:
  const FileDescriptor descriptor_;
};

// Puts a file in another's place.
void moveFile(const std::string& from, const std::string& to);

// Copies the database to a new first generation, and lets go of the oldest, unless the first one is
// younger than a day or another process is at it.
void backUpDaily(const UserStoreFiles& files);

}  // namespace zlutil::settings::host
