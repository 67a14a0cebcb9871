// The requests and answers of etcd's gateway (HTTP with JSON; etcd's API reference, v3). Keys and
// values are bytes. Pure functions; any thread. What a server sends is not trusted: an answer that
// does not have the form is none.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zlutil::settings::host {

struct KeyValue {
  std::string key;
  std::string value;
  std::int64_t created = 0;   // the revision that created the key
  std::int64_t modified = 0;  // the revision of the value; of an event, its own revision
};

// The part that all answers have.
struct AnswerHeader {
  std::string cluster;  // its identity
  std::int64_t revision = 0;
};

struct RangeAnswer {
  AnswerHeader header;
  std::vector<KeyValue> found;
  bool hasMore = false;
  std::int64_t count = 0;  // of the keys in the range, also those that were not asked for
};

struct TxnAnswer {
  AnswerHeader header;
  bool succeeded = false;
  std::vector<KeyValue> found;  // by the ranges of the branch that was run
};

struct WatchEvent {
  KeyValue item;
  bool isDeletion = false;
};

struct WatchAnswer {
  AnswerHeader header;
  bool isCreated = false, isCanceled = false;
  std::int64_t compactedTo = 0;  // the first revision that is left, if the watch asked for less
  std::string reason;            // why it was canceled
  std::vector<WatchEvent> events;
};

// An error that etcd reports. The codes are those of gRPC.
struct EtcdError {
  enum Code {
    kDeadlineExceeded = 4,
    kPermissionDenied = 7,
    kResourceExhausted = 8,
    kInvalidArgument = 3,
    kFailedPrecondition = 9,
    kAborted = 10,
    kUnavailable = 14,
    kUnauthenticated = 16
  };
  int code = 0;
  std::string message;  // narrow text
};

// Each returns nothing if the text is no such answer.
std::optional<EtcdError> parseError(std::string_view json);
std::optional<RangeAnswer> parseRange(std::string_view json);
std::optional<TxnAnswer> parseTxn(std::string_view json);
// Returns the token of an answer to a request for one.
std::optional<std::string> parseToken(std::string_view json);
// Parses one line of the stream of a watch. An error within it is a canceled watch.
std::optional<WatchAnswer> parseWatch(std::string_view json);

// Returns the end of the range of all keys that begin with `prefix`.
std::string rangeEndOf(std::string_view prefix);

struct RangeRequest {
  std::string key, end;  // `end` is "" for one key
  std::int64_t limit = 0, revision = 0, changedSince = 0;
};
std::string requestOf(const RangeRequest& range);
std::string watchRequest(std::string_view key, std::string_view end, std::int64_t from);
std::string tokenRequest(std::string_view user, std::string_view password);

// A transaction: puts and deletions, if keys have not been changed after given revisions. Otherwise
// a range is read.
class TxnRequest {
 public:
  // Demands that the key or, unless `end` is "", no key of the range has a revision later than
  // `known`.
  void require(std::string_view key, std::string_view end, std::int64_t known);
  void put(std::string_view key, std::string_view value);
  void erase(std::string_view key, std::string_view end);
  std::string text(const RangeRequest& otherwise) const;

 private:
  std::string conditions_, operations_;
};

}  // namespace zlutil::settings::host
