// The three forms of text in this system, and the ways between them.
//
//   narrow   std::string in the JVM's modified UTF-8: U+0000 is the two bytes C0 80, a
//   supplementary
//            character is two three-byte surrogates, and a lone surrogate is a three-byte sequence.
//            Every std::string inside the process is in this form, so JNI takes and gives it
//            unchanged.
//   ustring  16-bit units (UTF-16, lone surrogates allowed), for paths on their way to the service.
//   utf-8    standard UTF-8, only at the borders: files, file names, console, database,
//   environment.
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

// Narrow text to 16-bit units. Bytes that are not modified UTF-8 become U+FFFD; a standard
// four-byte sequence is accepted and becomes a surrogate pair.
SETTINGS_HOST_API ustring to_ustring(std::string_view narrow);

// 16-bit units to narrow text. Exact for every input.
SETTINGS_HOST_API std::string narrowFromUstring(std::u16string_view units);

// 16-bit units to the named 8-bit codec; "UTF-8" is the only one. A lone surrogate becomes U+FFFD,
// so the result is for messages, not for names that must survive. Throws std::invalid_argument for
// another codec.
SETTINGS_HOST_API std::string codecvt_ustring_to_string(std::u16string_view units,
                                                        std::string_view codec);

// Narrow text to standard UTF-8; nothing when it holds a lone surrogate or is malformed, which
// standard UTF-8 cannot say. U+0000 becomes a zero byte: the caller refuses it where it must.
SETTINGS_HOST_API std::optional<std::string> utf8FromNarrow(std::string_view narrow);

// Narrow text to standard UTF-8 for people to read: what UTF-8 cannot say becomes U+FFFD.
SETTINGS_HOST_API std::string displayFromNarrow(std::string_view narrow);

// Whether it is narrow text.
SETTINGS_HOST_API bool isNarrow(std::string_view text);

// A mixture of narrow text and standard UTF-8 to narrow text, with U+0000 also as a zero byte;
// nothing when it is neither.
SETTINGS_HOST_API std::optional<std::string> narrowFromMixed(std::string_view text);

// How many bytes at its beginning are such a mixture.
SETTINGS_HOST_API std::size_t wellFormedLength(std::string_view text);

// The text, narrow or standard UTF-8, with its control characters written as in a string of Java
// ("\\n", "\\u001b"), so that it stays on its line wherever it is printed.
SETTINGS_HOST_API std::string withControlsEscaped(std::string_view text);

// Standard UTF-8 to narrow text; nothing when the bytes are not well-formed UTF-8.
SETTINGS_HOST_API std::optional<std::string> narrowFromUtf8(std::string_view utf8);

}  // namespace base
