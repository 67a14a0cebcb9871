#include "host/user_store/user_store_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <thread>

#include "host/os/file_name.h"
#include "host/os/flush_directory.h"
#include "host/user_store/database_copy.h"

namespace zlutil::settings::host {
namespace {

constexpr mode_t kDirectoryMode = 0700;
constexpr mode_t kFileMode = 0600;
constexpr std::time_t kBackupAge = 24 * 60 * 60;
constexpr auto kLockPoll = std::chrono::microseconds(200);

[[noreturn]] void fail(int error) { throw SqliteError(SQLITE_CANTOPEN, systemText(error)); }

void flush(const std::string& directory) {
  if (!flushDirectory(directory)) fail(errno);
}

std::string directoryOf(const std::string& file) {
  const std::string directory = std::filesystem::path(file).parent_path().string();
  return directory.empty() ? "." : directory;
}

// Gives a file that root has made to the owner of the directory, who must be able to use it.
bool giveToOwnerOfDirectory(int made, const std::string& name) {
  if (geteuid() != 0) return true;
  struct stat directory;
  if (stat(directoryOf(name).c_str(), &directory) != 0) return false;
  return directory.st_uid == 0 || fchown(made, directory.st_uid, directory.st_gid) == 0;
}

// Removes a file at the end of a scope, unless it has been renamed.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& file) : file_(file) {}
  ~TemporaryFile() { unlink(file_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

 private:
  const std::string file_;
};

// Returns whether the file still has the name under which it was opened.
bool isNamed(int descriptor, const std::string& name) {
  struct stat opened, named;
  return fstat(descriptor, &opened) == 0 && stat(name.c_str(), &named) == 0 &&
         opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

}  // namespace

UserStoreFiles::UserStoreFiles(const std::string& directory, std::uint64_t context)
    : directory_(directory),
      base_(directory + "/settings-" + std::to_string(context)),
      database_(base_ + ".db") {}

std::string UserStoreFiles::backup(int generation) const {
  return database_ + ".backup-" + std::to_string(generation);
}

std::string UserStoreFiles::damaged() const { return newName(".damaged-"); }
std::string UserStoreFiles::beforeRestoring() const { return newName(".before-"); }

// Returns a name with the time, which no file has yet.
std::string UserStoreFiles::newName(const char* reason) const {
  char text[32];
  const std::time_t now = std::time(nullptr);
  struct tm local;
  std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", localtime_r(&now, &local));
  const std::string name = database_ + reason + text;
  std::string free = name;
  const auto isTaken = [&free] {
    for (const char* suffix : kDatabaseSuffixes) {
      if (access((free + suffix).c_str(), F_OK) == 0) return true;
    }
    return false;
  };
  for (int number = 2; isTaken(); ++number) free = name + '-' + std::to_string(number);
  return free;
}

void UserStoreFiles::makeDirectory() const {
  std::filesystem::path made;
  for (const auto& part : std::filesystem::path(directory_)) {
    const std::filesystem::path above = made;
    made /= part;
    if (mkdir(made.c_str(), kDirectoryMode) == 0) {
      const FileDescriptor directory(
          open(made.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      if (!directory || !giveToOwnerOfDirectory(directory.get(), made)) fail(errno);
      flush(above.string());
      continue;
    }
    const int error = errno;
    struct stat status;
    if (stat(made.c_str(), &status) != 0) fail(error);
    if (!S_ISDIR(status.st_mode)) fail(ENOTDIR);
  }
  checkDirectory();
}

void UserStoreFiles::checkDirectory() const {
  struct stat status;
  if (stat(directory_.c_str(), &status) != 0) fail(errno);
  if ((status.st_mode & S_IWOTH) == 0) return;
  const std::string name = shownFileName(directory_);
  throw SqliteError(SQLITE_AUTH, "everybody may write in the directory \"" + name +
                                     "\", so anybody could put settings there: chmod o-w \"" +
                                     name + "\", or name another in SETTINGS_USERDIR");
}

void UserStoreFiles::flushDirectory() const { flush(directory_); }

UserStoreLock::UserStoreLock(const UserStoreFiles& files, Mode mode, int wait) {
  const std::chrono::milliseconds longest(wait);
  const auto end = std::chrono::steady_clock::now() + longest;
  const std::string name = files.lock();
  // The file may be removed during the wait, and the next process then locks a new one.
  do {
    descriptor_.emplace(openOrMakeFile(name));
    if (!*descriptor_ && errno == ELOOP) {
      throw SqliteError(SQLITE_CANTOPEN,
                        '"' + shownFileName(name) + "\" is a link, which is not followed");
    }
    if (!*descriptor_) fail(errno);
    while (flock(descriptor_->get(), (mode == kExclusive ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) fail(errno);
      if (std::chrono::steady_clock::now() >= end) {
        throw SqliteError(SQLITE_BUSY, lockedText(longest));
      }
      std::this_thread::sleep_for(kLockPoll);
    }
  } while (!isNamed(descriptor_->get(), name));
}

std::string UserStoreLock::identity() const {
  char text[64];
  const ssize_t size = pread(descriptor_->get(), text, sizeof text, 0);
  return size > 0 ? std::string(text, static_cast<std::size_t>(size)) : std::string();
}

void UserStoreLock::setIdentity(const std::string& identity) const {
  if (this->identity() == identity || ftruncate(descriptor_->get(), 0) != 0) return;
  if (pwrite(descriptor_->get(), identity.data(), identity.size(), 0) < 0) return;
}

int openOrMakeFile(const std::string& file) {
  constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW;
  const int made = open(file.c_str(), kFlags | O_CREAT | O_EXCL, kFileMode);
  if (made < 0) {
    return errno == EEXIST ? open(file.c_str(), kFlags | O_CREAT, kFileMode) : made;
  }
  if (giveToOwnerOfDirectory(made, file)) return made;
  const int error = errno;
  close(made);
  unlink(file.c_str());
  errno = error;
  return -1;
}

void makeFile(const std::string& file) {
  const FileDescriptor made(openOrMakeFile(file));
  if (!made) fail(errno);
}

void flushFile(const std::string& file) {
  const FileDescriptor flushed(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!flushed || fsync(flushed.get()) != 0) fail(errno);
}

void moveFile(const std::string& from, const std::string& to) {
  if (rename(from.c_str(), to.c_str()) != 0) fail(errno);
}

void backUpDaily(const UserStoreFiles& files, int lockWait) {
  const UserStoreLock lock(files, UserStoreLock::kExclusive, lockWait);
  struct stat status;
  const std::string newest = files.backup(1);
  if (stat(newest.c_str(), &status) == 0) {
    // The age of a backup that is dated in the future is unknown.
    const std::time_t age = std::time(nullptr) - status.st_mtime;
    if (age >= 0 && age < kBackupAge) return;
  }
  const std::string unfinished = files.backup(0);
  unlink(unfinished.c_str());
  // Also if there is nothing to copy, or the disk is full.
  const TemporaryFile removed(unfinished);
  {
    // SQLite keeps the locks of this process's other connections to the file.
    SqliteDatabase source(files.database(), SQLITE_OPEN_READONLY, lockWait);
    if (source.number("SELECT count(*) FROM journal") == 0) return;
    writeCopy(source, unfinished);
  }
  for (int generation = kBackupGenerations; generation > 0; --generation) {
    const std::string newer = files.backup(generation - 1);
    if (access(newer.c_str(), F_OK) == 0) moveFile(newer, files.backup(generation));
  }
  files.flushDirectory();
}

}  // namespace zlutil::settings::host
