#include "host/change/external_events.h"

#include <algorithm>
#include <cstdio>
#include <system_error>
#include <thread>

#include "host/os/signals_blocked.h"

namespace zlutil::settings::host {
namespace {

void publishOne(const ExternalEvent& event) noexcept {
  try {
    switch (event.kind) {
      case ExternalEvent::kAdded:
        return publishAdded(event.parent, event.entry, event.audience);
      case ExternalEvent::kRemoved:
        return publishRemoved(event.parent, event.entry, event.audience);
      case ExternalEvent::kChanged:
        return publishChanged(event.entry, event.audience);
    }
  } catch (const std::exception& failure) {
    // The listeners' own exceptions have been dropped; this one says that there was no memory.
    std::fprintf(stderr, "an event of a change by another process is lost: %s\n", failure.what());
  }
}

// Calls `visit` for the entry and all below it.
template <class Visit>
void forAll(const Entry& entry, const Visit& visit) {
  visit(entry);
  if (entry.isKey()) return;
  for (const EntryPtr& child : static_cast<const Node&>(entry).childrenByName()) {
    forAll(*child, visit);
  }
}

}  // namespace

Tree::~Tree() {
  if (externalEvents_) externalEvents_->stop();
}

void Tree::connect(const boost::weak_ptr<Entry>& root) {
  root_ = root;
  externalEvents_ = std::make_shared<ExternalEvents>();
}

void ExternalEvents::note(std::vector<ExternalEvent> events) {
  Events dropped;  // destroyed without the lock
  const std::lock_guard<std::mutex> lock(mutex_);
  for (ExternalEvent& event : events) {
    if (!event.audience.empty()) add(std::move(event), dropped);
  }
}

void ExternalEvents::add(ExternalEvent event, Events& dropped) {
  const Entry* const entry = event.entry.get();
  if (event.kind == ExternalEvent::kChanged) {
    const auto earlier = changed_.find(entry);
    if (earlier != changed_.end()) {
      earlier->second->audience = std::move(event.audience);
      return;
    }
  } else if (event.kind == ExternalEvent::kRemoved && added_.count(entry) != 0 &&
             !takeBack(*entry, event.audience, dropped)) {
    return;
  }
  const auto at = events_.insert(events_.end(), std::move(event));
  if (at->kind == ExternalEvent::kAdded) added_.emplace(entry, at);
  if (at->kind == ExternalEvent::kChanged) changed_.emplace(entry, at);
}

// Drops the queued events of the entry and all below it. Reduces the audience of its removal to the
// subscriptions on these entries themselves, and returns false if there are none.
bool ExternalEvents::takeBack(const Entry& entry, Audience& audience, Events& dropped) {
  Audience own;
  forAll(entry, [&](const Entry& at) {
    for (auto* const places : {&added_, &changed_}) {
      const auto found = places->find(&at);
      if (found == places->end()) continue;
      dropped.splice(dropped.end(), events_, found->second);
      places->erase(found);
    }
    if (std::find(audience.begin(), audience.end(), at.getID()) != audience.end()) {
      own.push_back(at.getID());
    }
  });
  audience = std::move(own);
  return !audience.empty();
}

void ExternalEvents::publish() noexcept {
  std::unique_lock<std::mutex> lock(mutex_);
  if (events_.empty() || isPublishing_) return;
  if (hasThread()) {
    wake_.notify_one();
  } else {
    publishAll(lock);
  }
}

// Starts the thread unless it runs. Returns false if that is not possible.
bool ExternalEvents::hasThread() {
  if (hasThread_) return true;
  try {
    const SignalsBlocked blocked;
    std::thread([self = shared_from_this()] { self->runThread(); }).detach();
    hasThread_ = true;
  } catch (const std::system_error&) {
    // The next event tries again.
  } catch (const std::bad_alloc&) {
  }
  return hasThread_;
}

void ExternalEvents::runThread() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    wake_.wait(lock, [this] { return isStopped_ || !events_.empty(); });
    if (isStopped_) return;
    publishAll(lock);
  }
}

void ExternalEvents::publishAll(std::unique_lock<std::mutex>& lock) {
  isPublishing_ = true;
  while (!events_.empty()) {
    Events next;
    next.splice(next.end(), events_, events_.begin());
    if (next.front().kind == ExternalEvent::kAdded) added_.erase(next.front().entry.get());
    if (next.front().kind == ExternalEvent::kChanged) changed_.erase(next.front().entry.get());
    lock.unlock();
    publishOne(next.front());
    next.clear();
    lock.lock();
  }
  isPublishing_ = false;
}

void ExternalEvents::stop() {
  const std::lock_guard<std::mutex> lock(mutex_);
  isStopped_ = true;
  wake_.notify_one();
}

}  // namespace zlutil::settings::host
