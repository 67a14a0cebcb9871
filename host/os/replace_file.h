// Replacing a file's content in one step. Any thread; of two that replace one file at the same time
// the last one wins whole.
#pragma once

#include <string>
#include <string_view>

namespace zlutil::settings::host {

// Makes `content` the content of the file: written to a new file beside it, flushed to the disk and
// renamed. A symbolic link is followed, and an existing file's mode is kept. `fileName` is bytes
// for the system. Throws StoreFailure, and the old content then stands.
void replaceFile(const std::string& fileName, std::string_view content);

}  // namespace zlutil::settings::host
