#include "host/user_store/stored_rows.h"

#include <algorithm>

#include "service/identifier.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {

std::optional<Change> definitionIn(const SqliteStatement& row, const std::string& path,
                                   int column) {
  const std::string_view entry = row.bytes(column);
  if (entry != kNodeRow && entry != kKeyRow && entry != kTypeRow) return std::nullopt;
  DefineEntry definition{path, entry == kKeyRow, boostany::kNoValue, {}};
  if (!row.isNull(column + 1)) {
    const std::optional<int> kind = boostany::kindOfName(row.bytes(column + 1));
    if (!kind) return std::nullopt;
    definition.kind = *kind;
  }
  if (entry == kTypeRow) return FixKind{path, definition.kind};
  if (row.isNull(column + 2)) return definition;
  const std::string_view validator = row.bytes(column + 2);
  const auto first = narrowFromColumn(row.bytes(column + 3), row.isBlob(column + 3));
  const auto second = narrowFromColumn(row.bytes(column + 4), row.isBlob(column + 4));
  if (!first || !second) return std::nullopt;
  if (validator == kJavaValidator) {
    definition.validator = JValidator(*first, *second);
  } else if (validator == kScriptValidator) {
    definition.validator = ZValidator(*first);
  } else {
    return std::nullopt;
  }
  return definition;
}

boost::any valueIn(const SqliteStatement& row, int column) {
  const std::optional<int> kind = boostany::kindOfName(row.bytes(column));
  if (!kind) return {};
  return valueFromColumn(*kind, row.bytes(column + 1), row.isBlob(column + 1));
}

bool isPath(std::string_view path) {
  while (true) {
    const std::size_t size = std::min(path.find('.'), path.size());
    if (!isIdentifierName(std::string(path.substr(0, size)).c_str())) return false;
    if (size == path.size()) return true;
    path.remove_prefix(size + 1);
  }
}

}  // namespace zlutil::settings::host
