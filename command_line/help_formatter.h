// The form of --help-all: a section for each command with its options. The manual page is made from
// it.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace command_line {

class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override;

 private:
  std::string sectionOf(const CLI::App& command) const;
  std::string rowsOf(const CLI::App& command) const;
};

}  // namespace command_line
