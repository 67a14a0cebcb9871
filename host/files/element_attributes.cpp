#include "host/files/element_attributes.h"

#include <algorithm>
#include <cstring>

#include "base/text.h"
#include "service/identifier.h"

namespace zlutil::settings::host {
namespace {

constexpr std::size_t kShownLength = 60;

}  // namespace

std::string quoted(std::string_view text) {
  if (text.size() <= kShownLength) return '"' + base::withControlsEscaped(text) + '"';
  std::size_t end = kShownLength;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return '"' + base::withControlsEscaped(text.substr(0, end)) + "...\"";
}

std::string narrow(std::string_view utf8) { return *base::narrowFromUtf8(utf8); }

void fail(const std::string& problem) { throw FormatError(problem); }

Attributes::Attributes(const char* element, const char* const* list,
                       std::initializer_list<const char*> known)
    : element_(element), list_(list) {
  for (const char* const* name = list; *name; name += 2, ++count_) {
    const bool isKnown = std::any_of(known.begin(), known.end(), [name](const char* candidate) {
      return std::strcmp(candidate, *name) == 0;
    });
    if (!isKnown) fail("unknown attribute " + quoted(*name) + " of <" + element + ">");
  }
}

const char* Attributes::find(const char* name) const {
  for (const char* const* attribute = list_; *attribute; attribute += 2) {
    if (std::strcmp(*attribute, name) == 0) return attribute[1];
  }
  return nullptr;
}

std::string Attributes::textOf(const char* name) const {
  const char* const value = find(name);
  return value ? value : "";
}

std::string Attributes::pathOf(const char* name) const {
  const std::string path = textOf(name);
  for (std::size_t begin = 0; find(name) && begin <= path.size();) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    if (!isIdentifierName(path.substr(begin, end - begin).c_str())) {
      fail(quoted(path) + " is not a path: expected names joined with \".\"");
    }
    begin = end + 1;
  }
  return path;
}

const char* Attributes::require(const char* name) const {
  const char* const value = find(name);
  if (!value) fail(std::string("<") + element_ + "> needs the attribute \"" + name + "\"");
  return value;
}

}  // namespace zlutil::settings::host
