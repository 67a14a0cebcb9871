// How text and values stand in a column of the user store, exactly and readable for people.
//
//   text      TEXT in standard UTF-8; what standard UTF-8 or the database's shell cannot show
//             (a lone surrogate, U+0000) is a BLOB with the bytes of the narrow text
//   scalar    TEXT: a string as text, everything else as in a settings file
//   vector    TEXT: a JSON array (RFC 8259); numbers and true/false as they are, strings and NaN,
//             Infinity, -Infinity in quotes, a string that TEXT cannot hold as {"bytes":"<hex>"}
//   NaN       "NaN"; one with other bits than the usual one "NaN:<bits in hex>"
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

// Borrows the bytes until the statement is reset.
void bindColumn(SqliteStatement& statement, int parameter, const ColumnValue& column);

ColumnValue columnFromNarrow(const std::string& narrow);
// Nothing when the bytes are no text.
std::optional<std::string> narrowFromColumn(std::string_view bytes, bool isBlob);

// `value` is of one of the kinds.
ColumnValue columnFromValue(const boost::any& value);
// Empty when the column holds no value of that kind.
boost::any valueFromColumn(int kind, std::string_view bytes, bool isBlob);

}  // namespace zlutil::settings::host
