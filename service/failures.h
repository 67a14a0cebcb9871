// The failures of the settings service. Each is `Exception<Tag, std::exception, void>` for one tag
// of KORVEN::settings::core: a type of its own to catch, which is also a std::exception, an
// IMsgIDException and an IUserException. The tag has the message text, in which %1, %2, ... stand
// for the arguments given at construction. Messages are narrow text. Failures are values: they may
// be copied, and read on any thread.
#pragma once

#include <boost/variant/variant.hpp>
#include <exception>
#include <string>
#include <vector>

#include "base/export.h"
#include "base/text.h"

namespace KORVEN {
namespace settings {
namespace core {

// The one table of message texts.
#define SETTINGS_FAILURE(Tag, message)            \
  struct SETTINGS_HOST_API Tag {                  \
    static constexpr const char* kName = #Tag;    \
    static constexpr const char* kText = message; \
  }

// Arguments: parent's name, child's name.
SETTINGS_FAILURE(NoSuchKey, "\"%1\" has no key \"%2\".");
SETTINGS_FAILURE(NoSuchNode, "\"%1\" has no entry \"%2\".");
SETTINGS_FAILURE(NotAKeyName, "\"%2\" in \"%1\" is not the name of a key.");
SETTINGS_FAILURE(NotANodeName, "\"%2\" in \"%1\" is not the name of a node.");
// Arguments: parent's name, child's name, reason.
SETTINGS_FAILURE(ErrorAddingChildNodeOrKey, "Cannot add \"%2\" to \"%1\": %3.");
SETTINGS_FAILURE(CannotMergeWithNodeContainsChildren,
                 "\"%1\" already has a node \"%2\" with children.");
// Argument: level name.
SETTINGS_FAILURE(UnSupportedLevel, "There is no level \"%1\".");
// Arguments: key path, level name.
SETTINGS_FAILURE(ValueNotDefinedForGivenLevel, "\"%1\" has no value at the level \"%2\".");
// Arguments: entry path, level name, reason.
SETTINGS_FAILURE(CantModifyValuesOnReadOnlyLevel, "Cannot change \"%1\" at the level \"%2\": %3.");
// Argument: key path.
SETTINGS_FAILURE(DefaultValidationFailedOnVoidType, "An empty value cannot be stored in \"%1\".");
// Arguments: file, line, column, the problem and what was expected.
SETTINGS_FAILURE(SaxParseException, "%1:%2:%3: %4");
// Arguments: file, message of the parser.
SETTINGS_FAILURE(SaxUnknownException, "%1: %2");
// Arguments: file, message of the system.
SETTINGS_FAILURE(FileLoadingError, "%1: %2");
// Argument: the reason.
SETTINGS_FAILURE(ValidationFailure, "%1");
SETTINGS_FAILURE(CValidationError, "%1");
// Arguments: first and second validator string, Java exception text.
SETTINGS_FAILURE(FailedToRunJavaValidator, "The Java validator (\"%1\", \"%2\") failed: %3");
// No argument.
SETTINGS_FAILURE(JVMNotReadyForProcessingJavaFunction, "The Java machine is not ready.");
// Arguments: store (a path), message of the system.
SETTINGS_FAILURE(StoreFailure, "Cannot write %1: %2");
SETTINGS_FAILURE(UnreadableStore, "Cannot read %1: %2");

#undef SETTINGS_FAILURE

}  // namespace core
}  // namespace settings
}  // namespace KORVEN

// One message argument: narrow text, or 16-bit text that becomes narrow in the message.
using MsgArgument = boost::variant<std::string, base::ustring>;

// A message text with its arguments.
class SETTINGS_HOST_API BaseMsgID {
 public:
  BaseMsgID(const char* name, const char* text, std::vector<MsgArgument> arguments);

  // Returns the tag's name, such as "NoSuchKey".
  const char* name() const { return name_; }
  const std::vector<MsgArgument>& arguments() const { return arguments_; }

  // Returns the text with %1 ... %9 replaced by the arguments; by nothing where an argument is
  // missing.
  std::string format() const;

 private:
  const char* name_;  // static text
  const char* text_;  // static text
  std::vector<MsgArgument> arguments_;
};

// A failure with a message for the user.
class SETTINGS_HOST_API IUserException {
 public:
  virtual ~IUserException();
  virtual std::string GetMessageTxt() const = 0;
};

// A failure whose message comes from a table.
class SETTINGS_HOST_API IMsgIDException {
 public:
  virtual ~IMsgIDException();
  virtual std::string GetMessageTxt() const = 0;
  virtual const BaseMsgID& GetMsgID() const = 0;
};

template <class Tag, class Base, class Unused>
class SETTINGS_HOST_API Exception : public Base, public IMsgIDException, public IUserException {
 public:
  template <class... Arguments>
  explicit Exception(const Arguments&... arguments)
      : id_(Tag::kName, Tag::kText, {MsgArgument(arguments)...}), message_(id_.format()) {}

  std::string GetMessageTxt() const override { return message_; }
  const BaseMsgID& GetMsgID() const override { return id_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  BaseMsgID id_;
  std::string message_;
};

namespace zlutil {
namespace settings {

// A short name of the failure of one tag.
template <class Tag>
using Failure = Exception<Tag, std::exception, void>;

}  // namespace settings
}  // namespace zlutil
