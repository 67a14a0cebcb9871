#include "command_line/program_error.h"

#include <cstring>

#include "base/text.h"
#include "service/failures.h"

namespace command_line {
namespace {

struct Meaning {
  const char* name;
  ExitStatus status;
  const char* nextStep;
};

constexpr char kList[] = "\"settings tree\" shows all entries.";
constexpr char kDescribe[] = "\"settings explain PATH\" shows the key's type and values.";
constexpr char kCheck[] = "Mend the file; \"settings check FILE\" reports all its mistakes.";

// By the names of the failures.
constexpr Meaning kMeanings[] = {
    {"NoSuchKey", ExitStatus::kNotFound, kList},
    {"NoSuchNode", ExitStatus::kNotFound, kList},
    {"NotAKeyName", ExitStatus::kNotFound, kList},
    {"NotANodeName", ExitStatus::kNotFound, kList},
    {"ValueNotDefinedForGivenLevel", ExitStatus::kNotFound, kDescribe},
    {"UnSupportedLevel", ExitStatus::kWrongUsage,
     "The levels are user, workgroup and factory, and session within a program."},
    {"SaxParseException", ExitStatus::kFailed, kCheck},
    {"SaxUnknownException", ExitStatus::kFailed, kCheck},
    {"FileLoadingError", ExitStatus::kFailed, "Check the file's name and permissions."},
    {"StoreFailure", ExitStatus::kFailed, "Nothing was changed; mend the cause and try again."},
};
constexpr Meaning kRefusal = {"", ExitStatus::kRefused, kDescribe};

}  // namespace

void printProblems(const zlutil::settings::SettingsProblems& problems, std::ostream& stream) {
  for (const auto& [path, reason] : problems) {
    if (!path.empty()) stream << base::displayFromNarrow(path) << ": ";
    stream << base::displayFromNarrow(reason) << '\n';
  }
}

ProgramError fromService(const std::exception& failure) {
  const auto* const identified = dynamic_cast<const IMsgIDException*>(&failure);
  if (!identified) {
    return ProgramError(ExitStatus::kFailed, failure.what(), "Nothing more was changed.");
  }
  const Meaning* meaning = &kRefusal;
  for (const Meaning& candidate : kMeanings) {
    if (std::strcmp(candidate.name, identified->GetMsgID().name()) == 0) meaning = &candidate;
  }
  return ProgramError(meaning->status, base::displayFromNarrow(identified->GetMessageTxt()),
                      meaning->nextStep);
}

}  // namespace command_line
