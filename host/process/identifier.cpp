#include "service/identifier.h"

namespace zlutil::settings {
namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool isIdentifierName(const char* name) {
  if (!name || !isLetter(*name)) return false;
  int length = 1;
  for (; name[length]; ++length) {
    if (length == kMaxNameLength) return false;
    if (!isLetter(name[length]) && !isDigit(name[length]) && name[length] != '_') return false;
  }
  return true;
}

}  // namespace zlutil::settings
