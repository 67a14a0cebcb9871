// Delivery of one event to one Java listener. The event manager calls these on the publishing
// thread. They let no Java exception out.
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

// Each passes the event to the listener, with the source given at registration. Path and name are
// those that the entry has now. A change of a key that has no parent any more is not delivered.
void onSettingChanged(const boost::shared_ptr<jobject>& listener,
                      const zlutil::settings::SettingsValueChangeEvent& event,
                      const boost::shared_ptr<jobject>& source);
void onSettingAdded(const boost::shared_ptr<jobject>& listener,
                    const zlutil::settings::SettingsAddNodeEvent& event,
                    const boost::shared_ptr<jobject>& source);
void onSettingRemoved(const boost::shared_ptr<jobject>& listener,
                      const zlutil::settings::SettingsRemoveNodeEvent& event,
                      const boost::shared_ptr<jobject>& source);

// Releases the listener class and forgets the identifiers of its methods; a step of unloading.
void forgetDeliveryIdentifiers();

}  // namespace nativesettings
