#include "host/user_store/history_table.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <limits>

#include "base/never_destroyed.h"
#include "host/change/commit_comment.h"
#include "host/os/file_name.h"
#include "host/user_store/stored_rows.h"

namespace zlutil::settings::host {
namespace {

// The commits, and the pages by which the content may grow, between two prunings.
constexpr std::int64_t kPruneEvery = 64, kPagesBetweenPrunings = 1024;
// Rows of one commit; a commit cannot have as many changes.
constexpr int kRowBits = 28;
constexpr std::int64_t kMicrosecondsOfDay = 86'400'000'000;

constexpr char kSchema[] =
    "CREATE TABLE IF NOT EXISTS history(id INTEGER PRIMARY KEY, time INTEGER, process INTEGER,"
    " program TEXT, comment, change TEXT NOT NULL, path TEXT, old_type TEXT, old, new_type TEXT,"
    " new, entry TEXT, type TEXT, validator TEXT, first, second)";

// REPLACE fires the triggers of the rows that it deletes only if they may be recursive.
constexpr char kTriggers[] =
    "PRAGMA recursive_triggers=ON;"
    "CREATE TEMP TRIGGER IF NOT EXISTS insert_value AFTER INSERT ON main.settings BEGIN"
    " INSERT INTO history(change, path, new_type, new)"
    " VALUES('set', new.path, new.type, new.value); END;"
    "CREATE TEMP TRIGGER IF NOT EXISTS update_value AFTER UPDATE ON main.settings"
    " WHEN old.value IS NOT new.value OR old.type IS NOT new.type BEGIN"
    " INSERT INTO history(change, path, old_type, old, new_type, new)"
    " VALUES('set', new.path, old.type, old.value, new.type, new.value); END;"
    "CREATE TEMP TRIGGER IF NOT EXISTS delete_value AFTER DELETE ON main.settings BEGIN"
    " INSERT INTO history(change, path, old_type, old)"
    " VALUES('set', old.path, old.type, old.value); END;"
    "CREATE TEMP TRIGGER IF NOT EXISTS insert_entry AFTER INSERT ON main.definitions"
    " WHEN new.entry <> 'type' BEGIN"
    " INSERT INTO history(change, path, entry, type, validator, first, second)"
    " VALUES('add', new.path, new.entry, new.type, new.validator, new.first, new.second); END;"
    "CREATE TEMP TRIGGER IF NOT EXISTS delete_entry AFTER DELETE ON main.definitions"
    " WHEN old.entry <> 'type' BEGIN"
    " INSERT INTO history(change, path, entry, type, validator, first, second)"
    " VALUES('remove', old.path, old.entry, old.type, old.validator, old.first, old.second); END;";

std::int64_t now() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count();
}

// Returns the name of the program that this process runs.
const std::string& programName() {
  static base::NeverDestroyed<std::string> name([] {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string shown = shownFileName(length > 0 ? std::string(path, length) : std::string());
    return shown.substr(shown.rfind('/') + 1);
  }());
  return name.get();
}

// Returns the change in a row of commitsFrom(); nothing if it is not understood.
std::optional<PastChange> changeIn(const SqliteStatement& row) {
  PastChange change{std::string(row.bytes(6)), {}, {}};
  if (!isPath(change.path)) return std::nullopt;
  if (row.bytes(5) == "set") {
    for (const auto& [column, side] : {std::pair(7, &change.before), {9, &change.after}}) {
      if (row.isNull(column)) continue;
      boost::any value = valueIn(row, column);
      if (value.empty()) return std::nullopt;
      *side = PutValue{change.path, std::move(value)};
    }
    return change;
  }
  std::optional<Change> entry = definitionIn(row, change.path, 11);
  if (!entry) return std::nullopt;
  (row.bytes(5) == "add" ? change.after : change.before) = std::move(entry);
  return change;
}

}  // namespace

void HistoryTable::makeSchema(SqliteDatabase& database) { database.execute(kSchema); }

HistoryTable::HistoryTable(SqliteDatabase& database, const HistoryLimits& limits)
    : database_(database),
      limits_(limits),
      begin_(database,
             "REPLACE INTO history(id, time, process, program, comment, change)"
             " VALUES(?1, ?2, ?3, ?4, ?5, 'commit')"),
      sizes_(database,
             "SELECT id, time, coalesce(length(path), 0) + coalesce(length(old), 0) +"
             " coalesce(length(new), 0) FROM history ORDER BY id DESC"),
      pageCount_(database, "PRAGMA page_count"),
      freePages_(database, "PRAGMA freelist_count"),
      prune_(database, "DELETE FROM history WHERE id < ?1"),
      read_(database,
            "SELECT id, time, process, program, comment, change, path, old_type, old, new_type,"
            " new, entry, type, validator, first, second FROM history WHERE id >= ?1 ORDER BY id") {
}

void HistoryTable::connect() {
  if (hasTriggers_ || limits_.commits == 0) return;
  database_.execute(kTriggers);
  hasTriggers_ = true;
}

void HistoryTable::begin(std::int64_t revision) {
  const bool hasGrown = pagesInUse() > prunedPages_ + kPagesBetweenPrunings;
  if (revision % kPruneEvery == 0 || hasGrown || limits_.commits == 0) prune();
  if (limits_.commits == 0) return;
  const ColumnValue program = columnFromNarrow(programName());
  const ColumnValue comment = columnFromNarrow(commitComment());
  begin_.bind(1, revision << kRowBits);
  begin_.bind(2, now());
  begin_.bind(3, getpid());
  bindColumn(begin_, 4, program);
  bindColumn(begin_, 5, comment);
  begin_.run();
}

// Returns the first row of the oldest commit that is within the limits.
std::int64_t HistoryTable::firstToKeep() {
  const std::int64_t oldest = now() - limits_.days * kMicrosecondsOfDay;
  std::int64_t first = std::numeric_limits<std::int64_t>::max(), bytes = 0;
  int commits = 0;
  while (sizes_.step()) {
    bytes += sizes_.number(2);
    if (sizes_.isNull(1)) continue;
    const bool isWithin = commits == 0 || (commits < limits_.commits && bytes <= limits_.bytes &&
                                           sizes_.number(1) >= oldest);
    if (limits_.commits == 0 || !isWithin) break;
    ++commits;
    first = sizes_.number(0);
  }
  sizes_.reset();
  return first;
}

void HistoryTable::prune() {
  prune_.bind(1, firstToKeep());
  prune_.run();
  prunedPages_ = pagesInUse();
}

std::int64_t HistoryTable::pagesInUse() {
  return pageCount_.onlyNumber() - freePages_.onlyNumber();
}

std::vector<PastCommit> HistoryTable::commitsFrom(std::int64_t revision) {
  std::vector<PastCommit> commits;
  read_.bind(1, std::max(revision << kRowBits, firstToKeep()));
  while (read_.step()) {
    if (!read_.isNull(1)) {
      PastCommit commit;
      commit.number = read_.number(0) >> kRowBits;
      commit.time = read_.number(1);
      commit.process = read_.number(2);
      commit.program = narrowFromColumn(read_.bytes(3), read_.isBlob(3)).value_or("");
      commit.comment = narrowFromColumn(read_.bytes(4), read_.isBlob(4)).value_or("");
      commits.push_back(std::move(commit));
    } else if (!commits.empty()) {
      if (auto change = changeIn(read_)) commits.back().changes.push_back(std::move(*change));
    }
  }
  return commits;
}

}  // namespace zlutil::settings::host
