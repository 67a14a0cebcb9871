// history, diff, undo, backup and restore.
#include <algorithm>
#include <charconv>
#include <ctime>
#include <iostream>
#include <map>
#include <memory>

#include "base/text.h"
#include "command_line/commands.h"
#include "command_line/program_error.h"
#include "command_line/terminal.h"
#include "command_line/values.h"
#include "service/backup.h"
#include "service/history.h"

namespace command_line {
namespace {

using zlutil::settings::HistoryChange;
using zlutil::settings::HistoryCommit;

struct HistoryOptions {
  std::string path;
  std::string range;
  std::int64_t commit = 0;
  int limit = 0;
  std::string file;
  bool isForced = false;
  bool asJson = false;
};

std::string timeText(std::chrono::system_clock::time_point time, const char* format) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  char text[40] = "";
  const bool isLocal = format[0] != 'u';
  if (isLocal ? localtime_r(&seconds, &parts) : gmtime_r(&seconds, &parts)) {
    std::strftime(text, sizeof text, isLocal ? format : format + 1, &parts);
  }
  return text;
}

const char* wordOf(HistoryChange::What what) {
  switch (what) {
    case HistoryChange::kAdded:
      return "added";
    case HistoryChange::kRemoved:
      return "removed";
    case HistoryChange::kValue:
      break;
  }
  return "set";
}

Json jsonOfChange(const HistoryChange& change) {
  return {{"path", change.path},
          {"change", wordOf(change.what)},
          {"before", jsonOf(change.before)},
          {"after", jsonOf(change.after)}};
}

void printChange(const HistoryChange& change) {
  const auto side = [](const boost::any& value) { return value.empty() ? "none" : lineOf(value); };
  std::cout << change.path;
  if (change.what == HistoryChange::kValue) {
    std::cout << ": " << side(change.before) << " -> " << side(change.after) << '\n';
  } else {
    std::cout << ' ' << wordOf(change.what) << '\n';
  }
}

bool concerns(const HistoryChange& change, const std::string& path) {
  return path.empty() || change.path == path || change.path.rfind(path + '.', 0) == 0;
}

// Prints the commits, the newest first.
void history(const SettingsPtr& root, const HistoryOptions& options) {
  std::vector<HistoryCommit> commits = historyOf(root, options.path);
  std::reverse(commits.begin(), commits.end());
  if (options.limit > 0 && commits.size() > static_cast<std::size_t>(options.limit)) {
    commits.resize(options.limit);
  }
  Json all = Json::array();
  for (const HistoryCommit& commit : commits) {
    if (options.asJson) {
      Json changes = Json::array();
      for (const HistoryChange& change : commit.changes) {
        if (concerns(change, options.path)) changes.push_back(jsonOfChange(change));
      }
      all.push_back({{"commit", commit.number},
                     {"time", timeText(commit.time, "u%Y-%m-%dT%H:%M:%SZ")},
                     {"program", commit.program},
                     {"process", commit.process},
                     {"comment", commit.comment.empty() ? Json() : Json(commit.comment)},
                     {"changes", changes}});
      continue;
    }
    std::cout << coloured(Stream::kOutput, Colour::kYellow, std::to_string(commit.number)) << "  "
              << timeText(commit.time, "%Y-%m-%d %H:%M:%S") << "  "
              << base::withControlsEscaped(commit.program) << " (process " << commit.process << ')';
    if (!commit.comment.empty()) std::cout << "  " << base::withControlsEscaped(commit.comment);
    std::cout << '\n';
    for (const HistoryChange& change : commit.changes) {
      if (!concerns(change, options.path)) continue;
      std::cout << "    ";
      printChange(change);
    }
  }
  if (options.asJson) std::cout << all.dump(2) << '\n';
}

std::int64_t commitNumber(const std::string& text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end && number > 0) return number;
  throw ProgramError(ExitStatus::kWrongUsage, "\"" + text + "\" is not the number of a commit.",
                     "\"settings history\" shows the commits with their numbers.");
}

ProgramError noSuchCommit(std::int64_t number) {
  return ProgramError(ExitStatus::kNotFound,
                      "There is no commit " + std::to_string(number) + " in the history.",
                      "\"settings history\" shows the commits with their numbers.");
}

// The first and the last commit of "N" (one commit), "N.." (all after it) or "N..M".
struct Range {
  explicit Range(const std::string& text) {
    const std::size_t dots = text.find("..");
    named = commitNumber(text.substr(0, dots));
    if (dots == std::string::npos) {
      first = last = named;
      return;
    }
    first = named + 1;
    const std::string end = text.substr(dots + 2);
    last = end.empty() ? std::numeric_limits<std::int64_t>::max() : commitNumber(end);
  }

  std::int64_t named, first, last;
};

// Returns the changes of several commits as one: of each entry, the state before the first and
// after the last of them.
std::vector<HistoryChange> combined(const std::vector<HistoryCommit>& commits, const Range& range) {
  std::map<std::pair<std::string, bool>, HistoryChange> changes;  // by path, and whether a value
  for (const HistoryCommit& commit : commits) {
    if (commit.number < range.first || commit.number > range.last) continue;
    for (const HistoryChange& change : commit.changes) {
      const bool isValue = change.what == HistoryChange::kValue;
      const auto [known, isNew] = changes.emplace(std::pair(change.path, isValue), change);
      if (isNew) continue;
      known->second.after = change.after;
      // Added and removed again, or the other way round.
      if (!isValue && known->second.what != change.what) changes.erase(known);
    }
  }
  std::vector<HistoryChange> list;
  for (const auto& [path, change] : changes) {
    const bool isSame =
        change.what == HistoryChange::kValue && jsonOf(change.before) == jsonOf(change.after);
    if (!isSame) list.push_back(change);
  }
  return list;
}

void diff(const SettingsPtr& root, const HistoryOptions& options) {
  const Range range(options.range);
  const std::vector<HistoryCommit> commits = zlutil::settings::historyOf(root);
  const bool isKnown =
      std::any_of(commits.begin(), commits.end(),
                  [&](const HistoryCommit& commit) { return commit.number == range.named; });
  if (!isKnown) throw noSuchCommit(range.named);
  Json all = Json::array();
  for (const HistoryChange& change : combined(commits, range)) {
    if (options.asJson) {
      all.push_back(jsonOfChange(change));
    } else {
      printChange(change);
    }
  }
  if (options.asJson) std::cout << all.dump(2) << '\n';
}

void undo(const SettingsPtr& root, const HistoryOptions& options) {
  const std::vector<HistoryCommit> commits = zlutil::settings::historyOf(root);
  const bool isKnown =
      std::any_of(commits.begin(), commits.end(),
                  [&](const HistoryCommit& commit) { return commit.number == options.commit; });
  if (!isKnown) throw noSuchCommit(options.commit);
  const auto problems = undoCommit(root, options.commit, options.isForced);
  if (problems.empty()) return;
  printProblems(problems, std::cerr);
  throw ProgramError(ExitStatus::kRefused,
                     "Commit " + std::to_string(options.commit) + " was not undone.",
                     options.isForced ? "\"settings set\" changes single keys."
                                      : "Undo the later commits first, or add --force.");
}

void backUp(const SettingsPtr& root, const HistoryOptions& options) {
  zlutil::settings::backUpUserLevel(root, base::to_ustring(options.file));
}

void restore(const SettingsPtr& root, const HistoryOptions& options) {
  const std::string kept = zlutil::settings::restoreUserLevel(root, base::to_ustring(options.file));
  std::cout << "The settings before that are kept in " << base::displayFromNarrow(kept) << '\n';
}

}  // namespace

void addHistoryCommands(CLI::App& app, Invocation& invocation) {
  const auto options = std::make_shared<HistoryOptions>();
  CLI::App* const history =
      addCommand(app, invocation, options, "history",
                 "Print what each commit of the user level has changed", &::command_line::history);
  history->add_option("PATH", options->path, "The entry; all entries if it is left out");
  history->add_option("--limit", options->limit, "Print only so many commits, the newest")
      ->check(CLI::PositiveNumber);
  addJsonOption(*history, options->asJson);

  CLI::App* const diff =
      addCommand(app, invocation, options, "diff",
                 "Print the difference that commits have made together", &::command_line::diff);
  diff->add_option("COMMITS", options->range,
                   "\"N\": commit N; \"N..\": all after it; \"N..M\": those up to M")
      ->required();
  addJsonOption(*diff, options->asJson);

  CLI::App* const undo = addCommand(app, invocation, options, "undo",
                                    "Change back what a commit has changed", &::command_line::undo);
  undo->add_option("COMMIT", options->commit, "Its number in the history")->required();
  undo->add_flag("--force", options->isForced,
                 "Also where a later commit has changed the same entries");
  addCommentOption(*undo, invocation);

  addCommand(app, invocation, options, "backup",
             "Write everything that is stored for the user to a file", &backUp)
      ->add_option("FILE", options->file, "The file, replaced in one step")
      ->required();
  CLI::App* const restore = addCommand(
      app, invocation, options, "restore",
      "Make the user's settings what they were when a backup was made", &::command_line::restore);
  restore->add_option("FILE", options->file, "The backup")->required();
  addCommentOption(*restore, invocation);
}

}  // namespace command_line
