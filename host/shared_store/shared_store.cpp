#include "host/shared_store/shared_store.h"

#include <malloc.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/os/file_name.h"
#include "host/os/log_error.h"

namespace zlutil::settings::host {
namespace {

constexpr int kMostReports = 10;
// How many settings go into a new tree at once.
constexpr std::size_t kPart = 10000;
// The cluster's comings and goings are reported at most that often.
constexpr auto kReportPause = std::chrono::seconds(30);

Credentials credentialsIn(const std::string& file) {
  if (file.empty()) return {};
  try {
    return readCredentials(file);
  } catch (const std::invalid_argument& failure) {
    throw std::invalid_argument(shownFileName(file) + ": " + failure.what());
  }
}

ClusterOptions clusterOf(const SharedStoreOptions& options) {
  ClusterOptions cluster{parseClusterAddress(options.address),
                         credentialsIn(options.credentials),
                         {options.authority, options.certificate, options.key}};
  if (!cluster.credentials.user.empty()) requireSecrecy(cluster.address);
  return cluster;
}

}  // namespace

SharedStore::SharedStore(const SharedStoreOptions& options)
    : options_(options),
      cluster_(clusterOf(options)),
      name_("the settings of the workgroup at " + shownFileName(options.address)),
      reader_(cluster_.address.keyPrefix(),
              [this](const std::string& key, const std::string& reason) {
                if (++reports_ > kMostReports) return;
                logError(name_ + ": the key \"" + key + "\" is ignored: " + reason);
              }),
      copy_(options.directory, cluster_.address),
      writer_(cluster_),
      watch_(std::make_unique<ClusterWatch>(cluster_)) {}

// Ends the thread first, because it uses the other members.
SharedStore::~SharedStore() { watch_.reset(); }

void SharedStore::readAll(Node& root, int level) {
  level_ = level;
  std::vector<KeyValue> found;
  try {
    AnswerHeader header;
    found = watch_->load(header, options_.longestStart);
    copy_.replace(header, found);
    progress_.advance(header.revision);
    base::MutexLock lock(mutex_);
    received_ = header.revision;
  } catch (const ClusterError& failure) {
    std::optional<CopiedContent> copied = copy_.read();
    logError(name_ + " cannot be read: " + failure.what() +
             (copied ? ". Used is the copy that was current " + copy_.age() + " ago"
                     : std::string(". There is no copy, so this level is empty")) +
             " until the cluster answers");
    if (copied) found = std::move(copied->items);
    base::MutexLock lock(mutex_);
    away_ = failure.what();
  }
  fill(root, found);
}

// Goes in parts: the changes take several times the memory of the tree, and lie between its
// entries, where the allocator cannot give their memory back.
void SharedStore::fill(Node& root, const std::vector<KeyValue>& found) {
  for (auto next = found.begin(); next != found.end();) {
    const auto end = next + std::min<std::ptrdiff_t>(kPart, found.end() - next);
    ExternalChanges part{{}, false, name_};
    std::vector<Item> items;
    {
      base::MutexLock lock(mutex_);
      for (; next != end; ++next) add(reader_.read(*next, true), next->modified, items);
    }
    for (Item& item : items) {
      std::move(item.changes.begin(), item.changes.end(), std::back_inserter(part.changes));
    }
    options_.fill(root, level_, part);
  }
}

void SharedStore::noteValidator(const std::string& path, const ValidatorChoice& validator) {
  if (validator.which() == 0) {
    validators_.erase(path);
  } else {
    validators_[path] = validator;
  }
}

// Adds the reading as an item, unless its key is ignored.
void SharedStore::add(KeyReader::Reading reading, std::int64_t revision, std::vector<Item>& items) {
  if (reading.path.empty()) return;
  noteValidator(reading.path, reading.validator);
  items.push_back({std::move(reading.path), revision, std::move(reading.changes)});
}

void SharedStore::onContent(const AnswerHeader& header, std::vector<KeyValue> found) {
  hasLoaded_ = true;
  copy_.replace(header, found);
  {
    base::MutexLock lock(mutex_);
    reader_.clear();
    validators_.clear();
    std::vector<Item> items;
    items.reserve(found.size());
    for (const KeyValue& item : found) add(reader_.read(item, true), item.modified, items);
    hasContent_ = true;
    content_ = std::move(items);
    events_.clear();
    contentRevision_ = received_ = header.revision;
    mustLoad_ = false;
  }
  found = {};
  const Watcher watcher = watcher_;
  watcher();
}

void SharedStore::onEvents(const AnswerHeader& header, std::vector<WatchEvent> events) {
  copy_.note(header, events);
  {
    base::MutexLock lock(mutex_);
    for (const WatchEvent& event : events) {
      const bool isNew = event.item.created == event.item.modified;
      add(event.isDeletion ? reader_.readDeletion(event.item) : reader_.read(event.item, isNew),
          event.item.modified, events_);
    }
    received_ = header.revision;
    if (events_.empty()) return;
  }
  // A copy, because the watcher may release the last reference to this store.
  const Watcher watcher = watcher_;
  watcher();
}

void SharedStore::onAway(const std::string& reason) {
  copy_.writeNoted();  // now it may be needed
  base::MutexLock lock(mutex_);
  away_ = reason;
  const auto now = std::chrono::steady_clock::now();
  if (now - lastReport_ < kReportPause) return;
  lastReport_ = now;
  logError(name_ + ": " + reason + ". The values that were read last are used meanwhile");
}

void SharedStore::onAnswers() {
  base::MutexLock lock(mutex_);
  away_.clear();
}

bool SharedStore::onIdle() {
  // A load of many settings takes several times the memory that stays. The allocator would keep it.
  if (std::exchange(hasLoaded_, false)) malloc_trim(0);
  copy_.writeIfDue(std::chrono::steady_clock::now());
  base::MutexLock lock(mutex_);
  return mustLoad_ || copy_.needsContent();
}

void SharedStore::loadAgain() {
  base::MutexLock lock(mutex_);
  mustLoad_ = true;
}

// Brings what the watch has received into the tree. Returns what `receive` returns.
bool SharedStore::deliver(const Receiver& receive) {
  bool hasContent;
  std::vector<Item> content, events;
  std::int64_t contentRevision, received;
  {
    base::MutexLock lock(mutex_);
    hasContent = std::exchange(hasContent_, false);
    content.swap(content_);
    events.swap(events_);
    contentRevision = contentRevision_;
    received = received_;
  }
  bool isPossible = true;
  try {
    if (hasContent) {
      isPossible =
          receive({progress_.changesOfContent(std::move(content), contentRevision), true, name_});
    }
    Changes changes = progress_.changesOfEvents(std::move(events));
    if (!changes.empty()) {
      isPossible = receive({std::move(changes), false, name_}) && isPossible;
    }
  } catch (...) {
    // The tree may have a part of it only.
    loadAgain();
    throw;
  }
  progress_.advance(received);
  return isPossible;
}

void SharedStore::catchUp(const Receiver& receive) { deliver(receive); }

bool SharedStore::isCurrent() {
  base::MutexLock lock(mutex_);
  return !hasContent_ && events_.empty() && !mustLoad_;
}

bool SharedStore::watch(const Watcher& watcher) {
  watcher_ = watcher;
  if (!watch_->start(*this)) {
    logError(name_ + " are not watched: no thread can be started. Changes by others are not seen");
  }
  return true;
}

void SharedStore::look() {
  if (isCurrent()) return;
  const Watcher watcher = watcher_;
  watcher();
}

}  // namespace zlutil::settings::host
