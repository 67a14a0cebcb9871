// Delivery of one event to one Java listener. Called by the event manager on the publishing thread;
// nothing of Java's failures reaches it.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>

namespace zlutil {
namespace settings {
class SettingsAddNodeEvent;
class SettingsRemoveNodeEvent;
class SettingsValueChangeEvent;
}  // namespace settings
}  // namespace zlutil

namespace nativesettings {

// Arguments: the listener, the event, the source given at registration. A value change of a key
// that has no parent any more is not delivered.
void onSettingChanged(const boost::shared_ptr<jobject>& listener,
                      const zlutil::settings::SettingsValueChangeEvent& event,
                      const boost::shared_ptr<jobject>& source);
void onSettingAdded(const boost::shared_ptr<jobject>& listener,
                    const zlutil::settings::SettingsAddNodeEvent& event,
                    const boost::shared_ptr<jobject>& source);
void onSettingRemoved(const boost::shared_ptr<jobject>& listener,
                      const zlutil::settings::SettingsRemoveNodeEvent& event,
                      const boost::shared_ptr<jobject>& source);

}  // namespace nativesettings
