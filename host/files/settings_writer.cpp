#include "host/files/settings_writer.h"

#include <boost/variant/get.hpp>
#include <optional>

#include "host/tree/descriptions.h"
#include "service/failures.h"
#include "values/value_kinds.h"
#include "values/value_text.h"

namespace zlutil::settings::host {
namespace {

// Returns whether XML 1.0 has every character of the UTF-8 text. It lacks U+FFFE, U+FFFF and the
// control characters other than tab and line ends.
bool isXmlText(std::string_view utf8) {
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') return false;
    if (byte == 0xEF && utf8.substr(i, 2) == "\xEF\xBF" &&
        static_cast<unsigned char>(utf8[i + 2]) >= 0xBE) {
      return false;
    }
  }
  return true;
}

class Writer {
 public:
  explicit Writer(const LevelSet& levels) : levels_(levels) {
    for (int level = 0; level < kLevelCount; ++level) {
      if (levels[level]) lowest_ = level;
    }
  }

  std::string write(const Node& top) {
    text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<settings version=\"1\">\n";
    writeChildren(top, 1);
    text_ += "</settings>\n";
    return std::move(text_);
  }

 private:
  void writeChildren(const Node& node, int indent) {
    for (const EntryPtr& child : node.childrenByName()) {
      if (child->isKey()) {
        writeKey(static_cast<const Key&>(*child), indent);
      } else {
        open("<node name=\"" + child->name() + '"', indent);
        writeDefinition(*child, indent + 1);
        writeChildren(static_cast<const Node&>(*child), indent + 1);
        open("</node>\n", indent);
      }
    }
  }

  void writeKey(const Key& key, int indent) {
    open("<key name=\"" + key.name() + '"', indent);
    if (key.kind() != boostany::kNoValue) {
      text_ += " type=\"" + std::string(boostany::kindName(key.kind())) + '"';
    }
    writeDefinition(key, indent + 1);
    for (int level = 0; level < kLevelCount; ++level) {
      if (levels_[level] && !key.value(level).empty()) writeValue(key, level, indent + 1);
    }
    open("</key>\n", indent);
  }

  // Writes the rest of the tag, and the elements before the content.
  void writeDefinition(const Entry& entry, int indent) {
    const SettingDescription texts = ownDescriptionOf(entry);
    writeLock(entry);
    writeAttribute(entry, "title", texts.title);
    writeAttribute(entry, "unit", texts.unit);
    writeAttribute(entry, "deprecated", texts.deprecated);
    writeAttribute(entry, "replaced-by", texts.replacedBy);
    writeAttribute(entry, "replaces", texts.replaces);
    text_ += ">\n";
    if (!texts.text.empty()) {
      open("<description>", indent);
      writeText(entry, texts.text, false);
      text_ += "</description>\n";
    }
    if (texts.choices.empty()) return writeValidator(entry, indent);
    open("<choices>\n", indent);
    for (const SettingChoice& choice : texts.choices) {
      open("<choice value=\"", indent + 1);
      writeText(entry, choice.value, true);
      text_ += '"';
      writeAttribute(entry, "label", choice.label);
      text_ += "/>\n";
    }
    open("</choices>\n", indent);
  }

  void writeLock(const Entry& entry) {
    const auto [lock, level] = entry.lock();
    if (!lock || level != lowest_) return;
    text_ += " locked=\"true\"";
    writeAttribute(entry, "reason", *boostany::textOfValue(lock->reason));
  }

  // Writes an attribute unless its text is empty.
  void writeAttribute(const Entry& entry, const std::string& name, const std::string& utf8) {
    if (utf8.empty()) return;
    text_ += ' ' + name + "=\"";
    writeText(entry, utf8, true);
    text_ += '"';
  }

  void writeValue(const Key& key, int level, int indent) {
    open("<value level=\"" + levelName(level) + "\">", indent);
    boostany::withTypeOfKind(key.kind(), [&](auto tag) {
      using Type = typename decltype(tag)::type;
      const Type& value = *boost::unsafe_any_cast<Type>(&key.value(level));
      if constexpr (boostany::kIsVector<Type>) {
        for (const boostany::ElementOf<Type>& item : value) {
          text_ += "<item>";
          writeText(key, boostany::textOfValue<boostany::ElementOf<Type>>(item), false);
          text_ += "</item>";
        }
      } else {
        writeText(key, boostany::textOfValue<Type>(value), false);
      }
    });
    text_ += "</value>\n";
  }

  void writeValidator(const Entry& entry, int indent) {
    const ValidatorChoice& choice = choiceOf(entry.validator());
    if (const JValidator* const java = boost::get<JValidator>(&choice)) {
      open("<java-validator class=\"", indent);
      writeText(entry, boostany::textOfValue(java->first()), true);
      text_ += "\" argument=\"";
      writeText(entry, boostany::textOfValue(java->second()), true);
      text_ += "\"/>\n";
    } else if (const ZValidator* const script = boost::get<ZValidator>(&choice)) {
      open("<script-validator>", indent);
      writeText(entry, boostany::textOfValue(script->text()), false);
      text_ += "</script-validator>\n";
    }
  }

  void open(const std::string& tag, int indent) {
    text_.append(2 * indent, ' ');
    text_ += tag;
  }

  // Escapes markup, and white space that an XML parser would change: carriage returns, and in
  // attributes tabs and line ends.
  void writeText(const Entry& entry, const std::optional<std::string>& utf8, bool isAttribute) {
    if (!utf8 || !isXmlText(*utf8)) {
      throw Failure<KORVEN::settings::core::ValidationFailure>(
          "\"" + entry.path() + "\" holds a character that XML cannot hold.");
    }
    for (const char c : *utf8) {
      switch (c) {
        case '&':
          text_ += "&amp;";
          break;
        case '<':
          text_ += "&lt;";
          break;
        case '>':
          text_ += "&gt;";
          break;
        case '"':
          text_ += isAttribute ? "&quot;" : "\"";
          break;
        case '\r':
          text_ += "&#13;";
          break;
        case '\n':
          text_ += isAttribute ? "&#10;" : "\n";
          break;
        case '\t':
          text_ += isAttribute ? "&#9;" : "\t";
          break;
        default:
          text_ += c;
      }
    }
  }

  const LevelSet levels_;
  int lowest_ = kSession;  // of levels_: a file's locks are read back as those of its level
  std::string text_;
};

}  // namespace

std::string settingsText(const Node& top, const LevelSet& levels) {
  return Writer(levels).write(top);
}

}  // namespace zlutil::settings::host
