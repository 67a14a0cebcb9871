#include "service/failures.h"

#include <boost/variant/get.hpp>

BaseMsgID::BaseMsgID(const char* name, const char* text, std::vector<MsgArgument> arguments)
    : name_(name), text_(text), arguments_(std::move(arguments)) {}

std::string BaseMsgID::format() const {
  std::string message;
  for (const char* at = text_; *at; ++at) {
    if (*at != '%' || at[1] < '1' || at[1] > '9') {
      message += *at;
      continue;
    }
    const std::size_t position = *++at - '1';
    if (position >= arguments_.size()) continue;
    if (const std::string* narrow = boost::get<std::string>(&arguments_[position])) {
      // A program may give as a name whatever it has.
      message +=
          base::isNarrow(*narrow) ? *narrow : base::narrowFromUstring(base::to_ustring(*narrow));
    } else {
      message += base::narrowFromUstring(boost::get<base::ustring>(arguments_[position]));
    }
  }
  return message;
}

IUserException::~IUserException() = default;
IMsgIDException::~IMsgIDException() = default;
