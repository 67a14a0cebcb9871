// The event manager's table of subscriptions. A topic maps to an immutable list of subscribers,
// which is replaced at every subscription and end of one; a publisher walks the list that was
// current when it began. A filter of counters lets publishers skip entries without subscribers.
#include "service/event_mgr.h"
#include "base/never_destroyed.h"

#include <array>
#include <atomic>
#include <boost/container/small_vector.hpp>
#include <boost/unordered_map.hpp>
#include <charconv>
#include <functional>
#include <limits>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/loaded_library.h"
#include "base/mutex.h"
#include "host/events/subscribers.h"

namespace zlutil::eventmgr {
namespace {

// Long enough for the topics of entries, so that publishing allocates nothing.
using Topic = boost::container::small_vector<char, 64>;

// An upper bound of the number of subscriptions for each identity; identities share counters.
class SubscriptionFilter {
 public:
  std::atomic<std::uint32_t>& counterOf(const std::string& topic) {
    const std::size_t end = topic.find_last_not_of("0123456789") + 1;
    if (end == topic.size() || topic.size() - end > 19) return unnumbered_;
    return counters_[slot(std::stoull(topic.substr(end)))];
  }

  bool mayHave(std::uint64_t id) const {
    return counters_[slot(id)].load(std::memory_order_relaxed) != 0 ||
           unnumbered_.load(std::memory_order_relaxed) != 0;
  }

 private:
  static constexpr std::size_t kSlots = 4096;
  static std::size_t slot(std::uint64_t id) { return (id * 0x9E3779B97F4A7C15u) >> 52; }

  std::array<std::atomic<std::uint32_t>, kSlots> counters_{};
  // Subscriptions to topics that do not end in a number; they count for every identity.
  std::atomic<std::uint32_t> unnumbered_{0};
};

struct Subscription {
  Subscription(const EventMgr::Callback& function, std::atomic<std::size_t>& counter)
      : callback(function), ending(counter) {}
  const EventMgr::Callback callback;
  std::atomic<bool> active{true};
  std::atomic<std::size_t>& ending;  // of the library whose code the callback is
  bool isCountedAsEnding = false;    // written by the owner of the connection, as its last act
};
using SubscriptionPtr = std::shared_ptr<Subscription>;
using Subscribers = std::shared_ptr<const std::vector<SubscriptionPtr>>;

class Table {
 public:
  void add(const std::string& topic, const SubscriptionPtr& subscription) EXCLUDES(mutex_) {
    base::MutexLock lock(mutex_);
    Subscribers& current = topics_[topic];
    auto next = current ? std::make_shared<std::vector<SubscriptionPtr>>(*current)
                        : std::make_shared<std::vector<SubscriptionPtr>>();
    next->push_back(subscription);
    current = std::move(next);
    filter_.counterOf(topic).fetch_add(1, std::memory_order_relaxed);
  }

  void remove(const std::string& topic, const SubscriptionPtr& subscription) EXCLUDES(mutex_) {
    Subscribers previous;  // let go of after the lock: a callback's destructor is the subscriber's
    base::MutexLock lock(mutex_);
    const auto found = topics_.find(topic);
    auto next = std::make_shared<std::vector<SubscriptionPtr>>();
    for (const SubscriptionPtr& other : *found->second) {
      if (other != subscription) next->push_back(other);
    }
    previous.swap(found->second);
    if (next->empty()) {
      topics_.erase(found);
    } else {
      found->second = std::move(next);
    }
    filter_.counterOf(topic).fetch_sub(1, std::memory_order_relaxed);
  }

  // The number of the library's subscriptions that have ended and are not yet destroyed, because
  // publishers that have begun still hold them. The counter is never removed.
  std::atomic<std::size_t>& endingOf(const void* library) EXCLUDES(mutex_) {
    base::MutexLock lock(mutex_);
    return ending_[library];
  }

  Subscribers subscribersOf(std::string_view topic) const EXCLUDES(mutex_) {
    base::MutexLock lock(mutex_);
    const auto found = topics_.find(topic, std::hash<std::string_view>(), std::equal_to<>());
    return found == topics_.end() ? Subscribers() : found->second;
  }

  bool mayHave(std::uint64_t id) const { return filter_.mayHave(id); }

 private:
  mutable base::Mutex mutex_;
  boost::unordered_map<std::string, Subscribers, std::hash<std::string>> topics_ GUARDED_BY(mutex_);
  std::unordered_map<const void*, std::atomic<std::size_t>> ending_ GUARDED_BY(mutex_);
  SubscriptionFilter filter_;
};

Table& table() {
  static base::NeverDestroyed<Table> instance;
  return instance.get();
}

void destroy(Subscription* subscription) {
  const bool wasEnding = subscription->isCountedAsEnding;
  std::atomic<std::size_t>& ending = subscription->ending;
  delete subscription;
  if (wasEnding) ending.fetch_sub(1);
}

class TopicConnection final : public Connection {
 public:
  TopicConnection(const std::string& topic, const EventMgr::Callback& callback, const void* library)
      : topic_(topic),
        subscription_(new Subscription(callback, table().endingOf(library)), &destroy) {
    table().add(topic_, subscription_);
  }
  ~TopicConnection() override {
    disconnect();
    subscription_->ending.fetch_add(1);
    subscription_->isCountedAsEnding = true;
  }

  void disconnect() override {
    if (!subscription_->active.exchange(false)) return;
    table().remove(topic_, subscription_);
  }

 private:
  const std::string topic_;
  const SubscriptionPtr subscription_;
};

}  // namespace

bool isLettingGo(const void* library) { return table().endingOf(library).load() != 0; }

BaseEvent::~BaseEvent() = default;
Connection::~Connection() = default;

ScopedConnection::ScopedConnection(AutoPtr<Connection> adopted) : connection_(adopted) {}
ScopedConnection::~ScopedConnection() = default;

EventMgr::EventMgr() = default;
EventMgr::~EventMgr() = default;

EventMgr& EventMgr::instance() {
  static EventMgr& manager = *new EventMgr;
  return manager;
}

AutoPtr<Connection> EventMgr::subscribeAny(const std::string& topic, const Callback& callback) {
  const void* library = base::libraryOf(__builtin_return_address(0));
  return makeAuto<Connection>(new TopicConnection(topic, callback, library));
}

void EventMgr::publish(const std::string& eventType, const exchange::IDType& id,
                       const BaseEvent& event) {
  if (!mayHaveSubscribers(id)) return;
  Topic topic(eventType.begin(), eventType.end());
  char number[std::numeric_limits<std::uint64_t>::digits10 + 1];
  topic.insert(topic.end(), number,
               std::to_chars(std::begin(number), std::end(number), id.value()).ptr);
  const Subscribers subscribers = table().subscribersOf({topic.data(), topic.size()});
  if (!subscribers) return;
  for (const SubscriptionPtr& subscription : *subscribers) {
    if (!subscription->active.load()) continue;
    try {
      subscription->callback(event);
    } catch (...) {
      // A failing subscriber stops neither the others nor the publisher.
    }
  }
}

bool EventMgr::mayHaveSubscribers(const exchange::IDType& id) const noexcept {
  return table().mayHave(id.value());
}

}  // namespace zlutil::eventmgr
