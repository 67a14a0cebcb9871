#include "host/shared_store/shared_store.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <random>
#include <utility>

#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/tree/level_order.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;
using std::chrono::milliseconds;

constexpr char kTxn[] = "/v3/kv/txn";
constexpr char kRange[] = "/v3/kv/range";
// How long a change waits for the cluster, and for one member.
constexpr ClusterClient::Patience kWriting{milliseconds(10000), milliseconds(2000)};
// How often a change is tried again because others have changed its keys.
constexpr int kMostAttempts = 20;
constexpr int kMostReports = 10;
// The cluster's comings and goings are reported at most that often.
constexpr auto kReportPause = std::chrono::seconds(30);

std::string userName() {
  std::vector<char> buffer(16 * 1024);
  struct passwd record;
  struct passwd* found = nullptr;
  getpwuid_r(geteuid(), &record, buffer.data(), buffer.size(), &found);
  return found ? found->pw_name : std::to_string(geteuid());
}

std::string machineName() {
  char name[256] = "";
  gethostname(name, sizeof name - 1);
  return name;
}

std::string timeNow() {
  const std::time_t now = std::time(nullptr);
  struct tm parts;
  char text[32];
  gmtime_r(&now, &parts);
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts));
}

std::string newCommitName() {
  static std::random_device random;
  char text[24];
  const int size = std::snprintf(text, sizeof text, "%08x%08x", random(), random());
  return std::string(text, static_cast<std::size_t>(size));
}

// Returns the name of the commit that wrote the document; "" if there is none.
std::string commitOf(const KeyValue& item) {
  std::string reason;
  const std::optional<SettingDocument> document = parseDocument(item.value, reason);
  return document ? document->commit : std::string();
}

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
      origin_{cluster_.credentials.user, {}, machineName()},
      watch_(std::make_unique<ClusterWatch>(cluster_)) {
  if (origin_.user.empty()) origin_.user = userName();
}

// Ends the thread first, because it uses the other members.
SharedStore::~SharedStore() { watch_.reset(); }

void SharedStore::readAll(Node& root, int level) {
  level_ = level;
  ExternalChanges contents{{}, false, name_};
  std::vector<Item> items;
  try {
    AnswerHeader header;
    const std::vector<KeyValue> found = watch_->load(header, options_.longestStart);
    items = read(found);
    copy_.replace(header, found);
    base::MutexLock lock(mutex_);
    seen_ = received_ = header.revision;
  } catch (const ClusterError& failure) {
    const std::optional<CopiedContent> copied = copy_.read();
    logError(name_ + " cannot be read: " + failure.what() +
             (copied ? ". Used is the copy that was current " + copy_.age() + " ago"
                     : std::string(". There is no copy, so this level is empty")) +
             " until the cluster answers");
    if (copied) items = read(copied->items);
    base::MutexLock lock(mutex_);
    away_ = failure.what();
  }
  for (Item& item : items) {
    std::move(item.changes.begin(), item.changes.end(), std::back_inserter(contents.changes));
  }
  options_.fill(root, level, contents);
}

void SharedStore::noteValidator(const std::string& path, const ValidatorChoice& validator) {
  if (validator.which() == 0) {
    validators_.erase(path);
  } else {
    validators_[path] = validator;
  }
}

// Reads the whole content.
std::vector<SharedStore::Item> SharedStore::read(const std::vector<KeyValue>& found) {
  reader_.clear();
  base::MutexLock lock(mutex_);
  validators_.clear();
  std::vector<Item> items;
  items.reserve(found.size());
  for (const KeyValue& item : found) {
    KeyReader::Reading reading = reader_.read(item, true);
    if (reading.path.empty()) continue;
    noteValidator(reading.path, reading.validator);
    items.push_back({std::move(reading.path), item.modified, std::move(reading.changes)});
  }
  return items;
}

void SharedStore::onContent(const AnswerHeader& header, std::vector<KeyValue> found) {
  copy_.replace(header, found);
  {
    std::vector<Item> items = read(found);
    base::MutexLock lock(mutex_);
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
      KeyReader::Reading reading =
          event.isDeletion ? reader_.readDeletion(event.item) : reader_.read(event.item, isNew);
      if (reading.path.empty()) continue;
      noteValidator(reading.path, reading.validator);
      events_.push_back({std::move(reading.path), event.item.modified, std::move(reading.changes)});
    }
    received_ = header.revision;
    if (events_.empty()) return;
  }
  // A copy, because the watcher may release the last reference to this store.
  const Watcher watcher = watcher_;
  watcher();
}

void SharedStore::onAway(const std::string& reason) {
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
  bool hasContent, isPossible = true;
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
  try {
    if (hasContent) isPossible = deliverContent(receive, std::move(content), contentRevision);
    if (!events.empty()) isPossible = deliverEvents(receive, std::move(events)) && isPossible;
  } catch (...) {
    // The tree may have a part of it only.
    loadAgain();
    throw;
  }
  seen_ = received;
  for (auto item = ahead_.begin(); item != ahead_.end();) {
    item = item->second.revision <= seen_ ? ahead_.erase(item) : std::next(item);
  }
  return isPossible;
}

bool SharedStore::deliverContent(const Receiver& receive, std::vector<Item> content,
                                 std::int64_t revision) {
  // The revisions of a restored cluster are lower.
  if (revision < seen_) ahead_.clear();
  ExternalChanges external{{}, true, name_};
  const auto add = [&](Changes& changes) {
    std::move(changes.begin(), changes.end(), std::back_inserter(external.changes));
  };
  for (Item& item : content) {
    const auto later = ahead_.find(item.path);
    if (later == ahead_.end() || later->second.revision <= revision) add(item.changes);
  }
  for (const auto& [path, item] : ahead_) {
    Changes changes = item.changes;
    if (item.revision > revision) add(changes);
  }
  return receive(external);
}

bool SharedStore::deliverEvents(const Receiver& receive, std::vector<Item> events) {
  ExternalChanges external{{}, false, name_};
  for (Item& item : events) {
    const auto later = ahead_.find(item.path);
    if (later != ahead_.end() && later->second.revision >= item.revision) continue;
    for (Change& change : item.changes) {
      // A node that this key leaves empty may have got a key of this process meanwhile.
      auto* const removal = std::get_if<RemoveSubtree>(&change);
      if (removal && knownRevision(removal->path, true) > item.revision) removal->path = item.path;
      external.changes.push_back(std::move(change));
    }
  }
  return external.changes.empty() || receive(external);
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

// Throws StoreFailure at once if no member answered last.
void SharedStore::requireAnswers() {
  base::MutexLock lock(mutex_);
  if (away_.empty()) return;
  throw Failure<StoreFailure>(name_, away_ + ". The change was not made.");
}

std::int64_t SharedStore::knownRevision(const std::string& path, bool withBelow) const {
  std::int64_t known = 0;
  if (withBelow) {
    for (const auto& [other, item] : ahead_) {
      if (other.compare(0, path.size() + 1, path + '.') == 0)
        known = std::max(known, item.revision);
    }
  } else if (const auto item = ahead_.find(path); item != ahead_.end()) {
    known = item->second.revision;
  }
  return std::max(known, seen_);
}

WritePlan SharedStore::plan(const Changes& changes, const std::string& commit) {
  const auto validatorOf = [this](const std::string& path) {
    base::MutexLock lock(mutex_);
    const auto found = validators_.find(path);
    return found == validators_.end() ? ValidatorChoice() : found->second;
  };
  return WritePlan(changes, validatorOf, commit);
}

bool SharedStore::apply(const Changes& changes, const Receiver& receive) {
  if (!deliver(receive)) return false;
  requireAnswers();
  const std::string commit = newCommitName();
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    // Made again each time, because others may have changed validators that documents keep.
    const WritePlan planned = plan(changes, commit);
    try {
      bool isPossible = true;
      if (tryCommitting(planned, receive, isPossible)) return true;
      if (!isPossible) return false;
    } catch (const ClusterError& failure) {
      refuse(failure, planned);
    }
  }
  throw Failure<StoreFailure>(
      name_, std::string("others change the same settings all the time. The change was not made."));
}

// Returns whether the plan is stored. If not, others have changed some of its keys, and the tree
// now has their changes.
bool SharedStore::tryCommitting(const WritePlan& planned, const Receiver& receive,
                                bool& isPossible) {
  const std::string& prefix = cluster_.address.keyPrefix();
  origin_.time = timeNow();
  const TxnRequest request = planned.request(
      prefix, origin_,
      [this](const std::string& path, bool withBelow) { return knownRevision(path, withBelow); });
  RangeRequest later = planned.range(prefix);
  later.changedSince = seen_ + 1;
  const std::optional<TxnAnswer> answer =
      parseTxn(writer_.ask(kTxn, request.text(later), kWriting));
  if (!answer) throw ClusterError(ClusterError::kUnknown, "the answer is not understood");
  if (answer->succeeded) {
    noteCommitted(planned, answer->header.revision);
    return true;
  }
  if (wasCommitted(planned, *answer)) return true;
  isPossible = takeLater(answer->found, receive);
  return false;
}

// Returns whether the refused request has been stored all the same: its first sending was, its
// answer was lost, and the second sending found it there.
bool SharedStore::wasCommitted(const WritePlan& planned, const TxnAnswer& answer) {
  for (const KeyValue& item : answer.found) {
    if (commitOf(item) != planned.commit()) continue;
    noteCommitted(planned, item.modified);
    return true;
  }
  // Others may have overwritten all of it since. The history of one of its keys tells.
  for (const KeyValue& item : answer.found) {
    const std::optional<std::string> path = pathOf(cluster_.address.keyPrefix(), item.key);
    const auto written = path ? planned.operations().find(*path) : planned.operations().end();
    if (written == planned.operations().end() || written->second.isRemoval) continue;
    try {
      return isInHistory(item, knownRevision(*path, false), planned.commit());
    } catch (const ClusterError& failure) {
      throw ClusterError(ClusterError::kUnknown, failure.what());
    }
  }
  return false;
}

// Returns whether a document of the key, of between the revision `known` and the item, is that of
// the commit.
bool SharedStore::isInHistory(const KeyValue& item, std::int64_t known, const std::string& commit) {
  for (std::int64_t revision = item.modified - 1; revision > known;) {
    const std::optional<RangeAnswer> past =
        parseRange(writer_.ask(kRange, requestOf({item.key, {}, 0, revision}), kWriting));
    if (!past) throw ClusterError(ClusterError::kUnknown, "the answer is not understood");
    if (past->found.empty()) return false;
    const KeyValue& older = past->found.front();
    if (commitOf(older) == commit) return true;
    revision = std::min(revision, older.modified) - 1;
  }
  return false;
}

// Brings what others have changed into the tree. Returns what `receive` returns.
bool SharedStore::takeLater(const std::vector<KeyValue>& found, const Receiver& receive) {
  ExternalChanges external{{}, false, name_};
  for (const KeyValue& item : found) {
    const std::optional<std::string> path = pathOf(cluster_.address.keyPrefix(), item.key);
    if (!path || item.modified <= knownRevision(*path, false)) continue;
    std::string reason;
    const std::optional<SettingDocument> document = parseDocument(item.value, reason);
    Item& later = ahead_[*path] = {*path, item.modified, {}};
    if (!document) continue;
    {
      base::MutexLock lock(mutex_);
      noteValidator(*path, document->validator);
    }
    later.changes = changesOf(*path, *document);
    external.changes.insert(external.changes.end(), later.changes.begin(), later.changes.end());
  }
  try {
    return receive(external);
  } catch (...) {
    loadAgain();
    throw;
  }
}

void SharedStore::noteCommitted(const WritePlan& planned, std::int64_t revision) {
  base::MutexLock lock(mutex_);
  for (const auto& [path, operation] : planned.operations()) {
    Item& item = ahead_[path] = {path, revision, {}};
    if (operation.isRemoval) {
      validators_.erase(path);
      continue;
    }
    item.changes = changesOf(path, operation.document);
    if (operation.document.validator.which() != 0) {
      validators_[path] = operation.document.validator;
    }
  }
}

void SharedStore::refuse(const ClusterError& failure, const WritePlan& planned) const {
  const std::string reason = failure.what();
  if (failure.kind() == ClusterError::kUnknown) {
    throw Failure<StoreFailure>(
        name_, reason +
                   ". It is not known whether the change was made; if it was, it will arrive "
                   "as a change by another process.");
  }
  if (failure.code() == EtcdError::kPermissionDenied) {
    std::string path = planned.operations().begin()->first;
    throw Failure<CantModifyValuesOnReadOnlyLevel>(path, levelName(level_), reason);
  }
  const auto count = std::to_string(planned.operations().size());
  std::string advice = ". The change was not made.";
  if (reason.find("too many operations") != std::string::npos) {
    advice = ": the change has " + count +
             ". The server's option --max-txn-ops is the limit. The " + "change was not made.";
  } else if (reason.find("too large") != std::string::npos ||
             reason.find("larger than max") != std::string::npos) {
    advice = ": the change has " + count + " values. The server's option --max-request-bytes is " +
             "the limit. The change was not made.";
  }
  throw Failure<StoreFailure>(name_, reason + advice);
}

}  // namespace zlutil::settings::host
