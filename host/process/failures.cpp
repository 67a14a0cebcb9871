#include "service/failures.h"

#include <boost/variant/get.hpp>

BaseMsgID::BaseMsgID(const char* name, const char* text, std::vector<MsgArgument> arguments)
    : name_(name), text_(text), arguments_(std::move(arguments)) {}

std::string BaseMsgID::format() const {
  std::string message;
  for (const char* next = text_; *next; ++next) {
    if (*next != '%' || next[1] < '1' || next[1] > '9') {
      message += *next;
      continue;
    }
    const std::size_t position = *++next - '1';
    if (position >= arguments_.size()) continue;
    if (const std::string* narrow = boost::get<std::string>(&arguments_[position])) {
      // A name that a program passes may be any bytes.
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
