// What listeners are still to hear of changes that others have made. A thread of its own tells
// them, in the order of the changes, so that a listener that takes its time keeps neither the tree
// from what others change nor this process from changing the tree itself. Meanwhile several changes
// of a key become one event, and what was added and is gone again before anybody was told of it
// none: so there is never more to tell than the tree has entries.
//
// The thread begins with the first event. Where the process can have no further thread, whoever has
// brought the changes in tells of them. Any thread.
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
  // In the order of the changes; what nobody hears is not kept. The caller holds the tree's
  // writer(), and not its lock().
  void note(std::vector<ExternalEvent> events);

  // Has the noted events told. With no lock held; does not wait for the listeners, where there is a
  // thread.
  void tell() noexcept;

  // Ends the thread. Nothing is noted after that.
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
  // Where the additions and the changes stand among them.
  std::unordered_map<const Entry*, Events::iterator> added_, changed_;
  bool hasThread_ = false;
  bool isPublishing_ = false;  // somebody is, and takes what comes meanwhile
  bool isStopped_ = false;
};

}  // namespace zlutil::settings::host
