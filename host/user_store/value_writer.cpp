#include "host/user_store/value_writer.h"

#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

// The most rows and bytes of one statement. More rows make a commit no faster, and all their text
// is in memory at once.
constexpr std::size_t kManyRows = 40;
constexpr std::size_t kManyBytes = 1 << 20;

// Returns a statement that inserts rows, and updates existing rows of the same type. Existing rows
// of another type stay unchanged.
std::string putStatement(std::size_t rows) {
  std::string sql = "INSERT INTO settings(path, type, value) VALUES(?, ?, ?)";
  for (std::size_t row = 1; row < rows; ++row) sql += ", (?, ?, ?)";
  return sql + " ON CONFLICT(path) DO UPDATE SET value = excluded.value WHERE type = excluded.type";
}

}  // namespace

ValueWriter::ValueWriter(SqliteDatabase& database)
    : database_(database),
      putMany_(database, putStatement(kManyRows)),
      putOne_(database, putStatement(1)),
      setAside_(database,
                "REPLACE INTO set_aside SELECT path, type, value FROM settings WHERE path = ?1"),
      replace_(database, "UPDATE settings SET type = ?2, value = ?3 WHERE path = ?1"),
      putAside_(database, "REPLACE INTO set_aside(path, type, value) VALUES(?1, ?2, ?3)") {}

void ValueWriter::write(const std::vector<const PutValue*>& values) {
  std::vector<Row> rows;
  std::size_t bytes = 0;
  for (const PutValue* value : values) {
    rows.push_back(rowOf(*value));
    bytes += rows.back().value.bytes.size();
    if (rows.size() < kManyRows && bytes < kManyBytes) continue;
    write(rows);
    rows.clear();
    bytes = 0;
  }
  write(rows);
}

void ValueWriter::writeAside(const PutValue& value) {
  const Row row = rowOf(value);
  run(putAside_, &row, 1);
}

ValueWriter::Row ValueWriter::rowOf(const PutValue& value) {
  return {value.path, boostany::kindName(boostany::kindOfValue(value.value)),
          columnFromValue(value.value)};
}

void ValueWriter::write(const std::vector<Row>& rows) {
  if (rows.size() == kManyRows && run(putMany_, rows.data(), kManyRows) == kManyRows) return;
  for (const Row& row : rows) writeOne(row);
}

void ValueWriter::writeOne(const Row& row) {
  if (run(putOne_, &row, 1) == 1) return;
  setAside_.bindText(1, row.path);
  setAside_.run();
  run(replace_, &row, 1);
}

std::size_t ValueWriter::run(SqliteStatement& statement, const Row* rows, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const int parameter = static_cast<int>(3 * i) + 1;
    statement.bindText(parameter, rows[i].path);
    statement.bindText(parameter + 1, rows[i].type);
    bindColumn(statement, parameter + 2, rows[i].value);
  }
  statement.run();
  return static_cast<std::size_t>(sqlite3_changes(database_.handle()));
}

}  // namespace zlutil::settings::host
