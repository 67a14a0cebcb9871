// The three events of a settings tree. Each is published on the topics of the entry concerned and
// of all its ancestors, so a listener on a node hears of everything below it. The removal of a node
// is one event, published on the topics of everything below the node as well: who listens there
// learns that the entry is gone. A change by this process is published before the call that made it
// returns. One by another process is published on a thread of the service, some time after it can
// be read; several changes of a key that wait for their turn become one event. An event is valid
// during the callback that receives it; the entries that it gives may be kept.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <utility>

#include "base/export.h"
#include "service/event_mgr.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// What the three have in common.
class SETTINGS_HOST_API SettingsEvent : public eventmgr::BaseEvent {
 public:
  // The entry.
  boost::shared_ptr<Settings> getObj() const override { return entry_; }

 protected:
  explicit SettingsEvent(boost::shared_ptr<Settings> entry) : entry_(std::move(entry)) {}

 private:
  const boost::shared_ptr<Settings> entry_;
};

// A key's value changed, at any level: it was set or unset.
class SETTINGS_HOST_API SettingsValueChangeEvent : public SettingsEvent {
 public:
  explicit SettingsValueChangeEvent(boost::shared_ptr<Settings> key)
      : SettingsEvent(std::move(key)) {}

  static const std::string& EventType();
  bool isKindOf(const std::string& eventType) const override;
};

// An entry came into the tree or left it. One event is published for a subtree, about its top.
class SETTINGS_HOST_API SettingsStructureEvent : public SettingsEvent {
 public:
  // The node that it was added to or removed from.
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
