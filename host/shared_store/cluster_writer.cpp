#include "host/shared_store/cluster_writer.h"

#include <algorithm>

#include "host/shared_store/document_origin.h"
#include "host/shared_store/key_layout.h"

namespace zlutil::settings::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How long one member may be silent.
constexpr milliseconds kSilence(2000);
// How many documents of the past are read to find a commit that others have overwritten.
constexpr int kMostPastDocuments = 50;

// Returns the name of the commit that wrote the document; "" if there is none.
std::string commitOf(const KeyValue& item) {
  std::string reason;
  const std::optional<SettingDocument> document = parseDocument(item.value, reason);
  return document ? document->commit : std::string();
}

ClusterError unclear(const char* reason) { return ClusterError(ClusterError::kUnknown, reason); }

}  // namespace

ClusterWriter::ClusterWriter(const ClusterOptions& options)
    : prefix_(options.address.keyPrefix()),
      end_(rangeEndOf(prefix_)),
      client_(options),
      origin_{options.credentials.user, {}, machineName()} {
  if (origin_.user.empty()) origin_.user = userName();
}

std::string ClusterWriter::ask(const char* path, const std::string& body, SteadyTime deadline) {
  const auto left = std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now());
  if (left <= milliseconds(0)) {
    throw ClusterError(ClusterError::kAway, "the time for the change has passed");
  }
  return client_.ask(path, body, {left, std::min(left, kSilence)});
}

ClusterWriter::Result ClusterWriter::write(const WritePlan& plan, const TreeProgress& progress,
                                           SteadyTime deadline) {
  origin_.time = timeNow();
  TxnRequest request;
  for (const auto& [path, operation] : plan.operations()) {
    const std::string key = keyOf(prefix_, path);
    request.require(key, {}, progress.revisionOf(path));
    if (operation.isRemoval) {
      addRemoval(request, path, progress);
    } else {
      request.put(key, textOf(operation.document, origin_));
    }
  }
  // Everything that is later, and not only the keys of this change: the tree must not get a part of
  // a transaction of others.
  RangeRequest later{prefix_, end_};
  later.changedSince = progress.seen() + 1;
  std::optional<TxnAnswer> answer;
  try {
    answer = parseTxn(ask("/v3/kv/txn", request.text(later), deadline));
  } catch (const ClusterError& failure) {
    if (failure.kind() != ClusterError::kTooLong) throw;
    if (client_.wasRepeated()) throw unclear(failure.what());
    throw ClusterError(ClusterError::kRefused, "others have changed too many settings meanwhile");
  }
  if (!answer) throw unclear("the answer is not understood");
  if (answer->succeeded) return {answer->header.revision, {}};
  Result result{0, std::move(answer->found)};
  if (client_.wasRepeated()) {
    result.committed = findCommit(plan, progress, result.later, deadline);
  }
  return result;
}

// Adds the deletion of the entry and of all below it, if none below is later than the tree knows.
void ClusterWriter::addRemoval(TxnRequest& request, const std::string& path,
                               const TreeProgress& progress) const {
  const std::string key = keyOf(prefix_, path), below = key + '/', end = rangeEndOf(below);
  std::string from = below;
  for (const std::string& later : progress.laterBelow(path)) {
    const std::string known = keyOf(prefix_, later);
    request.require(from, known, progress.seen());
    request.require(known, {}, progress.revisionOf(later));
    from = known + '\0';
  }
  request.require(from, end, progress.seen());
  request.erase(key, {});
  request.erase(below, end);
}

// Returns the revision of the commit, if its first sending was successful; otherwise 0.
std::int64_t ClusterWriter::findCommit(const WritePlan& plan, const TreeProgress& progress,
                                       const std::vector<KeyValue>& later, SteadyTime deadline) {
  for (const KeyValue& item : later) {
    if (commitOf(item) == plan.commit()) return item.modified;
  }
  // Others may have overwritten all of it since. The history of any of its keys tells.
  for (const KeyValue& item : later) {
    const std::optional<std::string> path = pathOf(prefix_, item.key);
    const auto written = path ? plan.operations().find(*path) : plan.operations().end();
    if (written == plan.operations().end() || written->second.isRemoval) continue;
    try {
      return findInHistory(item, progress.revisionOf(*path), plan.commit(), deadline);
    } catch (const ClusterError& failure) {
      throw unclear(failure.what());
    }
  }
  const auto isPut = [](const auto& operation) { return !operation.second.isRemoval; };
  if (std::any_of(plan.operations().begin(), plan.operations().end(), isPut)) return 0;
  throw unclear("others have set the removed settings meanwhile");
}

// Returns the revision between `known` and the item's at which the commit wrote the key, or 0.
std::int64_t ClusterWriter::findInHistory(const KeyValue& item, std::int64_t known,
                                          const std::string& commit, SteadyTime deadline) {
  std::int64_t revision = item.modified - 1;
  for (int read = 0; revision > known; ++read) {
    if (read == kMostPastDocuments) throw unclear("others have changed the settings very often");
    const std::optional<RangeAnswer> past =
        parseRange(ask("/v3/kv/range", requestOf({item.key, {}, 0, revision}), deadline));
    if (!past) throw unclear("the answer is not understood");
    if (past->found.empty()) return 0;
    const KeyValue& older = past->found.front();
    if (older.modified <= known) return 0;
    if (commitOf(older) == commit) return older.modified;
    revision = std::min(revision, older.modified) - 1;
  }
  return 0;
}

}  // namespace zlutil::settings::host
