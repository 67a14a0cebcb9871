#include "host/user_store/user_database.h"

#include <algorithm>
#include <boost/variant/get.hpp>
#include <unordered_set>

#include "host/user_store/stored_rows.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

constexpr char kSchema[] =
    "CREATE TABLE definitions(path TEXT PRIMARY KEY, entry TEXT NOT NULL, type TEXT,"
    " validator TEXT, first, second) WITHOUT ROWID;"
    "CREATE TABLE settings(path TEXT PRIMARY KEY, type TEXT NOT NULL, value NOT NULL)"
    " WITHOUT ROWID;"
    "CREATE TABLE journal(revision INTEGER PRIMARY KEY, changes TEXT NOT NULL);";

// The longest journal, in transactions and in bytes of text. It is pruned to that length every
// kPruneEvery transactions.
#define JOURNAL_LENGTH "4096"
#define JOURNAL_BYTES "1048576"
constexpr std::int64_t kPruneEvery = 256;

// Tables that were added later, to the schema of version 1.
constexpr char kAdditions[] =
    "CREATE TABLE IF NOT EXISTS set_aside(path TEXT, type TEXT, value NOT NULL,"
    " PRIMARY KEY(path, type)) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS store(identity TEXT NOT NULL);";
constexpr char kSetIdentity[] =
    "INSERT INTO store SELECT coalesce(nullif(?1, ''), lower(hex(randomblob(16))))"
    " WHERE NOT EXISTS (SELECT 1 FROM store)";

constexpr char kBadPath[] = "no entry can have this path";
constexpr char kBadDefinition[] = "its definition is not understood";
constexpr char kBadValue[] = "its value is not understood";

std::string byPath(bool descending) {
  return descending ? " ORDER BY path DESC" : " ORDER BY path";
}

// Reads a table with the columns path, type and value.
void readValuesOf(SqliteDatabase& database, const std::string& table, bool descending,
                  const UserDatabase::Report& report, Changes& contents) {
  SqliteStatement row(database, "SELECT path, type, value FROM " + table + byPath(descending));
  while (row.step()) {
    std::string path(row.bytes(0));
    boost::any value = valueIn(row, 1);
    if (!isPath(path)) {
      report(path, kBadPath);
    } else if (value.empty()) {
      report(path, kBadValue);
    } else {
      contents.push_back(PutValue{std::move(path), std::move(value)});
    }
  }
}

struct SignOf {
  char operator()(const PutValue&) const { return JournalEntry::kValue; }
  char operator()(const EraseValue&) const { return JournalEntry::kValue; }
  char operator()(const DefineEntry&) const { return JournalEntry::kDefine; }
  char operator()(const RemoveSubtree&) const { return JournalEntry::kRemove; }
  char operator()(const FixKind&) const { return JournalEntry::kType; }
};

std::string lineOf(const JournalEntry& entry) { return static_cast<char>(entry.sign) + entry.path; }

// Returns the last entry of each sign and path, in their order. The earlier ones are superseded,
// because changes are read from what the database holds now.
std::vector<const JournalEntry*> lastOfEach(const std::vector<JournalEntry>& entries) {
  std::unordered_set<std::string> seen;
  std::vector<const JournalEntry*> last;
  for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
    if (seen.insert(lineOf(*entry)).second) last.push_back(&*entry);
  }
  std::reverse(last.begin(), last.end());
  return last;
}

// Returns whether a database of the present version has all that makeSchema() makes. Writing
// nothing would flush the disk too.
bool isComplete(SqliteDatabase& database) {
  return database.number("PRAGMA application_id") == kApplicationId &&
         database.number(
             "SELECT count(*) FROM sqlite_schema WHERE type = 'table'"
             " AND name IN ('set_aside', 'store', 'history')") == 3 &&
         database.number("SELECT count(*) FROM store") > 0;
}

const std::string& pathOf(const Change& change) {
  return std::visit([](const auto& kind) -> const std::string& { return kind.path; }, change);
}

}  // namespace

void UserDatabase::makeSchema(SqliteDatabase& database, const std::string& identity) {
  const std::int64_t version = database.number("PRAGMA user_version");
  if (version == kUserSchemaVersion && isComplete(database)) return;
  database.execute("BEGIN IMMEDIATE");
  try {
    if (version == 0) database.execute(kSchema);
    database.execute(kAdditions);
    HistoryTable::makeSchema(database);
    if (version != kUserSchemaVersion) {
      database.execute(("PRAGMA user_version=" + std::to_string(kUserSchemaVersion)).c_str());
    }
    {
      SqliteStatement setIdentity(database, kSetIdentity);
      setIdentity.bindText(1, identity);
      setIdentity.run();
    }
    if (database.number("PRAGMA application_id") != kApplicationId) {
      database.execute(("PRAGMA application_id=" + std::to_string(kApplicationId)).c_str());
    }
    database.execute("COMMIT");
  } catch (const SqliteError&) {
    sqlite3_exec(database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

UserDatabase::UserDatabase(std::unique_ptr<SqliteDatabase> database)
    : database_(std::move(database)),
      identity_(database_->text("SELECT identity FROM store")),
      beginWriting_(*database_, "BEGIN IMMEDIATE"),
      beginReading_(*database_, "BEGIN"),
      commit_(*database_, "COMMIT"),
      rollBack_(*database_, "ROLLBACK"),
      values_(*database_),
      eraseValue_(*database_, "DELETE FROM settings WHERE path = ?1"),
      keepType_(*database_,
                "UPDATE definitions SET type = (SELECT type FROM settings WHERE path = ?1)"
                " WHERE path = ?1 AND type IS NULL"),
      define_(*database_,
              "REPLACE INTO definitions(path, entry, type, validator, first, second)"
              " VALUES(?1, ?2, ?3, ?4, ?5, ?6)"),
      fixType_(*database_, "UPDATE definitions SET type = ?2 WHERE path = ?1 AND type IS NULL"),
      addType_(*database_,
               "INSERT OR IGNORE INTO definitions(path, entry, type) VALUES(?1, 'type', ?2)"),
      // The paths below a path sort between the path with "." and with the next character, "/".
      removeDefinitions_(*database_,
                         "DELETE FROM definitions WHERE path = ?1"
                         " OR (path > ?1 || '.' AND path < ?1 || '/')"),
      removeValues_(*database_,
                    "DELETE FROM settings WHERE path = ?1"
                    " OR (path > ?1 || '.' AND path < ?1 || '/')"),
      record_(*database_, "INSERT INTO journal(revision, changes) VALUES(?1, ?2)"),
      prune_(*database_,
             "DELETE FROM journal WHERE revision <= ?1 - " JOURNAL_LENGTH
             " OR revision <= (SELECT max(revision) FROM (SELECT revision, sum(length(changes))"
             " OVER (ORDER BY revision DESC) AS total FROM journal) WHERE total > " JOURNAL_BYTES
             ") AND revision < ?1"),
      lastRevision_(*database_, "SELECT max(revision) FROM journal"),
      firstRevision_(*database_, "SELECT min(revision) FROM journal"),
      journalAfter_(*database_,
                    "SELECT revision, changes FROM journal WHERE revision > ?1 ORDER BY revision"),
      findValue_(*database_, "SELECT type, value FROM settings WHERE path = ?1"),
      findDefinition_(*database_,
                      "SELECT entry, type, validator, first, second FROM definitions"
                      " WHERE path = ?1"),
      dataVersion_(*database_, "PRAGMA data_version") {}

void UserDatabase::readDefinitions(SqliteDatabase& database, bool descending, const Report& report,
                                   Changes& contents) {
  SqliteStatement row(
      database,
      "SELECT path, entry, type, validator, first, second FROM definitions" + byPath(descending));
  while (row.step()) {
    const std::string path(row.bytes(0));
    if (!isPath(path)) {
      report(path, kBadPath);
    } else if (auto definition = definitionIn(row, path, 1)) {
      contents.push_back(std::move(*definition));
    } else {
      report(path, kBadDefinition);
    }
  }
}

void UserDatabase::readValues(SqliteDatabase& database, bool descending, const Report& report,
                              Changes& contents) {
  readValuesOf(database, "settings", descending, report, contents);
}

void UserDatabase::readSetAside(SqliteDatabase& database, bool descending, const Report& report,
                                Changes& contents) {
  const bool hasTable =
      database.number("SELECT count(*) FROM sqlite_schema WHERE name = 'set_aside'") > 0;
  if (hasTable) readValuesOf(database, "set_aside", descending, report, contents);
}

Changes UserDatabase::readAll(const Report& report) {
  Changes contents;
  readDefinitions(*database_, false, report, contents);
  readValues(*database_, false, report, contents);
  return contents;
}

HistoryTable& UserDatabase::history() {
  if (!history_) history_.emplace(*database_, *limits_);
  return *history_;
}

void UserDatabase::beginWriting() {
  if (limits_) history().connect();
  beginWriting_.run();
}

void UserDatabase::beginReading() { beginReading_.run(); }
void UserDatabase::commit() { commit_.run(); }

void UserDatabase::rollBack() noexcept {
  try {
    // Some errors have rolled back already.
    if (!sqlite3_get_autocommit(database_->handle())) rollBack_.run();
  } catch (const SqliteError&) {
    // Nothing has been committed; the next transaction reports the error.
  }
}

void UserDatabase::put(const Changes& changes) {
  if (limits_) history().begin(lastRevision() + 1);
  std::vector<const PutValue*> values;  // consecutive changes that are not written yet
  const auto writeValues = [&] {
    values_.write(values);
    values.clear();
  };
  const auto putOne = [&](const auto& change) {
    if constexpr (std::is_same_v<decltype(change), const PutValue&>) {
      values.push_back(&change);
    } else {
      writeValues();
      write(change);
    }
  };
  for (const Change& change : changes) std::visit(putOne, change);
  writeValues();
}

void UserDatabase::putAside(const Changes& values) {
  for (const Change& value : values) values_.writeAside(std::get<PutValue>(value));
}

void UserDatabase::write(const EraseValue& change) {
  // The first value has fixed the type of the key, which outlives the value.
  keepType_.bindText(1, change.path);
  keepType_.run();
  eraseValue_.bindText(1, change.path);
  eraseValue_.run();
}

void UserDatabase::write(const DefineEntry& change) {
  ColumnValue first, second;
  define_.bindText(1, change.path);
  define_.bindText(2, change.isKey ? kKeyRow : kNodeRow);
  if (change.isKey && change.kind != boostany::kNoValue) {
    define_.bindText(3, boostany::kindName(change.kind));
  } else {
    define_.bindNull(3);
  }
  for (int parameter = 4; parameter <= 6; ++parameter) define_.bindNull(parameter);
  if (const auto* java = boost::get<JValidator>(&change.validator)) {
    first = columnFromNarrow(java->first());
    second = columnFromNarrow(java->second());
    define_.bindText(4, kJavaValidator);
    bindColumn(define_, 5, first);
    bindColumn(define_, 6, second);
  } else if (const auto* script = boost::get<ZValidator>(&change.validator)) {
    first = columnFromNarrow(script->text());
    define_.bindText(4, kScriptValidator);
    bindColumn(define_, 5, first);
  }
  define_.run();
}

void UserDatabase::write(const RemoveSubtree& change) {
  for (SqliteStatement* statement : {&removeDefinitions_, &removeValues_}) {
    statement->bindText(1, change.path);
    statement->run();
  }
}

void UserDatabase::write(const FixKind& change) {
  // The second statement takes effect if a settings file defines the key, the first one otherwise.
  for (SqliteStatement* statement : {&fixType_, &addType_}) {
    statement->bindText(1, change.path);
    statement->bindText(2, boostany::kindName(change.kind));
    statement->run();
  }
}

std::int64_t UserDatabase::record(const Changes& changes) {
  const std::int64_t revision = lastRevision() + 1;
  std::string text;
  for (const Change& change : changes) {
    text += std::visit(SignOf(), change);
    text += pathOf(change);
    text += '\n';
  }
  addToJournal(revision, text);
  if (revision % kPruneEvery == 0) {
    prune_.bind(1, revision);
    prune_.run();
  }
  return revision;
}

void UserDatabase::addToJournal(std::int64_t revision, const std::string& changes) {
  record_.bind(1, revision);
  record_.bindText(2, changes);
  record_.run();
}

void UserDatabase::skipTo(std::int64_t revision) {
  database_->execute("DELETE FROM journal");
  addToJournal(revision, {});
}

std::int64_t UserDatabase::lastRevision() { return lastRevision_.onlyNumber(); }
std::int64_t UserDatabase::firstRevision() { return firstRevision_.onlyNumber(); }
std::int64_t UserDatabase::dataVersion() { return dataVersion_.onlyNumber(); }

std::vector<JournalEntry> UserDatabase::journalAfter(std::int64_t revision,
                                                     const std::vector<std::int64_t>& except) {
  std::vector<JournalEntry> entries;
  journalAfter_.bind(1, revision);
  while (journalAfter_.step()) {
    if (std::binary_search(except.begin(), except.end(), journalAfter_.number(0))) continue;
    std::string_view text = journalAfter_.bytes(1);
    while (!text.empty()) {
      const std::string_view line = text.substr(0, text.find('\n'));
      text.remove_prefix(std::min(line.size() + 1, text.size()));
      if (line.empty()) continue;
      entries.push_back(
          {static_cast<JournalEntry::Sign>(line.front()), std::string(line.substr(1))});
    }
  }
  return entries;
}

Changes UserDatabase::changesFor(const std::vector<JournalEntry>& entries, const Report& report) {
  Changes changes;
  for (const JournalEntry* entry : lastOfEach(entries)) {
    if (auto change = changeFor(*entry, report)) changes.push_back(std::move(*change));
  }
  return changes;
}

std::optional<Change> UserDatabase::changeFor(const JournalEntry& entry, const Report& report) {
  switch (entry.sign) {
    case JournalEntry::kRemove:
      return RemoveSubtree{entry.path};
    case JournalEntry::kDefine:
      return storedDefinition(entry.path, report);
    case JournalEntry::kType:
      return storedType(entry.path, report);
    case JournalEntry::kValue:
      break;
  }
  return storedValue(entry.path, report);
}

std::optional<Change> UserDatabase::storedDefinition(const std::string& path,
                                                     const Report& report) {
  findDefinition_.bindText(1, path);
  if (!findDefinition_.step()) return std::nullopt;
  std::optional<Change> definition = definitionIn(findDefinition_, path, 0);
  findDefinition_.reset();
  if (!definition) report(path, kBadDefinition);
  return definition;
}

std::optional<Change> UserDatabase::storedType(const std::string& path, const Report& report) {
  std::optional<Change> definition = storedDefinition(path, report);
  if (!definition) return std::nullopt;
  const auto* const added = std::get_if<DefineEntry>(&*definition);
  return added ? FixKind{path, added->kind} : definition;
}

std::optional<Change> UserDatabase::storedValue(const std::string& path, const Report& report) {
  findValue_.bindText(1, path);
  if (!findValue_.step()) return EraseValue{path};
  boost::any value = valueIn(findValue_, 0);
  findValue_.reset();
  if (!value.empty()) return PutValue{path, std::move(value)};
  report(path, kBadValue);
  return std::nullopt;
}

}  // namespace zlutil::settings::host
