// The proxy through which the settings service runs Java validators. Any thread, also one that the
// JVM does not know.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <string>

#include "service/settings_fwd.h"

namespace nativesettings {

// Returns if the Java validator that the two strings name accepts the value. `node` holds the key.
// Throws ValidationFailure with the validator's reason; FailedToRunJavaValidator if it throws, and
// the derived UnknownJavaValidator if Java does not find its class;
// JVMNotReadyForProcessingJavaFunction if the JVM is not running. Leaves no Java exception pending.
void javaValidator(const std::string& first, const std::string& second,
                   const boost::shared_ptr<const zlutil::settings::Settings>& node,
                   const std::string& keyName, const boost::any& value);

}  // namespace nativesettings
