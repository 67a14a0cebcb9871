// The changes of a SharedStore by this process.
#include "host/shared_store/change_refusal.h"
#include "host/shared_store/document_origin.h"
#include "host/shared_store/shared_store.h"
#include "host/tree/level_order.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;
using std::chrono::steady_clock;

// How often a change is tried again because others have changed its keys.
constexpr int kMostAttempts = 20;

}  // namespace

// Throws StoreFailure at once if no member answered last.
void SharedStore::requireAnswers() {
  base::MutexLock lock(mutex_);
  if (away_.empty()) return;
  throw Failure<StoreFailure>(name_, away_ + ". The change was not made.");
}

WritePlan SharedStore::plan(const Changes& changes, const std::string& commit) {
  const auto validatorOf = [this](const std::string& path) {
    base::MutexLock lock(mutex_);
    const auto found = validators_.find(path);
    return found == validators_.end() ? ValidatorChoice() : found->second;
  };
  return WritePlan(changes, validatorOf, commit, name_);
}

bool SharedStore::apply(const Changes& changes, const Receiver& receive) {
  const SteadyTime deadline = steady_clock::now() + options_.longestChange;
  if (!deliver(receive)) return false;
  requireAnswers();
  const std::string commit = newCommitName();
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    // Made again each time, because others may have changed validators that documents keep.
    const WritePlan planned = plan(changes, commit);
    ClusterWriter::Result result;
    try {
      result = writer_.write(planned, progress_, deadline);
    } catch (const ClusterError& failure) {
      throwRefusal(failure, planned, name_, levelName(level_));
    }
    if (result.committed != 0) {
      noteCommitted(planned, result.committed);
      return true;
    }
    if (!takeLater(result.later, receive)) return false;
  }
  throw Failure<StoreFailure>(
      name_, std::string("others change the same settings all the time. The change was not made."));
}

// Brings what others have changed into the tree. Returns what `receive` returns.
bool SharedStore::takeLater(const std::vector<KeyValue>& later, const Receiver& receive) {
  ExternalChanges external{{}, false, name_};
  for (const KeyValue& item : later) {
    const std::optional<std::string> path = pathOf(cluster_.address.keyPrefix(), item.key);
    if (!path || item.modified <= progress_.revisionOf(*path)) continue;
    std::string reason;
    const std::optional<SettingDocument> document = parseDocument(item.value, reason);
    if (document) {
      base::MutexLock lock(mutex_);
      noteValidator(*path, document->validator);
    }
    const Changes& changes = progress_.addLater(
        {*path, item.modified, document ? changesOf(*path, *document) : Changes()});
    external.changes.insert(external.changes.end(), changes.begin(), changes.end());
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
    if (operation.isRemoval) {
      progress_.addRemoval(path, revision);
      validators_.erase(path);
      continue;
    }
    const SettingDocument& document = operation.document;
    progress_.addLater({path, revision, changesOf(path, document)});
    if (document.validator.which() != 0) validators_[path] = document.validator;
  }
}

}  // namespace zlutil::settings::host
