// The thirty settings of a text editor.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "service/constraints.h"
#include "service/setting_key.h"

namespace editor {

using zlutil::settings::constraints::choices;
using zlutil::settings::constraints::length;
using zlutil::settings::constraints::range;
template <class Type>
using Key = zlutil::settings::SettingKey<Type>;
using Texts = std::vector<std::string>;

// declarations
inline const Key<int> kLeft("window.left", 100);
inline const Key<int> kTop("window.top", 100);
inline const Key<int> kWidth("window.width", 800, range("200", ""));
inline const Key<int> kHeight("window.height", 600, range("100", ""));
inline const Key<bool> kMaximized("window.maximized", false);
inline const Key<std::string> kTheme("view.theme", "LIGHT", choices({"LIGHT", "DARK", "SYSTEM"}));
inline const Key<double> kZoom("view.zoom", 1.0, range("0.25", "8"));
inline const Key<bool> kToolbar("view.toolbar", true);
inline const Key<bool> kStatusBar("view.statusBar", true);
inline const Key<bool> kLineNumbers("view.lineNumbers", true);
inline const Key<bool> kWhitespace("view.whitespace", false);
inline const Key<std::string> kFont("font.name", "Monospaced", length("1", "80"));
inline const Key<int> kFontSize("font.size", 12, range("6", "72"));
inline const Key<float> kSpacing("font.spacing", 1.2f, range("1", "3"));
inline const Key<int> kTabWidth("edit.tabWidth", 4, range("1", "16"));
inline const Key<bool> kTabs("edit.tabs", false);
inline const Key<bool> kWrap("edit.wrap", true);
inline const Key<int> kMargin("edit.margin", 100, range("20", "400"));
inline const Key<bool> kSpelling("edit.spelling", false);
inline const Key<std::string> kLanguage("edit.language", "en", length("2", "8"));
inline const Key<Texts> kWords("edit.words", {});
inline const Key<std::string> kLineEnd("files.lineEnd", "LF", choices({"LF", "CRLF"}));
inline const Key<std::string> kEncoding("files.encoding", "UTF-8");
inline const Key<bool> kBackup("files.backup", true);
inline const Key<int> kSaveAfter("files.saveAfter", 30, range("0", "600"));
inline const Key<std::int64_t> kLargest("files.largest", 1 << 30, range("1", ""));
inline const Key<Texts> kRecent("files.recent", {});
inline const Key<std::string> kPrinter("print.printer", "");
inline const Key<bool> kColour("print.colour", true);
inline const Key<std::int16_t> kCopies("print.copies", 1, range("1", "99"));
// end

}  // namespace editor
