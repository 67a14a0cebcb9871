// Writes values into the database of the user store, many rows with one statement. Used by one
// thread at a time, within a write transaction. Borrows the connection.
#pragma once

#include <string_view>
#include <vector>

#include "host/tree/store.h"
#include "host/user_store/sqlite_value.h"

namespace zlutil::settings::host {

class ValueWriter {
 public:
  explicit ValueWriter(SqliteDatabase& database);

  // Stores the values in order. Moves a stored value of another type to the table set_aside. Throws
  // SqliteError; the caller must then roll the transaction back.
  void write(const std::vector<const PutValue*>& values);

  // Stores the value in the table set_aside. Replaces one of the same path and type.
  void writeAside(const PutValue& value);

 private:
  struct Row {
    std::string_view path, type;
    ColumnValue value;
  };

  static Row rowOf(const PutValue& value);
  void write(const std::vector<Row>& rows);
  void writeOne(const Row& row);
  // Runs the statement with three parameters for each row. Returns how many rows it has written.
  std::size_t run(SqliteStatement& statement, const Row* rows, std::size_t count);

  SqliteDatabase& database_;
  SqliteStatement putMany_, putOne_, setAside_, replace_, putAside_;
};

}  // namespace zlutil::settings::host
