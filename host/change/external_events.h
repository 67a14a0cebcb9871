// A queue of the events of changes by other processes. A thread of its own publishes them, in the
// order of the changes, so a slow listener delays neither external changes nor changes by this
// process. The queue merges events: several changes of a key become one event, and an entry that is
// added and removed before its addition was published causes none. So an entry has at most one
// addition, one change and one removal in the queue.
//
// The thread starts with the first event. If the process can start no thread, the thread that has
// applied the changes publishes their events. Any thread.
#pragma once

#include <condition_variable>
#include <list>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "host/change/publication.h"

namespace zlutil::settings::host {

struct ExternalEvent {
  enum Kind { kAdded, kRemoved, kChanged };
  Kind kind;
  NodePtr parent;  // null for a change
  EntryPtr entry;
  Audience audience;
};

class ExternalEvents : public std::enable_shared_from_this<ExternalEvents> {
 public:
  // Queues the events, in the order of the changes; drops those without an audience. The caller
  // holds the tree's writer(), and not its lock().
  void note(std::vector<ExternalEvent> events);

  // Starts publishing the queued events. Does not wait for the listeners, unless the process can
  // start no thread. The caller holds no lock.
  void publish() noexcept;

  // Ends the thread. The caller queues no events afterwards.
  void stop();

 private:
  using Events = std::list<ExternalEvent>;

  void add(ExternalEvent event, Events& dropped);
  bool takeBack(const Entry& entry, Audience& audience, Events& dropped);
  bool hasThread();
  void runThread();
  void publishAll(std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;
  std::condition_variable wake_;
  // The rest is guarded by mutex_.
  Events events_;
  // The queued additions and changes, by entry.
  std::unordered_map<const Entry*, Events::iterator> added_, changed_;
  bool hasThread_ = false;
  bool isPublishing_ = false;  // a thread is publishing, and takes events that come meanwhile
  bool isStopped_ = false;
};

}  // namespace zlutil::settings::host
