// The rows of the user store's tables as changes. The bytes of a database may be damaged, so every
// word and path in them is checked. Any thread; a statement belongs to one.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/tree/store.h"
#include "host/user_store/sqlite_value.h"

namespace zlutil::settings::host {

// The words of the tables.
inline constexpr std::string_view kNodeRow = "node", kKeyRow = "key", kTypeRow = "type",
                                  kJavaValidator = "java", kScriptValidator = "script";

// Reads the columns from `column` on: entry, type, validator, first, second. Returns a DefineEntry
// or a FixKind, or nothing if a word in them is unknown.
std::optional<Change> definitionIn(const SqliteStatement& row, const std::string& path, int column);

// Reads the columns from `column` on: type, value. Returns an empty any if they hold no value.
boost::any valueIn(const SqliteStatement& row, int column);

// Returns whether an entry can have the path.
bool isPath(std::string_view path);

}  // namespace zlutil::settings::host
