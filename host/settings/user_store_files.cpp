#include "host/settings/user_store_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <thread>

#include "host/settings/file_name.h"
#include "host/settings/flush_directory.h"
#include "host/settings/sqlite_database.h"

namespace zlutil::settings::host {
namespace {

constexpr mode_t kDirectoryMode = 0700;
constexpr mode_t kFileMode = 0600;
constexpr std::time_t kBackupAge = 24 * 60 * 60;
constexpr auto kLockPoll = std::chrono::milliseconds(10);

[[noreturn]] void fail(int error) { throw SqliteError(SQLITE_CANTOPEN, systemText(error)); }

void flush(const std::string& directory) {
  if (!flushDirectory(directory)) fail(errno);
}

}  // namespace

UserStoreFiles::UserStoreFiles(const std::string& directory, std::uint64_t context)
    : directory_(directory),
      base_(directory + "/settings-" + std::to_string(context)),
      database_(base_ + ".db") {}

std::string UserStoreFiles::backup(int generation) const {
  return database_ + ".backup-" + std::to_string(generation);
}

std::string UserStoreFiles::damaged() const {
  char text[32];
  const std::time_t now = std::time(nullptr);
  struct tm local;
  std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", localtime_r(&now, &local));
  const std::string name = database_ + ".damaged-" + text;
  std::string free = name;
  for (int number = 2; access(free.c_str(), F_OK) == 0; ++number) {
    free = name + '-' + std::to_string(number);
  }
  return free;
}

void UserStoreFiles::makeDirectory() const {
  std::filesystem::path made;
  for (const auto& part : std::filesystem::path(directory_)) {
    const std::filesystem::path above = made;
    made /= part;
    if (mkdir(made.c_str(), kDirectoryMode) == 0) {
      flush(above.string());
      continue;
    }
    const int error = errno;
    struct stat status;
    if (stat(made.c_str(), &status) != 0) fail(error);
    if (!S_ISDIR(status.st_mode)) fail(ENOTDIR);
  }
}

void UserStoreFiles::flushDirectory() const { flush(directory_); }

UserStoreLock::UserStoreLock(const UserStoreFiles& files, int timeout)
    : descriptor_(open(files.lock().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kFileMode)) {
  if (!descriptor_) fail(errno);
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout);
  while (flock(descriptor_.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) fail(errno);
    if (std::chrono::steady_clock::now() >= end) {
      throw SqliteError(SQLITE_BUSY, "another process keeps it locked");
    }
    std::this_thread::sleep_for(kLockPoll);
  }
}

void moveFile(const std::string& from, const std::string& to) {
  if (rename(from.c_str(), to.c_str()) != 0) fail(errno);
}

void backUpDaily(const UserStoreFiles& files) {
  struct stat status;
  const std::string newest = files.backup(1);
  if (stat(newest.c_str(), &status) == 0 && std::time(nullptr) - status.st_mtime < kBackupAge) {
    return;
  }
  const UserStoreLock lock(files, 0);
  const std::string unfinished = files.backup(0);
  unlink(unfinished.c_str());
  {
    SqliteDatabase source(files.database(), SQLITE_OPEN_READONLY, 0);
    if (source.number("SELECT count(*) FROM journal") == 0) return;
    SqliteDatabase copy(unfinished, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, 0);
    source.copyTo(copy);
    // A file of its own, without a log beside it.
    copy.execute("PRAGMA journal_mode=DELETE");
  }
  if (chmod(unfinished.c_str(), kFileMode) != 0) fail(errno);
  for (int generation = kBackupGenerations; generation > 0; --generation) {
    const std::string newer = files.backup(generation - 1);
    if (access(newer.c_str(), F_OK) == 0) moveFile(newer, files.backup(generation));
  }
  files.flushDirectory();
}

}  // namespace zlutil::settings::host
