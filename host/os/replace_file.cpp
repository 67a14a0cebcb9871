#include "host/os/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <optional>

#include "host/os/file_name.h"
#include "host/os/flush_directory.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

constexpr mode_t kNewFileMode = 0666;

[[noreturn]] void fail(const std::string& fileName, int error) {
  throw Failure<KORVEN::settings::core::StoreFailure>(shownFileName(fileName), systemText(error));
}

// Returns the name with all symbolic links followed. The file need not exist.
std::string targetOf(const std::string& fileName) {
  std::filesystem::path path = fileName;
  std::error_code error;
  for (int links = 0; std::filesystem::is_symlink(path, error); ++links) {
    if (links == 40) fail(fileName, ELOOP);
    path = path.parent_path() / std::filesystem::read_symlink(path, error);
  }
  return path.string();
}

// Returns the mode of the file, or nothing if there is no file.
std::optional<mode_t> modeOf(const std::string& target) {
  struct stat status;
  if (stat(target.c_str(), &status) != 0) return std::nullopt;
  return status.st_mode & 07777;
}

// A new file beside the target, which its destructor removes unless moveToTarget() was called.
class NewFile {
 public:
  explicit NewFile(const std::string& target) : target_(target) {
    static std::atomic<unsigned> last{0};
    do {
      name_ = target + '.' + std::to_string(getpid()) + '-' + std::to_string(++last) + ".new";
      descriptor_ = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
    } while (descriptor_ < 0 && errno == EEXIST);
    if (descriptor_ < 0) fail(target, errno);
  }
  ~NewFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!renamed_) unlink(name_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(std::string_view content) {
    while (!content.empty()) {
      const ssize_t size = ::write(descriptor_, content.data(), content.size());
      if (size < 0 && errno != EINTR) fail(target_, errno);
      if (size > 0) content.remove_prefix(static_cast<std::size_t>(size));
    }
  }

  void setMode(mode_t mode) {
    if (fchmod(descriptor_, mode) != 0) fail(target_, errno);
  }

  void moveToTarget() {
    if (fsync(descriptor_) != 0) fail(target_, errno);
    if (rename(name_.c_str(), target_.c_str()) != 0) fail(target_, errno);
    renamed_ = true;
  }

 private:
  const std::string target_;
  std::string name_;
  int descriptor_ = -1;
  bool renamed_ = false;
};

}  // namespace

void replaceFile(const std::string& fileName, std::string_view content) {
  const std::string target = targetOf(fileName);
  NewFile file(target);
  if (const std::optional<mode_t> mode = modeOf(target)) file.setMode(*mode);
  file.write(content);
  file.moveToTarget();
  if (!flushDirectory(std::filesystem::path(target).parent_path().string())) fail(target, errno);
}

}  // namespace zlutil::settings::host
