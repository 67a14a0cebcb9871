#include "host/user_store/sqlite_value.h"

#include "base/text.h"
#include "values/exact_text.h"
#include "values/stored_value.h"
#include "values/value_json.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {

void bindColumn(SqliteStatement& statement, int parameter, const ColumnValue& column) {
  if (column.isBlob) {
    statement.bindBlob(parameter, column.bytes);
  } else {
    statement.bindText(parameter, column.bytes);
  }
}

ColumnValue columnFromNarrow(const std::string& narrow) {
  if (std::optional<std::string> utf8 = boostany::exactUtf8(narrow)) {
    return {false, std::move(*utf8)};
  }
  return {true, narrow};
}

std::optional<std::string> narrowFromColumn(std::string_view bytes, bool isBlob) {
  if (isBlob) return std::string(bytes);
  // A truncated page reads as zeros.
  if (bytes.find('\0') != std::string_view::npos) return std::nullopt;
  return base::narrowFromUtf8(bytes);
}

ColumnValue columnFromValue(const boost::any& value) {
  ColumnValue column{false, {}};
  boostany::withTypeOfKind(boostany::kindOfValue(value), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (std::is_same_v<Type, std::string>) {
      column = columnFromNarrow(*boost::unsafe_any_cast<Type>(&value));
    } else if constexpr (boostany::kIsVector<Type>) {
      column.bytes = boostany::jsonOfValue(value).dump();
    } else {
      column.bytes = boostany::exactText(*boost::unsafe_any_cast<Type>(&value));
    }
  });
  return column;
}

boost::any valueFromColumn(int kind, std::string_view bytes, bool isBlob) {
  boost::any value;
  boostany::withTypeOfKind(kind, [&](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (std::is_same_v<Type, std::string>) {
      if (auto text = narrowFromColumn(bytes, isBlob)) value = std::move(*text);
    } else if (isBlob) {
      return;
    } else if constexpr (boostany::kIsVector<Type>) {
      value = boostany::valueFromJson(kind, nlohmann::json::parse(bytes, nullptr, false));
    } else {
      if (const auto scalar = boostany::valueFromExactText<Type>(bytes)) value = *scalar;
    }
  });
  return value;
}

}  // namespace zlutil::settings::host
