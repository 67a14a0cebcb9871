// Notes what a watch brings. Fails at the first events if it is told to.
#pragma once

#include <atomic>
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
    for (const KeyValue& item : items) note(item);
    revision = header.revision;
    ++loads;
  }
  void onEvents(const AnswerHeader& header, std::vector<WatchEvent> events) override {
    if (fails_ && !events.empty()) throw std::runtime_error("no memory");
    for (const WatchEvent& event : events) note(event.item);
    revision = header.revision;
  }
  void onAway(const std::string&) override {}
  void onAnswers() override {}
  bool onIdle() override { return false; }

  std::string valueOf(const std::string& key) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return values_[key];
  }

  std::atomic<int> loads{0};
  std::atomic<std::int64_t> revision{0};

 private:
  void note(const KeyValue& item) {
    const std::lock_guard<std::mutex> lock(mutex_);
    values_[item.key] = item.value;
  }

  const bool fails_;
  std::mutex mutex_;
  std::map<std::string, std::string> values_;
};

}  // namespace test
