// Replaces a file's content in one step. Any thread; if two replace one file at the same time, the
// content is that of the last one.
#pragma once

#include <string>
#include <string_view>

namespace zlutil::settings::host {

// Writes `content` to a new file beside the old one, flushes it to the disk and renames it. Follows
// a symbolic link, and keeps the mode of an existing file. `fileName` is bytes for the system.
// Throws StoreFailure if anything fails; the old content then remains.
void replaceFile(const std::string& fileName, std::string_view content);

}  // namespace zlutil::settings::host
