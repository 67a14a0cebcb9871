// The elements of a settings file, as they come, turned into entries. Knows the format but not the
// XML parser: what the format does not allow is thrown as a FormatError, and whoever knows the
// position turns it into a failure. Used by one parser, on one thread.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/files/settings_parser.h"

namespace zlutil::settings::host {

// What was found and what was expected; standard UTF-8.
class FormatError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class SettingsBuilder {
 public:
  explicit SettingsBuilder(const ParseRules& rules);

  // `attributes` is name, value, name, value, ..., null.
  void beginElement(std::string_view element, const char* const* attributes);
  void endElement();
  void text(std::string_view text);

  // The root; complete when the document has been.
  NodePtr root() const { return nodes_.front(); }

 private:
  enum class In { kDocument, kSettings, kNode, kKey, kValue, kItem, kScript, kJava };

  void beginSettings(const char* const* attributes);
  void beginNode(const char* const* attributes);
  void beginKey(const char* const* attributes);
  void beginValue(const char* const* attributes);
  void beginJavaValidator(const char* const* attributes);
  void endValue();
  void endItem();
  void checkName(const char* name) const;
  void checkAgainstEarlier(const char* name, bool isKey, int kind) const;
  void add(const EntryPtr& entry);
  void guardWith(const ValidatorChoice& validator);
  bool isVector() const;
  bool keepsText() const;

  const ParseRules rules_;
  std::vector<In> in_{In::kDocument};
  std::vector<NodePtr> nodes_;          // the open nodes, the root first
  std::vector<const Node*> alongside_;  // their counterparts; null where there is none
  KeyPtr key_;                          // the open key
  bool hasContent_ = false;             // whether the open entry has had anything in it
  int level_ = kFactory;                // of the open value
  boost::any vector_;                   // the open value when it is a vector
  std::string text_;                    // of the open scalar value, item or script
};

}  // namespace zlutil::settings::host
