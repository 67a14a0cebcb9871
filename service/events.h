// The three events of a settings tree. Each is published on the topics of its entry and of all the
// entry's ancestors, so a listener on a node receives the events of everything below it. The
// removal of a node is one event, published on the topics of everything below the node as well. A
// change by this process is published before the call that made it returns. An external change is
// published on a thread of the service, some time after it can be read; several changes of a key
// that wait for their delivery become one event. An event is valid during the callback that
// receives it; the entries that it gives may be kept.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <utility>

#include "base/export.h"
#include "service/event_mgr.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// The common base of the three events.
class SETTINGS_HOST_API SettingsEvent : public eventmgr::BaseEvent {
 public:
  // Returns the entry.
  boost::shared_ptr<Settings> getObj() const override { return entry_; }

 protected:
  explicit SettingsEvent(boost::shared_ptr<Settings> entry) : entry_(std::move(entry)) {}

 private:
  const boost::shared_ptr<Settings> entry_;
};

// A key's value was set or unset at some level.
class SETTINGS_HOST_API SettingsValueChangeEvent : public SettingsEvent {
 public:
  explicit SettingsValueChangeEvent(boost::shared_ptr<Settings> key)
      : SettingsEvent(std::move(key)) {}

  static const std::string& EventType();
  bool isKindOf(const std::string& eventType) const override;
};

// An entry was added or removed. A subtree has one event, about its top.
class SETTINGS_HOST_API SettingsStructureEvent : public SettingsEvent {
 public:
  // Returns the node that the entry was added to or removed from.
  const boost::shared_ptr<Settings>& getParentObj() const { return parent_; }

 protected:
  SettingsStructureEvent(boost::shared_ptr<Settings> parent, boost::shared_ptr<Settings> entry)
      : SettingsEvent(std::move(entry)), parent_(std::move(parent)) {}

 private:
  const boost::shared_ptr<Settings> parent_;
};

// A node or key was added.
class SETTINGS_HOST_API SettingsAddNodeEvent : public SettingsStructureEvent {
 public:
  SettingsAddNodeEvent(boost::shared_ptr<Settings> parent, boost::shared_ptr<Settings> entry)
      : SettingsStructureEvent(std::move(parent), std::move(entry)) {}

  static const std::string& EventType();
  bool isKindOf(const std::string& eventType) const override;
};

// A node or key was removed; the entry no longer has a parent.
class SETTINGS_HOST_API SettingsRemoveNodeEvent : public SettingsStructureEvent {
 public:
  SettingsRemoveNodeEvent(boost::shared_ptr<Settings> parent, boost::shared_ptr<Settings> entry)
      : SettingsStructureEvent(std::move(parent), std::move(entry)) {}

  static const std::string& EventType();
  bool isKindOf(const std::string& eventType) const override;
};

}  // namespace settings
}  // namespace zlutil
