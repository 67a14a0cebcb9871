#include "host/files/settings_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/os/file_descriptor.h"
#include "host/os/file_name.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

constexpr std::size_t kChunk = 256 * 1024;

[[noreturn]] void fail(const std::string& fileName, const std::string& reason) {
  throw Failure<KORVEN::settings::core::FileLoadingError>(shownFileName(fileName), reason);
}

// Refuses directories, pipes and devices.
void checkFile(int file, const std::string& fileName) {
  struct stat status;
  if (fstat(file, &status) != 0) fail(fileName, systemText(errno));
  if (S_ISDIR(status.st_mode)) fail(fileName, systemText(EISDIR));
  if (!S_ISREG(status.st_mode)) fail(fileName, "it is not a regular file");
}

std::size_t readSome(int file, void* buffer, const std::string& fileName) {
  while (true) {
    const ssize_t size = read(file, buffer, kChunk);
    if (size >= 0) return static_cast<std::size_t>(size);
    if (errno != EINTR) fail(fileName, systemText(errno));
  }
}

}  // namespace

NodePtr readSettingsTree(const std::string& fileName, const ParseRules& rules) {
  // Without O_NONBLOCK, opening a pipe waits for its writer.
  const FileDescriptor file(open(fileName.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) fail(fileName, systemText(errno));
  checkFile(file.get(), fileName);
  SettingsParser parser(rules, shownFileName(fileName));
  std::uint64_t total = 0;
  std::size_t size;
  do {
    size = readSome(file.get(), parser.buffer(kChunk), fileName);
    total += size;
    if (total > kMaxFileSize) {
      fail(fileName, "it is larger than " + std::to_string(kMaxFileSize >> 20) + " MB");
    }
    parser.parse(size, size == 0);
  } while (size > 0);
  return parser.takeRoot();
}

NodePtr readSettingsContent(const std::string& content, const std::string& name,
                            const ParseRules& rules) {
  SettingsParser parser(rules, name);
  std::size_t position = 0;
  do {
    const std::size_t size = std::min(content.size() - position, kChunk);
    std::memcpy(parser.buffer(kChunk), content.data() + position, size);
    position += size;
    parser.parse(size, position == content.size());
  } while (position < content.size());
  return parser.takeRoot();
}

}  // namespace zlutil::settings::host
