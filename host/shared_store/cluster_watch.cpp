#include "host/shared_store/cluster_watch.h"

#include <algorithm>
#include <atomic>
#include <random>
#include <system_error>
#include <thread>
#include <utility>

#include "host/os/signals_blocked.h"
#include "host/shared_store/line_splitter.h"
#include "host/shared_store/process_exit.h"

namespace zlutil::settings::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kRange[] = "/v3/kv/range";
// The number of keys that are asked for at once, and the part of it if that answer is too long.
constexpr std::int64_t kPage = 10000, kSmallerPage = 4;
// Memory is reserved for so many keys at most, because the count comes from outside.
constexpr std::int64_t kMostReserved = 1 << 20;
// How often the member of the stream is asked whether it is alive and current, and how long it may
// take to answer.
constexpr milliseconds kProbeEvery(2000), kProbeSilence(2000);
constexpr ClusterClient::Patience kLoading{milliseconds(30000), milliseconds(5000)};
constexpr milliseconds kShortestPause(100), kLongestPause(2000);

}  // namespace

struct ClusterWatch::Core {
  explicit Core(const ClusterOptions& options)
      : client(options),
        prefix(options.address.keyPrefix()),
        end(rangeEndOf(prefix)),
        quietTime(options.quietTime),
        lines(options.longestAnswer),
        random(std::random_device{}()) {}

  std::vector<KeyValue> load(const ClusterClient::Patience& patience);
  void run();
  void runOnce();
  void follow();
  bool handle(const std::string& line);
  bool probe();
  bool hasMissedNothing();
  void pause();
  void noteFailure(const std::string& reason, bool isOfAllMembers);
  void noteAnswers();
  bool isStopped() { return stopped || client.connection().isStopped(); }

  ClusterClient client;
  const std::string prefix, end;
  const milliseconds quietTime;
  ClusterListener* listener = nullptr;
  std::atomic<bool> stopped{false};
  std::thread thread;

  // The rest is used by the thread only, once there is one.
  AnswerHeader seen;          // what the listener has
  std::int64_t keys = 0;      // the number of keys at that revision
  std::int64_t page = kPage;  // of a load
  bool mustLoad = true;
  bool isAway = false;
  bool hasAnswered = false;    // the stream
  bool isLineTooLong = false;  // of the stream
  std::size_t failures = 0;    // since a stream has lived for a while
  SteadyTime lastEvents;       // or the last check for missing ones
  LineSplitter lines;
  std::minstd_rand random;
};

std::vector<KeyValue> ClusterWatch::Core::load(const ClusterClient::Patience& patience) {
  const SteadyTime deadline = steady_clock::now() + patience.all;
  std::vector<KeyValue> items;
  RangeRequest request{prefix, end};
  AnswerHeader header;
  while (true) {
    const auto left = std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now());
    request.limit = page;
    std::string body;
    try {
      body = client.ask(kRange, requestOf(request), {left, std::min(left, patience.silence)});
    } catch (const ClusterError& failure) {
      if (failure.kind() != ClusterError::kTooLong || page == 1) throw;
      page = std::max<std::int64_t>(1, page / kSmallerPage);
      continue;
    }
    std::optional<RangeAnswer> answer = parseRange(body);
    if (!answer) throw ClusterError(ClusterError::kRefused, "its answer is not understood");
    if (request.revision == 0) {
      header = answer->header;
      items.reserve(
          static_cast<std::size_t>(std::clamp<std::int64_t>(answer->count, 0, kMostReserved)));
    }
    std::move(answer->found.begin(), answer->found.end(), std::back_inserter(items));
    if (!answer->hasMore || answer->found.empty()) break;
    // The other pages are of the same state.
    request.revision = header.revision;
    request.key = items.back().key + '\0';
  }
  seen = header;
  keys = static_cast<std::int64_t>(items.size());
  mustLoad = false;
  return items;
}

void ClusterWatch::Core::run() {
  while (!isStopped()) {
    try {
      runOnce();
    } catch (const ClusterError& failure) {
      // Without a leader the members are there but do not answer, for the time of an election.
      noteFailure(failure.what(), failure.kind() == ClusterError::kAway);
    } catch (const std::exception& failure) {
      // The listener, or the lack of memory. What was being handed over may be lost.
      mustLoad = true;
      noteFailure(failure.what(), false);
    }
    if (!isStopped()) pause();
  }
}

void ClusterWatch::Core::runOnce() {
  if (mustLoad) {
    std::vector<KeyValue> items = load(kLoading);
    noteAnswers();
    if (isStopped()) return;
    listener->onContent(seen, std::move(items));
    if (isStopped()) return;
  }
  follow();
}

// Opens the stream and stays with it until it ends or must be opened again.
void ClusterWatch::Core::follow() {
  GatewayConnection& connection = client.connection();
  lines.clear();
  hasAnswered = isLineTooLong = false;
  const auto receive = [this](std::string_view bytes) {
    isLineTooLong = !lines.feed(bytes);
    return !isLineTooLong;
  };
  client.openWatch(watchRequest(prefix, end, seen.revision + 1), receive,
                   {kProbeSilence, kProbeSilence});
  SteadyTime nextProbe = steady_clock::now() + kProbeEvery;
  lastEvents = steady_clock::now();
  while (!isStopped() && !mustLoad) {
    mustLoad = isLineTooLong;  // every member would send the same line
    if (mustLoad) return connection.closeStream();
    const bool isOpen = connection.isStreamOpen();
    if (!isOpen) lines.finish();
    for (const std::string& line : lines.take()) {
      if (!handle(line)) return connection.closeStream();
    }
    if (!isOpen) {
      const std::string reason = client.member() + ": " + connection.streamReason();
      client.nextMember();
      return noteFailure(reason, false);
    }
    if (steady_clock::now() >= nextProbe) {
      if (!hasAnswered) {
        const std::string silent = client.member() + ": it does not answer";
        client.nextMember();
        connection.closeStream();
        return noteFailure(silent, false);
      }
      if (!probe()) return connection.closeStream();
      failures = 0;
      mustLoad = mustLoad || listener->onIdle();
      nextProbe = steady_clock::now() + kProbeEvery;
    }
    if (isStopped()) return;
    connection.wait(nextProbe);
  }
  connection.closeStream();
}

// Returns false if the stream is of no use any more, or the watch was stopped.
bool ClusterWatch::Core::handle(const std::string& line) {
  std::optional<WatchAnswer> answer = parseWatch(line);
  if (!answer) {
    const std::string member = client.member();
    client.nextMember();
    throw ClusterError(ClusterError::kRefused, member + ": it answers, and not as etcd does");
  }
  if (answer->isCanceled) {
    mustLoad = answer->compactedTo != 0;
    if (mustLoad) return false;
    // An expired token shows as a refusal.
    client.forgetToken();
    throw ClusterError(ClusterError::kRefused,
                       answer->reason.empty() ? "the watch was canceled" : answer->reason);
  }
  mustLoad = answer->header.cluster != seen.cluster || answer->header.revision < seen.revision;
  if (mustLoad) return false;
  if (answer->isCreated) {
    hasAnswered = true;
    noteAnswers();
  }
  std::vector<WatchEvent>& events = answer->events;
  // A stream that was opened again may repeat what the listener has.
  const auto isKnown = [this](const WatchEvent& event) {
    return event.item.modified <= seen.revision;
  };
  const bool isProgress = events.empty() && !answer->isCreated;
  events.erase(std::remove_if(events.begin(), events.end(), isKnown), events.end());
  if (!events.empty()) {
    for (const WatchEvent& event : events) {
      seen.revision = std::max(seen.revision, event.item.modified);
      if (event.isDeletion) --keys;
      if (!event.isDeletion && event.item.created == event.item.modified) ++keys;
    }
    lastEvents = steady_clock::now();
  } else if (isProgress) {
    seen.revision = answer->header.revision;
  } else {
    return true;
  }
  listener->onEvents(seen, std::move(events));
  return !isStopped();
}

// Asks the member of the stream for its revision; the answer needs a majority of the members. If it
// fails, the client has gone on to another member. Returns whether the stream is of use.
bool ClusterWatch::Core::probe() {
  const std::string member = client.member();
  const std::string body =
      client.ask(kRange, requestOf({prefix, {}, 1}), {2 * kProbeSilence, kProbeSilence});
  const std::optional<RangeAnswer> answer = parseRange(body);
  if (!answer) throw ClusterError(ClusterError::kRefused, "its answer is not understood");
  mustLoad = answer->header.cluster != seen.cluster || answer->header.revision < seen.revision;
  const bool isQuiet =
      answer->header.revision > seen.revision && steady_clock::now() - lastEvents >= quietTime;
  if (!mustLoad && isQuiet && !hasMissedNothing()) return false;
  return client.member() == member;
}

// Returns whether no key has changed since the revision that the listener has. The listener then
// has the present revision, from which the stream can be opened again after a compaction. Otherwise
// the stream may be stuck.
bool ClusterWatch::Core::hasMissedNothing() {
  RangeRequest later{prefix, end, 1};
  later.changedSince = seen.revision + 1;
  const std::optional<RangeAnswer> answer =
      parseRange(client.ask(kRange, requestOf(later), kLoading));
  if (!answer) throw ClusterError(ClusterError::kRefused, "its answer is not understood");
  lastEvents = steady_clock::now();
  if (!answer->found.empty() || answer->count != keys) return false;
  seen.revision = answer->header.revision;
  listener->onEvents(seen, {});
  return !isStopped();
}

void ClusterWatch::Core::pause() {
  if (failures == 0 || isStopped()) return;
  const milliseconds bound =
      std::min(kLongestPause, kShortestPause * (1 << std::min<std::size_t>(failures - 1, 5)));
  const auto least = bound.count() / 2;
  const milliseconds time(least + static_cast<int>(random() % (least + 1)));
  const SteadyTime end = steady_clock::now() + time;
  while (!isStopped() && steady_clock::now() < end) client.connection().wait(end);
}

// One failure may be an expired token or a member that has ended.
void ClusterWatch::Core::noteFailure(const std::string& reason, bool isOfAllMembers) {
  ++failures;
  if (isAway || isStopped() || (!isOfAllMembers && failures <= client.memberCount())) return;
  isAway = true;
  listener->onAway(reason);
}

void ClusterWatch::Core::noteAnswers() {
  if (std::exchange(isAway, false)) listener->onAnswers();
}

ClusterWatch::ClusterWatch(const ClusterOptions& options)
    : core_(std::make_shared<Core>(options)) {}

ClusterWatch::~ClusterWatch() {
  // In the child of a fork() the thread is missing, and the connections are those of the parent.
  if (isForkedChild()) return;
  core_->stopped = true;
  core_->client.connection().stop();
  if (core_->thread.get_id() == std::this_thread::get_id()) {
    core_->thread.detach();
  } else if (core_->thread.joinable()) {
    core_->thread.join();
  }
}

std::vector<KeyValue> ClusterWatch::load(AnswerHeader& header, milliseconds longest) {
  const auto members = static_cast<int>(core_->client.memberCount());
  std::vector<KeyValue> items = core_->load({longest, longest / members});
  header = core_->seen;
  return items;
}

bool ClusterWatch::start(ClusterListener& listener) {
  core_->listener = &listener;
  core_->isAway = core_->mustLoad;
  try {
    const SignalsBlocked blocked;
    core_->thread = std::thread([core = core_] { core->run(); });
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

}  // namespace zlutil::settings::host
