// Follows the keys below a prefix: reads all of them, and then every change in the order of the
// revisions. A thread does that, and never gives up: it goes to the next member when one fails or
// is silent, and reads everything again when changes are missing (after a compaction, in another
// cluster, in one that was restored).
#pragma once

#include <memory>
#include <vector>

#include "host/shared_store/cluster_client.h"

namespace zlutil::settings::host {

// What a ClusterWatch calls, on its thread, with no lock held. A call may destroy the watch.
class ClusterListener {
 public:
  virtual ~ClusterListener() = default;
  // All keys there are, at the revision of the header.
  virtual void onContent(const AnswerHeader& header, std::vector<KeyValue> items) = 0;
  // Changes up to the revision of the header; those of one transaction come together. There may be
  // none.
  virtual void onEvents(const AnswerHeader& header, std::vector<WatchEvent> events) = 0;
  // No member gives what the watch needs. Called once until onAnswers() is.
  virtual void onAway(const std::string& reason) = 0;
  virtual void onAnswers() = 0;
  // Called at least every two seconds while the cluster answers. Returns whether everything must be
  // read again.
  virtual bool onIdle() = 0;
};

class ClusterWatch {
 public:
  explicit ClusterWatch(const ClusterOptions& options);
  // Waits for a call of the listener that is running, unless that has called this; none begins
  // afterwards.
  ~ClusterWatch();
  ClusterWatch(const ClusterWatch&) = delete;
  ClusterWatch& operator=(const ClusterWatch&) = delete;

  // Reads all keys. Throws ClusterError. Called before start() only.
  std::vector<KeyValue> load(AnswerHeader& header, std::chrono::milliseconds longest);

  // Starts the thread, which first reads everything if load() has not been successful. Returns
  // false if there can be no thread. The listener must outlive the watch.
  bool start(ClusterListener& listener);

 private:
  struct Core;
  const std::shared_ptr<Core> core_;  // with the thread
};

}  // namespace zlutil::settings::host
