// The proxy through which the settings service runs validators written in Java. Any thread, also
// one that the JVM does not know.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <string>

#include "service/settings_fwd.h"

namespace nativesettings {

// Returns when the Java validator that the two strings name accepts the value. `node` holds the
// key. ValidationFailure with the validator's reason; FailedToRunJavaValidator when it throws,
// and as the kind of it that UnknownJavaValidator is when Java does not find its class;
// JVMNotReadyForProcessingJavaFunction when there is no Java to run it. No Java exception is left
// pending.
void javaValidator(const std::string& first, const std::string& second,
                   const boost::shared_ptr<const zlutil::settings::Settings>& node,
                   const std::string& keyName, const boost::any& value);

}  // namespace nativesettings
