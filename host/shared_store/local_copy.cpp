#include "host/shared_store/local_copy.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "host/os/file_descriptor.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/os/replace_file.h"
#include "host/shared_store/base64.h"

namespace zlutil::settings::host {
namespace {

using nlohmann::json;
using std::chrono::steady_clock;

constexpr int kFormat = 1;
constexpr char kEnd[] = "end ";
constexpr auto kShortestPause = std::chrono::seconds(1);
constexpr auto kTouchEvery = std::chrono::minutes(1);
// A write may take this part of the time of the thread.
constexpr int kPausePerWrite = 20;

// FNV-1a with 64 bits (draft-eastlake-fnv).
std::string checksumOf(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof digits, hash, 16).ptr;
  return std::string(digits, end);
}

std::string_view takeUntil(std::string_view& text, char end) {
  const std::size_t at = std::min(text.find(end), text.size());
  const std::string_view taken = text.substr(0, at);
  text.remove_prefix(std::min(at + 1, text.size()));
  return taken;
}

// Makes the missing directories of the file, for their owner only. Another user, such as root,
// makes none: the owner could not use them.
void makeDirectoriesOf(const std::string& file) {
  std::filesystem::path made;
  for (const auto& part : std::filesystem::path(file).parent_path()) {
    struct stat above;
    const bool isOwner =
        stat(made.empty() ? "." : made.c_str(), &above) == 0 && above.st_uid == geteuid();
    made /= part;
    if (isOwner) mkdir(made.c_str(), 0700);
  }
}

template <class Number>
bool readNumber(std::string_view text, Number& number) {
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && stop == text.data() + text.size();
}

// A copy in its parts, which are views of its text.
struct Parts {
  AnswerHeader header;
  std::string_view lines;
};

// Returns the line's revision; `key` is the key below the prefix, `value` its value in base64.
std::optional<std::int64_t> readLine(std::string_view line, std::string_view& key,
                                     std::string_view& value) {
  std::int64_t modified = 0;
  if (!readNumber(takeUntil(line, ' '), modified)) return std::nullopt;
  key = takeUntil(line, ' ');
  value = line;
  return modified;
}

bool isSameCluster(const json& header, const ClusterAddress& address) {
  const auto members = header.find("members");
  if (header.value("prefix", json()) != address.prefix || members == header.end()) return false;
  return members->is_array() &&
         std::any_of(members->begin(), members->end(), [&](const json& member) {
           return member.is_string() && std::count(address.members.begin(), address.members.end(),
                                                   member.get_ref<const std::string&>()) != 0;
         });
}

std::optional<Parts> split(std::string_view text, const ClusterAddress& address,
                           std::string& reason) {
  reason = "it is torn";
  const std::size_t end = text.rfind(std::string("\n") + kEnd);
  if (end == std::string_view::npos || text.back() != '\n') return std::nullopt;
  std::string_view tail = text.substr(end + 1 + sizeof kEnd - 1);
  const std::string_view content = text.substr(0, end + 1);
  std::size_t count = 0;
  if (!readNumber(takeUntil(tail, ' '), count) || takeUntil(tail, '\n') != checksumOf(content) ||
      count + 1 != static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n'))) {
    return std::nullopt;
  }
  Parts parts;
  parts.lines = content;
  const json header = json::parse(takeUntil(parts.lines, '\n'), nullptr, false);
  reason = "it is not a copy that this version reads";
  if (!header.is_object() || header.value("format", json()) != kFormat) return std::nullopt;
  const json cluster = header.value("cluster", json()), revision = header.value("revision", json());
  if (!cluster.is_string() || !revision.is_number_integer()) return std::nullopt;
  reason = "it is the copy of another cluster";
  if (!isSameCluster(header, address)) return std::nullopt;
  parts.header = {cluster.get<std::string>(), revision.get<std::int64_t>()};
  return parts;
}

// Returns nothing if the file cannot be read.
std::optional<std::string> readFile(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::nullopt;
  try {
    return std::string(std::istreambuf_iterator<char>(stream), {});
  } catch (const std::ios_base::failure&) {  // such as that of a directory
    return std::nullopt;
  }
}

void addLine(std::string& text, std::int64_t modified, std::string_view key,
             std::string_view base64) {
  text += std::to_string(modified);
  text += ' ';
  text += key;
  text += ' ';
  text += base64;
  text += '\n';
}

void addEnd(std::string& text) {
  const auto lines = std::count(text.begin(), text.end(), '\n') - 1;
  const std::string checksum = checksumOf(text);
  text += kEnd + std::to_string(lines) + ' ' + checksum + '\n';
}

std::string fileIn(const std::string& directory, const ClusterAddress& address) {
  if (directory.empty()) return {};
  std::vector<std::string> members = address.members;
  std::sort(members.begin(), members.end());
  std::string identity = address.prefix;
  for (const std::string& member : members) identity += ',' + member;
  std::string name = "workgroup" + address.prefix + '-' + checksumOf(identity) + ".copy";
  std::replace(name.begin(), name.end(), '/', '-');
  return directory + '/' + name;
}

bool isLineKey(std::string_view key) {
  return !key.empty() && key.find_first_of(" \n") == std::string_view::npos;
}

}  // namespace

std::optional<CopiedContent> parseCopy(std::string_view text, const ClusterAddress& address,
                                       std::string& reason) {
  const std::optional<Parts> parts = split(text, address, reason);
  if (!parts) return std::nullopt;
  CopiedContent content{parts->header, {}};
  for (std::string_view rest = parts->lines; !rest.empty();) {
    std::string_view key, base64;
    const std::optional<std::int64_t> modified = readLine(takeUntil(rest, '\n'), key, base64);
    const std::optional<std::string> value = bytesFromBase64(base64);
    if (!modified || !value) {
      reason = "it is damaged";
      return std::nullopt;
    }
    content.items.push_back({address.keyPrefix() + std::string(key), *value, 0, *modified});
  }
  return content;
}

LocalCopy::LocalCopy(const std::string& directory, const ClusterAddress& address)
    : address_(address), file_(fileIn(directory, address)) {}

std::optional<CopiedContent> LocalCopy::read() const {
  const std::optional<std::string> text = readFile(file_);
  if (!text) return std::nullopt;
  std::string reason;
  std::optional<CopiedContent> content = parseCopy(*text, address_, reason);
  if (!content) logError(shownFileName(file_) + ": is ignored: " + reason);
  return content;
}

std::string LocalCopy::age() const {
  struct stat status;
  if (stat(file_.c_str(), &status) != 0) return "an unknown time";
  const std::int64_t seconds = std::max<std::int64_t>(0, std::time(nullptr) - status.st_mtime);
  if (seconds < 120) return std::to_string(seconds) + " seconds";
  if (seconds < 7200) return std::to_string(seconds / 60) + " minutes";
  if (seconds < 172800) return std::to_string(seconds / 3600) + " hours";
  return std::to_string(seconds / 86400) + " days";
}

// Returns the part of the key below the prefix; "" if it is not below.
std::string_view LocalCopy::keyBelow(std::string_view key) const {
  const std::string prefix = address_.keyPrefix();
  return key.substr(0, prefix.size()) == prefix ? key.substr(prefix.size()) : std::string_view();
}

void LocalCopy::reportOnce(const std::exception& failure) {
  if (!std::exchange(hasFailed_, true)) logError(failure.what());
}

std::string LocalCopy::headerLine() const {
  return json{{"format", kFormat},
              {"cluster", header_.cluster},
              {"members", address_.members},
              {"prefix", address_.prefix},
              {"revision", header_.revision}}
             .dump(-1, ' ', false, json::error_handler_t::replace) +
         '\n';
}

// Throws StoreFailure.
void LocalCopy::write(const std::string& text) const {
  // Makes the file with this mode first, because replaceFile() keeps the mode.
  const FileDescriptor made(open(file_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  replaceFile(file_, text);
}

void LocalCopy::replace(const AnswerHeader& header, const std::vector<KeyValue>& items) {
  header_ = header;
  written_ = header.revision;
  noted_.clear();
  needsContent_ = false;
  isCurrent_ = false;
  if (file_.empty()) return;
  try {
    writeAll(items);
    isCurrent_ = true;
  } catch (const std::exception& failure) {
    reportOnce(failure);
  }
}

void LocalCopy::writeAll(const std::vector<KeyValue>& items) const {
  std::string reason;
  if (const std::optional<std::string> text = readFile(file_)) {
    const std::optional<Parts> parts = split(*text, address_, reason);
    // Another process has written it already.
    if (parts && parts->header.cluster == header_.cluster &&
        parts->header.revision == header_.revision) {
      utimensat(AT_FDCWD, file_.c_str(), nullptr, 0);
      return;
    }
  }
  std::string text = headerLine();
  for (const KeyValue& item : items) {
    const std::string_view key = keyBelow(item.key);
    if (isLineKey(key)) addLine(text, item.modified, key, base64From(item.value));
  }
  addEnd(text);
  makeDirectoriesOf(file_);
  write(text);
}

void LocalCopy::note(const AnswerHeader& header, const std::vector<WatchEvent>& events) {
  header_ = header;
  if (file_.empty()) return;
  for (const WatchEvent& event : events) {
    const std::string key(keyBelow(event.item.key));
    if (!isLineKey(key)) continue;
    noted_[key] = {event.item.modified,
                   event.isDeletion ? std::nullopt : std::make_optional(event.item.value)};
  }
}

void LocalCopy::writeIfDue(steady_clock::time_point now) {
  if (noted_.empty() && !needsContent_) return touchIfDue(now);
  if (now >= nextWrite_) writeNoted();
}

void LocalCopy::writeNoted() {
  if (needsContent_ || noted_.empty()) return;
  const auto start = steady_clock::now();
  try {
    merge();
  } catch (const std::exception& failure) {
    reportOnce(failure);
  }
  const auto end = steady_clock::now();
  nextWrite_ =
      end + std::max<steady_clock::duration>(kShortestPause, kPausePerWrite * (end - start));
}

// Keeps the time of the file current while nothing changes.
void LocalCopy::touchIfDue(steady_clock::time_point now) {
  if (!isCurrent_ || now < nextTouch_) return;
  utimensat(AT_FDCWD, file_.c_str(), nullptr, 0);
  nextTouch_ = now + kTouchEvery;
}

// Writes a new file of the lines of the old one and the noted changes. Of one key the later
// revision stays, because other processes write the file too.
void LocalCopy::merge() {
  const FileDescriptor lock(open((file_ + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!lock || flock(lock.get(), LOCK_EX | LOCK_NB) != 0) return;
  std::string reason;
  const std::optional<std::string> old = readFile(file_);
  const std::optional<Parts> parts = old ? split(*old, address_, reason) : std::nullopt;
  if (!parts || parts->header.cluster != header_.cluster || parts->header.revision < written_) {
    needsContent_ = true;
    return;
  }
  const std::int64_t had = parts->header.revision;
  if (had > header_.revision) header_.revision = had;
  std::string text = headerLine();
  text.reserve(old->size() + 1024);
  auto next = noted_.begin();
  const auto addNoted = [&] {
    if (next->second.value && next->second.modified > had) {
      addLine(text, next->second.modified, next->first, base64From(*next->second.value));
    }
    ++next;
  };
  for (std::string_view rest = parts->lines; !rest.empty();) {
    std::string_view key, value;
    const std::int64_t modified = readLine(takeUntil(rest, '\n'), key, value).value_or(0);
    while (next != noted_.end() && next->first < key) addNoted();
    if (next != noted_.end() && next->first == key) {
      if (next->second.modified > modified) {
        if (next->second.value) {
          addLine(text, next->second.modified, key, base64From(*next->second.value));
        }
        ++next;
        continue;
      }
      ++next;
    }
    addLine(text, modified, key, value);
  }
  while (next != noted_.end()) addNoted();
  addEnd(text);
  write(text);
  written_ = header_.revision;
  isCurrent_ = true;
  noted_.clear();
}

}  // namespace zlutil::settings::host
