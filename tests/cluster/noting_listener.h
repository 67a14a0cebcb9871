// Notes what a watch brings. Fails at the first events if it is told to.
#pragma once

#include <map>
#include <mutex>
#include <stdexcept>

#include "host/shared_store/cluster_watch.h"

namespace test {

class NotingListener : public zlutil::settings::host::ClusterListener {
 public:
  using AnswerHeader = zlutil::settings::host::AnswerHeader;
  using KeyValue = zlutil::settings::host::KeyValue;
  using WatchEvent = zlutil::settings::host::WatchEvent;

  explicit NotingListener(bool fails = false) : fails_(fails) {}

  void onContent(const AnswerHeader& header, std::vector<KeyValue> items) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const KeyValue& item : items) values_[item.key] = item.value;
    revision_ = header.revision;
    ++loads_;
  }
  void onEvents(const AnswerHeader& header, std::vector<WatchEvent> events) override {
    if (fails_ && !events.empty()) throw std::runtime_error("no memory");
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const WatchEvent& event : events) values_[event.item.key] = event.item.value;
    revision_ = header.revision;
  }
  void onAway(const std::string&) override {}
  void onAnswers() override {}
  bool onIdle() override { return false; }

  std::string valueOf(const std::string& key) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return values_[key];
  }
  int loads() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return loads_;
  }
  std::int64_t revision() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return revision_;
  }

 private:
  const bool fails_;
  std::mutex mutex_;
  // Guarded by the mutex.
  std::map<std::string, std::string> values_;
  int loads_ = 0;
  std::int64_t revision_ = 0;
};

}  // namespace test
