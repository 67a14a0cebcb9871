#include "host/shared_store/cluster_client.h"

#include <algorithm>

#include "base/text.h"

namespace zlutil::settings::host {
namespace {

using std::chrono::milliseconds;
using Outcome = GatewayConnection::Outcome;

constexpr char kAuthenticate[] = "/v3/auth/authenticate";
// The pause after a round of all members.
constexpr milliseconds kPause(100);

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

// Returns whether another member, or a later moment, may give a better answer. etcd may have done
// what was asked.
bool isTransient(const EtcdError& error) {
  return error.code == EtcdError::kUnavailable || error.code == EtcdError::kDeadlineExceeded ||
         error.code == EtcdError::kAborted ||
         (error.code == EtcdError::kResourceExhausted && has(error.message, "too many requests"));
}

// Returns whether the token is what was wrong. etcd has then done nothing.
bool isAboutToken(const EtcdError& error) {
  return error.code == EtcdError::kUnauthenticated || has(error.message, "invalid auth token") ||
         has(error.message, "user name is empty") ||
         has(error.message, "revision of auth store is old");
}

// Returns what an answer that is not etcd's looks like.
std::string describeStranger(const Outcome& outcome) {
  return "it answers with HTTP status " + std::to_string(outcome.status) + ", and not as etcd does";
}

}  // namespace

// What one member has said.
struct ClusterClient::Attempt {
  enum Kind { kDone, kFailed, kTooLong, kRefused, kNeedsToken };
  Kind kind;
  int sendings = 0;
  std::string text;  // the body if done, else the reason
  int code = 0;
};

void ClusterClient::nextMember() { member_ = (member_ + 1) % options_.address.members.size(); }

ClusterClient::Attempt ClusterClient::attempt(const std::string& path, const std::string& body,
                                              SteadyTime deadline, milliseconds silence) {
  Outcome outcome = connection_.exchange({member() + path, token_, body}, deadline, silence);
  const int sendings = outcome.sendings;
  if (outcome.kind == Outcome::kTooLong) return {Attempt::kTooLong, sendings, outcome.reason};
  if (outcome.kind != Outcome::kAnswer) return {Attempt::kFailed, sendings, outcome.reason};
  if (outcome.status == 200 && !outcome.body.empty() && outcome.body.front() == '{') {
    return {Attempt::kDone, sendings, std::move(outcome.body)};
  }
  const std::optional<EtcdError> error = parseError(outcome.body);
  if (!error) return {Attempt::kFailed, sendings, describeStranger(outcome)};
  const Attempt::Kind kind = isAboutToken(*error)  ? Attempt::kNeedsToken
                             : isTransient(*error) ? Attempt::kFailed
                                                   : Attempt::kRefused;
  return {kind, sendings, error->message, error->code};
}

// Returns nothing if there is a token now, or none is needed; otherwise what has gone wrong.
std::optional<ClusterClient::Attempt> ClusterClient::obtainToken(SteadyTime deadline,
                                                                 milliseconds silence) {
  const Credentials& credentials = options_.credentials;
  if (credentials.user.empty() || !token_.empty() || isOpen_) return std::nullopt;
  Attempt asked = attempt(kAuthenticate, tokenRequest(credentials.user, credentials.password),
                          deadline, silence);
  if (asked.kind == Attempt::kDone) {
    std::optional<std::string> token = parseToken(asked.text);
    if (!token) return Attempt{Attempt::kFailed, 0, "it answers without a token"};
    token_ = std::move(*token);
    return std::nullopt;
  }
  isOpen_ = asked.code == EtcdError::kFailedPrecondition && has(asked.text, "not enabled");
  if (isOpen_) return std::nullopt;
  asked.sendings = 0;  // of the request itself
  return asked;
}

std::string ClusterClient::ask(const std::string& path, const std::string& body,
                               const Patience& patience) {
  const SteadyTime deadline = std::chrono::steady_clock::now() + patience.all;
  int sendings = 0;  // earlier ones, which may have been successful
  bool isThere = false;
  std::string reason;
  wasRepeated_ = false;
  for (std::size_t failures = 0;;) {
    if (connection_.isStopped()) {
      throw ClusterError(sendings > 0 ? ClusterError::kUnknown : ClusterError::kAway,
                         "the program ends");
    }
    std::optional<Attempt> made;
    bool isRetry = false;
    for (;; isRetry = true) {
      made = obtainToken(deadline, patience.silence);
      if (made) break;
      made = attempt(path, body, deadline, patience.silence);
      if (made->kind != Attempt::kNeedsToken || isRetry || options_.credentials.user.empty()) {
        break;
      }
      sendings += made->sendings - 1;  // etcd has refused the last one
      forgetToken();
      isOpen_ = false;
    }
    // Of the last sending, this is the answer.
    wasRepeated_ = sendings + std::max(made->sendings - 1, 0) > 0;
    sendings += made->sendings;
    if (made->kind == Attempt::kDone) return std::move(made->text);
    if (made->kind == Attempt::kTooLong) throw ClusterError(ClusterError::kTooLong, made->text);
    if (made->kind != Attempt::kFailed) {
      throw ClusterError(wasRepeated_ ? ClusterError::kUnknown : ClusterError::kRefused, made->text,
                         made->code);
    }
    // During an election the members are there, and have not even a token to give.
    isThere = isThere || made->code != 0;
    reason = base::narrowFromUstring(base::to_ustring(member())) + ": " + made->text;
    nextMember();
    const bool isRound = ++failures % memberCount() == 0;
    const bool isLate = std::chrono::steady_clock::now() + kPause >= deadline;
    if (isLate || (isRound && sendings == 0 && !isThere)) break;
    if (isRound) connection_.wait(std::chrono::steady_clock::now() + kPause);
  }
  throw ClusterError(sendings > 0 ? ClusterError::kUnknown : ClusterError::kAway, reason);
}

void ClusterClient::openWatch(const std::string& body, const GatewayConnection::Receiver& receive,
                              const Patience& patience) {
  const SteadyTime deadline = std::chrono::steady_clock::now() + patience.all;
  if (const std::optional<Attempt> failed = obtainToken(deadline, patience.silence)) {
    throw ClusterError(
        failed->kind == Attempt::kRefused ? ClusterError::kRefused : ClusterError::kAway,
        failed->text, failed->code);
  }
  connection_.openStream({member() + "/v3/watch", token_, body}, receive);
}

}  // namespace zlutil::settings::host
