// The three forms of text in this system, and the conversions between them.
//
//   narrow    std::string in the JVM's modified UTF-8: U+0000 is the two bytes C0 80, a character
//             beyond U+FFFF is two three-byte surrogates, a lone surrogate is three bytes. Every
//             std::string inside the process has this form, which JNI takes and gives unchanged.
//   ustring   16-bit units (UTF-16, lone surrogates allowed), for file paths given to the service.
//   utf-8     standard UTF-8, only at the borders: files, file names, console, database,
//             environment.
//
// The narrow form is that of the strings in a Java class file (JVMS 4.4.7, CONSTANT_Utf8).
// All functions are pure and may be called from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/export.h"

namespace base {

using ustring = std::u16string;

// Returns narrow text as 16-bit units. Accepts a standard four-byte sequence too, which becomes a
// surrogate pair. Other bytes that are not modified UTF-8 become U+FFFD.
SETTINGS_HOST_API ustring to_ustring(std::string_view narrow);

// Returns 16-bit units as narrow text. Exact for every input.
SETTINGS_HOST_API std::string narrowFromUstring(std::u16string_view units);

// Returns 16-bit units in the named 8-bit codec; "UTF-8" is the only one. A lone surrogate becomes
// U+FFFD, so the result is for messages, not for names that must survive. Throws
// std::invalid_argument for another codec.
SETTINGS_HOST_API std::string codecvt_ustring_to_string(std::u16string_view units,
                                                        std::string_view codec);

// Returns narrow text as standard UTF-8; nothing if it is malformed or has a lone surrogate, which
// standard UTF-8 cannot hold. U+0000 becomes a zero byte; the caller must refuse it where needed.
SETTINGS_HOST_API std::optional<std::string> utf8FromNarrow(std::string_view narrow);

// Returns narrow text as standard UTF-8 for people to read. Characters that UTF-8 cannot hold
// become U+FFFD.
SETTINGS_HOST_API std::string displayFromNarrow(std::string_view narrow);

// Returns whether `text` is narrow text.
SETTINGS_HOST_API bool isNarrow(std::string_view text);

// Returns a mixture of narrow text and standard UTF-8, with U+0000 also as a zero byte, as narrow
// text; nothing if it is neither.
SETTINGS_HOST_API std::optional<std::string> narrowFromMixed(std::string_view text);

// Returns how many bytes at the beginning of `text` are such a mixture.
SETTINGS_HOST_API std::size_t wellFormedLength(std::string_view text);

// Returns narrow text or standard UTF-8 with its control characters escaped as in Java ("\\n",
// "\\u001b"), so that it stays on one line wherever it is printed.
SETTINGS_HOST_API std::string withControlsEscaped(std::string_view text);

// Returns standard UTF-8 as narrow text; nothing if the bytes are not well-formed UTF-8.
SETTINGS_HOST_API std::optional<std::string> narrowFromUtf8(std::string_view utf8);

}  // namespace base
