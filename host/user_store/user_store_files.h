// The files of one user store, and what keeps processes that open it at the same time apart. Names
// are bytes for the system.
//
//   settings-<context>.db              the database
//   settings-<context>.db-journal      what a transaction has overwritten, until it is complete
//   settings-<context>.db-wal, -shm    the log that earlier versions kept, until it is folded in
//   settings-<context>.stamp           the last commits, see user_store_stamp.h
//   settings-<context>.lock            locked by whoever uses any of them, see UserStoreLock
//   settings-<context>.db.backup-1     the last good state but one day or more old; -2 and -3 older
//   settings-<context>.db.damaged-...  a database that was set aside, with the time
//   settings-<context>.db.restored     a complete database that is to take the damaged one's place
//
// Functions throw SqliteError. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/os/file_descriptor.h"

namespace zlutil::settings::host {

inline constexpr int kBackupGenerations = 3;
// What SQLite adds to the name of a database for the files that it brings in when it opens it.
inline constexpr const char* kDatabaseEnds[] = {"", "-journal", "-wal"};

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
  // What restoring works on, and what it makes, until it is complete.
  std::string salvaged() const { return database_ + ".salvaged"; }
  std::string unfinished() const { return database_ + ".unfinished"; }
  // A name for the damaged database that no file has yet, with none of the ends.
  std::string damaged() const;

  // Makes the directory, and those above it, for the user alone. Refuses one that others may write.
  void makeDirectory() const;
  // Throws when others may write the directory.
  void checkDirectory() const;
  // Has the directory's entries written to the disk.
  void flushDirectory() const;

 private:
  const std::string directory_;
  const std::string base_;
  const std::string database_;
};

// Holds the lock file of a store: shared while reading, alone while writing, opening, restoring or
// backing up. The database's own locks do not do for this: the system takes them from a process as
// soon as any part of it closes any descriptor of the file, as a program does that copies it.
class UserStoreLock {
 public:
  enum Mode { kShared, kAlone };

  // Waits at most `wait` milliseconds.
  UserStoreLock(const UserStoreFiles& files, Mode mode, int wait);

  // The identity of the store's database, which the lock file keeps for a database that has lost
  // it; empty when it does not. Setting it needs the lock alone; a failure leaves it as it was.
  std::string identity() const;
  void setIdentity(const std::string& identity) const;

 private:
  std::optional<FileDescriptor> descriptor_;
};

// Opens a file for reading and writing, or makes it for the user alone; follows no link. What root
// makes belongs to the owner of the directory. Gives the descriptor, or -1 with errno set.
int openOrMakeFile(const std::string& file);

// Makes an empty file likewise where there is none.
void makeFile(const std::string& file);

// Has the file's content written to the disk.
void flushFile(const std::string& file);

// Puts a file in another's place.
void moveFile(const std::string& from, const std::string& to);

// Copies the database to a new first generation, and lets go of the oldest, unless the first one is
// younger than a day. Waits for other processes for at most `lockWait` milliseconds.
void backUpDaily(const UserStoreFiles& files, int lockWait);

}  // namespace zlutil::settings::host
