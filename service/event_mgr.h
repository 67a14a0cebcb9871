// The event manager: subscriptions to topics, and delivery of events to them.
//
// A topic is a text, the event type's identifier followed by an entry's identity. publish() calls
// the subscribers of the topic on the calling thread, from a snapshot taken when it starts. No lock
// is held during a call, so a callback may subscribe, end any subscription (its own too), change
// settings and publish. A callback that throws does not keep the others from being called. After a
// subscription has ended, no new call of its callback begins; a call that another thread has
// already begun may still be running. All functions may be called from any thread.
#pragma once

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <string>
#include <typeinfo>

#include "base/export.h"
#include "service/auto_ptr.h"
#include "service/id_type.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace eventmgr {

// An event. A derived class has a static EventType(), the text that its topics begin with, and
// isKindOf(EventType()) is true for it.
class SETTINGS_HOST_API BaseEvent {
 public:
  virtual ~BaseEvent();
  virtual bool isKindOf(const std::string& eventType) const = 0;

  // Returns the entry that the event is about; never null.
  virtual boost::shared_ptr<settings::Settings> getObj() const = 0;

  // Returns the event as an `Event`. Throws std::bad_cast if it is not of that type.
  template <class Event>
  static const Event& safeDownCast(const BaseEvent& event) {
    if (!event.isKindOf(Event::EventType())) throw std::bad_cast();
    return static_cast<const Event&>(event);
  }
};

// One subscription; destroying it or disconnect() ends it. Owned by the subscriber.
class SETTINGS_HOST_API Connection {
 public:
  virtual ~Connection();
  virtual void disconnect() = 0;
};

// Owns a connection, or none, and ends the subscription when it is destroyed.
class SETTINGS_HOST_API ScopedConnection {
 public:
  explicit ScopedConnection(AutoPtr<Connection> adopted);
  ~ScopedConnection();
  ScopedConnection(const ScopedConnection&) = delete;
  ScopedConnection& operator=(const ScopedConnection&) = delete;

  // Returns whether there was no subscription to own.
  bool isEmpty() const { return connection_.get() == nullptr; }

 private:
  AutoPtr<Connection> connection_;
};

class SETTINGS_HOST_API EventMgr {
 public:
  using Callback = boost::function1<void, const BaseEvent&>;

  static EventMgr& instance();

  // Subscribes `callback` to one topic. The event manager owns the callback until the connection
  // ends.
  template <class Event>
  AutoPtr<Connection> subscribe(const std::string& topic,
                                const boost::function1<void, const Event&>& callback) {
    return subscribeAny(topic, [callback](const BaseEvent& event) {
      callback(BaseEvent::safeDownCast<Event>(event));
    });
  }

  // Publishes `event` to the subscribers of `eventType` on the entry `id`.
  void publish(const std::string& eventType, const exchange::IDType& id, const BaseEvent& event);

  // Returns false only if nobody has subscribed to any event about that entry. Costs next to
  // nothing, so that a publisher need not make an event that nobody receives. True does not promise
  // a subscriber.
  bool mayHaveSubscribers(const exchange::IDType& id) const noexcept;

  EventMgr(const EventMgr&) = delete;
  EventMgr& operator=(const EventMgr&) = delete;

 private:
  EventMgr();
  ~EventMgr();
  AutoPtr<Connection> subscribeAny(const std::string& topic, const Callback& callback);
};

}  // namespace eventmgr
}  // namespace zlutil
