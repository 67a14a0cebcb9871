// The event manager's table of subscriptions. A topic maps to an immutable list of subscribers,
// replaced on every subscription and end of one; a delivery walks the list that was current when it
// began. A filter of counters in front of the table lets a publisher skip everything for an entry
// that nobody has subscribed to.
#include "service/event_mgr.h"

#include <array>
#include <atomic>
#include <memory>
#include <unordered_map>
#include <vector>

#include "base/mutex.h"

namespace zlutil::eventmgr {
namespace {

// How many subscriptions there may be about an identity. Identities share counters, so the answer
// may be too high, but never 0 for an identity that somebody has subscribed to.
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
  // Subscriptions to topics that do not end in a number: they count for every identity.
  std::atomic<std::uint32_t> unnumbered_{0};
};

struct Subscription {
  explicit Subscription(const EventMgr::Callback& function) : callback(function) {}
  const EventMgr::Callback callback;
  std::atomic<bool> active{true};
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

  Subscribers subscribersOf(const std::string& topic) const EXCLUDES(mutex_) {
    base::MutexLock lock(mutex_);
    const auto found = topics_.find(topic);
    return found == topics_.end() ? Subscribers() : found->second;
  }

  bool mayHave(std::uint64_t id) const { return filter_.mayHave(id); }

 private:
  mutable base::Mutex mutex_;
  std::unordered_map<std::string, Subscribers> topics_ GUARDED_BY(mutex_);
  SubscriptionFilter filter_;
};

Table& table() {
  static Table& instance = *new Table;
  return instance;
}

class TopicConnection final : public Connection {
 public:
  TopicConnection(std::string topic, SubscriptionPtr subscription)
      : topic_(std::move(topic)), subscription_(std::move(subscription)) {}
  ~TopicConnection() override { disconnect(); }

  void disconnect() override {
    if (!subscription_->active.exchange(false)) return;
    table().remove(topic_, subscription_);
  }

 private:
  const std::string topic_;
  const SubscriptionPtr subscription_;
};

}  // namespace

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
  auto subscription = std::make_shared<Subscription>(callback);
  auto connection = std::make_unique<TopicConnection>(topic, subscription);
  table().add(topic, subscription);
  return makeAuto<Connection>(connection.release());
}

void EventMgr::publish(const std::string& eventType, const exchange::IDType& id,
                       const BaseEvent& event) {
  if (!mayHaveSubscribers(id)) return;
  const Subscribers subscribers = table().subscribersOf(eventType + id.toString());
  if (!subscribers) return;
  for (const SubscriptionPtr& subscription : *subscribers) {
    if (!subscription->active.load()) continue;
    try {
      subscription->callback(event);
    } catch (...) {
      // One subscriber's failure is not the next one's, nor the publisher's.
    }
  }
}

bool EventMgr::mayHaveSubscribers(const exchange::IDType& id) const noexcept {
  return table().mayHave(id.value());
}

}  // namespace zlutil::eventmgr
