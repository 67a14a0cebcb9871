// dump, check and export-schema.
#include <iostream>
#include <memory>

#include "base/text.h"
#include "command_line/commands.h"
#include "command_line/program_error.h"
#include "command_line/schema.h"
#include "service/settings_file.h"

namespace command_line {
namespace {

using zlutil::settings::SettingsFile;

struct FileOptions {
  std::string path;
  std::string output;
  std::string level;
  std::vector<std::string> files;
};

void dump(const SettingsPtr& root, const FileOptions& options) {
  const SettingsPtr top = requireEntry(root, options.path);
  const std::vector<std::string> levels = {options.level.empty() ? "user" : options.level};
  if (options.output.empty()) {
    std::cout << SettingsFile::text(top, levels);
  } else {
    SettingsFile::write(top, levels, base::to_ustring(options.output));
  }
}

void check(const FileOptions& options) {
  std::size_t mistakes = 0;
  for (const std::string& file : options.files) {
    for (const std::string& mistake : SettingsFile::check(base::to_ustring(file))) {
      std::cout << base::displayFromNarrow(mistake) << '\n';
      ++mistakes;
    }
  }
  std::cout << mistakes << (mistakes == 1 ? " mistake" : " mistakes") << '\n';
  if (mistakes > 0) {
    throw ProgramError(ExitStatus::kFailed, "Not every file is right.",
                       "Mend the lines above and check again.");
  }
}

}  // namespace

void addFileCommands(CLI::App& app, Invocation& invocation) {
  const auto options = std::make_shared<FileOptions>();
  CLI::App* const dump = addCommand(app, invocation, options, "dump",
                                    "Print the values of a level below a node as a settings file",
                                    &::command_line::dump);
  dump->add_option("PATH", options->path, "The node; the root if it is left out");
  dump->add_option("--output", options->output, "The file to write, replaced in one step");
  addLevelOptions(*dump, options->level);

  CLI::App* const check =
      app.add_subcommand("check", "Report every mistake in settings files, with line and column");
  check->add_option("FILE", options->files, "The settings files")->required();
  check->callback([&invocation, options] {
    invocation.chosen = [options] { ::command_line::check(*options); };
  });

  app.add_subcommand("export-schema", "Print the schema of settings files")
      ->callback([&invocation] { invocation.chosen = [] { std::cout << kSchema; }; });
}

}  // namespace command_line
