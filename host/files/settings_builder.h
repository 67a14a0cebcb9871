// Builds entries from the elements of a settings file, in the order of the file. Knows the format
// but not the XML parser: throws FormatError for everything that the format does not allow; the
// parser adds the position. Used by one parser, on one thread. settings_builder_definitions.cpp has
// the elements that complete an entry's definition: lock, description and validator.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/files/element_attributes.h"
#include "host/files/settings_parser.h"

namespace zlutil::settings::host {

class SettingsBuilder {
 public:
  // `position` returns the file with the line and column of the element that begins; narrow text.
  SettingsBuilder(const ParseRules& rules, std::function<std::string()> position);

  // `attributes` are name, value, name, value, ..., null.
  void beginElement(std::string_view element, const char* const* attributes);
  void endElement();
  void text(std::string_view text);

  // Takes the place of a beginElement() that has failed, so that what the element contains is
  // checked all the same. Returns false if the element can only be skipped.
  bool beginSubstitute(std::string_view element);

  // Returns the key whose <value> has just begun, or null.
  const Key* keyOfValue() const;

  // Returns the root, which is complete after the end of the document.
  NodePtr root() const { return nodes_.front(); }

 private:
  // The innermost open element; kScalar and kVector are a <value>.
  enum class State {
    kDocument,
    kSettings,
    kNode,
    kKey,
    kScalar,
    kVector,
    kItem,
    kEmpty,
    kScriptValidator,
    kDescription,
    kChoices
  };

  static const char* expectedIn(State state);

  void beginSettings(const char* const* attributes);
  void beginNode(const char* const* attributes);
  void pushNode(const NodePtr& node, const Node* earlier);
  void beginKey(const char* const* attributes);
  void beginValue(const char* const* attributes);
  void beginItem(const char* const* attributes);
  void beginJavaValidator(const char* const* attributes);
  void beginScriptValidator(const char* const* attributes);
  void beginDescription(const char* const* attributes);
  void beginRange(const char* const* attributes);
  void beginLength(const char* const* attributes);
  void beginChoices(const char* const* attributes);
  void beginChoice(const char* const* attributes);
  void endValue();
  void endItem();
  void endDescription();
  void endChoices();
  void checkName(const char* name) const;
  void checkAgainstEarlier(const char* name, bool isKey, int kind) const;
  void add(const EntryPtr& entry);
  template <class Assign>
  void define(Entry& entry, const Assign& assign);
  template <class Assign>
  void describe(Entry& entry, const Assign& assign);
  void readDefinition(Entry& entry, const Attributes& attributes);
  void setLock(Entry& entry, const char* locked, const char* reason);
  void setValidator(const ValidatorChoice& validator);
  void setConstraint(const JValidator& constraint);
  void checkDefault(const boost::any& value) const;
  void doubt(const std::string& position, const std::string& problem) const;
  Entry& openEntry() { return key_ ? static_cast<Entry&>(*key_) : *nodes_.back(); }
  bool keepsText() const;

  const ParseRules rules_;
  const std::function<std::string()> position_;
  std::vector<State> states_{State::kDocument};
  std::vector<NodePtr> nodes_;             // the open nodes, the root first
  std::vector<const Node*> earlierNodes_;  // the same nodes of earlier files, or null
  KeyPtr key_;                             // the open key
  bool hasContent_ = false;                // of the open entry
  int level_ = kFactory;                   // of the open value
  std::string valueAt_;                    // the position of the open value
  std::vector<SettingChoice> choices_;     // of the open element
  boost::any vector_;                      // the open value if it is a vector
  std::string text_;                       // of the open scalar value, item or script
};

}  // namespace zlutil::settings::host
