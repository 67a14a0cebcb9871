// The failures that end the program, and the exit statuses that scripts may rely on.
#pragma once

#include <ostream>
#include <stdexcept>
#include <string>

#include "service/settings.h"

namespace command_line {

enum class ExitStatus {
  kDone = 0,
  kNotFound = 1,    // there is no such entry, or it has no value
  kWrongUsage = 2,  // an unknown option or command, or a text that is not of the type
  kRefused = 3,     // a validator, a type or a read-only level refuses the change
  kFailed = 4       // a file or the store failed
};

class ProgramError : public std::runtime_error {
 public:
  // Both texts are standard UTF-8; `nextStep` says what the user can do.
  ProgramError(ExitStatus status, const std::string& problem, std::string nextStep)
      : std::runtime_error(problem), status_(status), nextStep_(std::move(nextStep)) {}

  ExitStatus status() const { return status_; }
  const std::string& nextStep() const { return nextStep_; }

 private:
  ExitStatus status_;
  std::string nextStep_;
};

// Prints each problem on a line of its own.
void printProblems(const zlutil::settings::SettingsProblems& problems, std::ostream& stream);

// Returns a failure of the settings service as one of the program.
ProgramError fromService(const std::exception& failure);

}  // namespace command_line
