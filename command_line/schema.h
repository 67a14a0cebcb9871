// The schema of settings files, docs/settings.xsd, as a text in the program.
#pragma once

namespace command_line {

extern const char kSchema[];

}  // namespace command_line
