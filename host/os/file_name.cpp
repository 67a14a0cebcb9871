#include "host/os/file_name.h"

#include <system_error>

namespace zlutil::settings::host {

std::optional<std::string> fileNameFrom(const base::ustring& path) {
  if (path.empty() || path.find(u'\0') != base::ustring::npos) return std::nullopt;
  return base::utf8FromNarrow(base::narrowFromUstring(path));
}

std::string shownFileName(const std::string& fileName) {
  return base::narrowFromUstring(base::to_ustring(fileName));
}

std::string systemText(int error) { return std::generic_category().message(error); }

}  // namespace zlutil::settings::host
