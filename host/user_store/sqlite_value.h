// The format of texts and values in a column of the user store: exact, and readable for people.
//
//   text      TEXT in standard UTF-8. A text that standard UTF-8 or the database's shell cannot
//             show (a lone surrogate, U+0000) is a BLOB with the bytes of the narrow text
//   scalar    TEXT: a string as text, everything else as values/exact_text.h writes it
//   vector    TEXT: a JSON array, as values/value_json.h writes it
//
// Any thread; a statement belongs to one.
#pragma once

#include <boost/any.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "host/user_store/sqlite_database.h"

namespace zlutil::settings::host {

struct ColumnValue {
  bool isBlob;
  std::string bytes;
};

// The statement borrows the bytes until it is reset.
void bindColumn(SqliteStatement& statement, int parameter, const ColumnValue& column);

ColumnValue columnFromNarrow(const std::string& narrow);
// Returns nothing if the bytes are not text.
std::optional<std::string> narrowFromColumn(std::string_view bytes, bool isBlob);

// The value must be of one of the kinds.
ColumnValue columnFromValue(const boost::any& value);
// Returns an empty any if the column does not hold a value of the kind.
boost::any valueFromColumn(int kind, std::string_view bytes, bool isBlob);

}  // namespace zlutil::settings::host
