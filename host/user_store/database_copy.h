// Copies of the user store's database, and bringing its content back from one. Names are bytes for
// the system. Functions throw SqliteError. One thread at a time for a connection.
#pragma once

#include "host/user_store/user_database.h"

namespace zlutil::settings::host {

// Writes the content of the database, as of one moment, to a new file of that name, which is for
// the user alone. The file is complete without any other file.
void writeCopy(SqliteDatabase& source, const std::string& file);

// Writes such a copy to another file first, and then replaces `file` by it.
void replaceByCopy(SqliteDatabase& source, const std::string& file);

// The content of a copy, in memory beside the database; the destructor lets it go. No transaction
// may be open at both moments.
class CopiedContent {
 public:
  // Reads the file. Throws if it is no copy of a user store, or a damaged one.
  CopiedContent(UserDatabase& database, const std::string& file);
  ~CopiedContent();
  CopiedContent(const CopiedContent&) = delete;
  CopiedContent& operator=(const CopiedContent&) = delete;

  // Makes the settings and definitions of the database those of the copy, as the commit
  // `revision`. Other processes compare everything. The caller must have begun a write transaction.
  void putInPlace(std::int64_t revision);

 private:
  UserDatabase& database_;
};

}  // namespace zlutil::settings::host
