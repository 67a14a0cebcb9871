// Verbs for tests that use the settings service through its contract.
#pragma once

#include <gtest/gtest.h>

#include <boost/any.hpp>
#include <boost/optional/optional_io.hpp>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "service/events.h"
#include "service/failures.h"
#include "service/settings.h"
#include "service/z_settings.h"

namespace test {

using SettingsPtr = boost::shared_ptr<zlutil::settings::Settings>;
using zlutil::settings::Failure;
using zlutil::settings::Settings;
using zlutil::settings::SettingsProblems;
using zlutil::settings::SettingsValues;
using zlutil::settings::ValidatorChoice;
using Names = std::vector<std::string>;

inline SettingsPtr addEntry(const SettingsPtr& parent, const std::string& name, bool isKey,
                            const ValidatorChoice& validator = ValidatorChoice()) {
  const auto entry = zlutil::settings::ZSettings::createSettingsNode(name, isKey, true, validator);
  entry->attachTo(parent);
  return entry;
}
inline SettingsPtr addNode(const SettingsPtr& parent, const std::string& name,
                           const ValidatorChoice& validator = ValidatorChoice()) {
  return addEntry(parent, name, false, validator);
}
inline SettingsPtr addKey(const SettingsPtr& parent, const std::string& name,
                          const ValidatorChoice& validator = ValidatorChoice()) {
  return addEntry(parent, name, true, validator);
}

// Returns the int of a key at a level; -1 for none.
inline int intAt(const SettingsPtr& node, const std::string& key, const std::string& level = "") {
  const boost::any value = node->getValue(key, level);
  return value.empty() ? -1 : boost::any_cast<int>(value);
}

inline Names namesOf(const std::vector<SettingsPtr>& entries) {
  Names names;
  for (const SettingsPtr& entry : entries) names.push_back(entry->getName());
  return names;
}

inline SettingsProblems setAll(const SettingsPtr& root, const SettingsValues& values,
                               const std::string& level) {
  return root->setMultiple(boost::make_iterator_range(values.begin(), values.end()), level, 0);
}

// Returns the message of the failure of that tag which `action` throws; fails the test if it throws
// none.
template <class Tag, class Action>
std::string messageOf(const Action& action) {
  try {
    action();
  } catch (const Failure<Tag>& failure) {
    return failure.GetMessageTxt();
  } catch (const std::exception& other) {
    ADD_FAILURE() << "expected " << Tag::kName << ", got: " << other.what();
    return {};
  }
  ADD_FAILURE() << "expected " << Tag::kName << ", got no failure";
  return {};
}

// Notes every event about an entry and below it, as texts such as "changed editor.size". Any thread
// may publish them, and ask for them.
class Listener {
 public:
  explicit Listener(const SettingsPtr& entry)
      : changed_(entry->addListener<zlutil::settings::SettingsValueChangeEvent>(
            [this](const auto& event) { hear("changed " + event.getObj()->getName()); })),
        added_(
            entry->addListener<zlutil::settings::SettingsAddNodeEvent>([this](const auto& event) {
              hear("added " + event.getObj()->getName() + " to " + event.getParentObj()->getName());
            })),
        removed_(entry->addListener<zlutil::settings::SettingsRemoveNodeEvent>(
            [this](const auto& event) {
              hear("removed " + event.getObj()->getName() + " from " +
                   event.getParentObj()->getName());
            })) {}

  Names heard() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return heard_;
  }

  // Waits, at most half a minute, until there are so many events. Returns all that there are.
  Names waitFor(std::size_t events) const {
    std::unique_lock<std::mutex> lock(mutex_);
    hearing_.wait_for(lock, std::chrono::seconds(30), [&] { return heard_.size() >= events; });
    return heard_;
  }

  void clear() {
    const std::lock_guard<std::mutex> lock(mutex_);
    heard_.clear();
  }

 private:
  void hear(const std::string& event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    heard_.push_back(event);
    hearing_.notify_all();
  }

  mutable std::mutex mutex_;
  mutable std::condition_variable hearing_;
  Names heard_;  // guarded by the mutex
  const zlutil::eventmgr::ScopedConnection changed_;
  const zlutil::eventmgr::ScopedConnection added_;
  const zlutil::eventmgr::ScopedConnection removed_;
};

}  // namespace test
