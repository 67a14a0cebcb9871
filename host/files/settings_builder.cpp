#include "host/files/settings_builder.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cstring>
#include <initializer_list>

#include "base/text.h"
#include "service/identifier.h"
#include "service/z_settings.h"
#include "values/value_kinds.h"
#include "values/value_text.h"

namespace zlutil::settings::host {
namespace {

// Lists all types, as a file names them.
std::string typeNames() {
  std::string names;
  for (int kind = boostany::kFirstKind; kind < boostany::kFirstKind + boostany::kElementKinds;
       ++kind) {
    names += (names.empty() ? "" : ", ") + std::string(boostany::kindName(kind));
  }
  return names + ", each also with \"[]\" after it";
}

bool isSpace(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

[[noreturn]] void failOnValue(int kind, std::string_view text) {
  fail(quoted(text) + " is not a value of the type " + std::string(boostany::kindName(kind)));
}

}  // namespace

SettingsBuilder::SettingsBuilder(const ParseRules& rules, std::function<std::string()> position)
    : rules_(rules), position_(std::move(position)) {
  nodes_.push_back(boost::make_shared<Node>(rules.tree, kStandaloneRootName, true, ValidatorPtr()));
  earlierNodes_.push_back(rules.earlier);
}

void SettingsBuilder::beginElement(std::string_view element, const char* const* attributes) {
  struct Rule {
    State state;  // in which the element may begin
    std::string_view element;
    void (SettingsBuilder::*begin)(const char* const*);
  };
  static constexpr Rule kRules[] = {
      {State::kDocument, "settings", &SettingsBuilder::beginSettings},
      {State::kSettings, "node", &SettingsBuilder::beginNode},
      {State::kSettings, "key", &SettingsBuilder::beginKey},
      {State::kNode, "node", &SettingsBuilder::beginNode},
      {State::kNode, "key", &SettingsBuilder::beginKey},
      {State::kKey, "value", &SettingsBuilder::beginValue},
      {State::kVector, "item", &SettingsBuilder::beginItem},
      {State::kChoices, "choice", &SettingsBuilder::beginChoice},
      // A key may have these too.
      {State::kNode, "java-validator", &SettingsBuilder::beginJavaValidator},
      {State::kNode, "script-validator", &SettingsBuilder::beginScriptValidator},
      {State::kNode, "description", &SettingsBuilder::beginDescription},
      {State::kNode, "range", &SettingsBuilder::beginRange},
      {State::kNode, "length", &SettingsBuilder::beginLength},
      {State::kNode, "choices", &SettingsBuilder::beginChoices},
  };
  const State state = states_.back();
  for (const Rule& rule : kRules) {
    const bool isNodes = rule.element == "node" || rule.element == "key";
    const bool fits =
        rule.state == state || (state == State::kKey && rule.state == State::kNode && !isNodes);
    if (fits && rule.element == element) return (this->*rule.begin)(attributes);
  }
  fail("found the element " + quoted(element) + ", expected " + expectedIn(state));
}

bool SettingsBuilder::beginSubstitute(std::string_view element) {
  const State state = states_.back();
  const bool mayHoldNodes = state == State::kSettings || state == State::kNode;
  if (element != "node" || !mayHoldNodes || nodes_.size() > kMaxDepth) return false;
  pushNode(boost::make_shared<Node>(rules_.tree, "substitute", true, ValidatorPtr()), nullptr);
  return true;
}

const Key* SettingsBuilder::keyOfValue() const {
  const State state = states_.back();
  return state == State::kScalar || state == State::kVector ? key_.get() : nullptr;
}

const char* SettingsBuilder::expectedIn(State state) {
  switch (state) {
    case State::kDocument:
      return "<settings>";
    case State::kSettings:
      return "<node> or <key>";
    case State::kNode:
      return "<node>, <key>, <description> or a validator";
    case State::kKey:
      return "<value>, <description> or a validator";
    case State::kScalar:
    case State::kVector:
      return "the value's text, or <item> for a vector";
    case State::kItem:
    case State::kScriptValidator:
    case State::kDescription:
      return "text only";
    case State::kChoices:
      return "<choice>";
    case State::kEmpty:
      break;
  }
  return "nothing here";
}

void SettingsBuilder::endElement() {
  const State state = states_.back();
  states_.pop_back();
  switch (state) {
    case State::kSettings:
      nodes_.back()->sortChildren();
      break;
    case State::kNode:
      nodes_.back()->sortChildren();
      nodes_.pop_back();
      earlierNodes_.pop_back();
      hasContent_ = true;
      break;
    case State::kKey:
      key_.reset();
      hasContent_ = true;
      break;
    case State::kScalar:
    case State::kVector:
      endValue();
      break;
    case State::kItem:
      endItem();
      break;
    case State::kScriptValidator:
      setValidator(ZValidator(narrow(text_)));
      break;
    case State::kDescription:
      endDescription();
      break;
    case State::kChoices:
      endChoices();
      break;
    case State::kDocument:
    case State::kEmpty:
      break;
  }
}

void SettingsBuilder::text(std::string_view text) {
  if (keepsText()) {
    text_ += text;
  } else if (!isSpace(text)) {
    fail("text cannot stand here: " + quoted(text));
  }
}

void SettingsBuilder::beginSettings(const char* const* list) {
  const char* const version = Attributes("settings", list, {"version"}).require("version");
  if (std::strcmp(version, "1") != 0) {
    fail("version " + quoted(version) + " of the format is not known, expected \"1\"");
  }
  states_.push_back(State::kSettings);
}

void SettingsBuilder::beginNode(const char* const* list) {
  const Attributes attributes("node", list,
                              {"name", "locked", "reason", "title", "deprecated", "replaced-by"});
  const char* const name = attributes.require("name");
  checkName(name);
  checkAgainstEarlier(name, false, boostany::kNoValue);
  const auto node = boost::make_shared<Node>(rules_.tree, name, true, ValidatorPtr());
  if (attributes.count() > 1) readDefinition(*node, attributes);
  add(node);
  const Node* const earlier = earlierNodes_.back();
  pushNode(node, earlier ? static_cast<const Node*>(earlier->child(name)) : nullptr);
}

void SettingsBuilder::pushNode(const NodePtr& node, const Node* earlier) {
  earlierNodes_.push_back(earlier);
  nodes_.push_back(node);
  hasContent_ = false;
  states_.push_back(State::kNode);
}

void SettingsBuilder::beginKey(const char* const* list) {
  const Attributes attributes("key", list,
                              {"name", "type", "locked", "reason", "title", "unit", "deprecated",
                               "replaced-by", "replaces"});
  const char* const name = attributes.require("name");
  checkName(name);
  int kind = boostany::kNoValue;
  const char* const type = attributes.find("type");
  if (type) {
    const std::optional<int> known = boostany::kindOfName(type);
    if (!known) fail("unknown type " + quoted(type) + ", expected one of " + typeNames());
    kind = *known;
  }
  checkAgainstEarlier(name, true, kind);
  key_ = boost::make_shared<Key>(rules_.tree, name, kind, true, ValidatorPtr());
  if (attributes.count() > (type ? 2 : 1)) readDefinition(*key_, attributes);
  add(key_);
  if (const char* const former = attributes.find("replaces")) {
    if (rules_.onFormerPath) rules_.onFormerPath(*key_, former);
  }
  hasContent_ = false;
  states_.push_back(State::kKey);
}

void SettingsBuilder::beginValue(const char* const* list) {
  const char* const name = Attributes("value", list, {"level"}).find("level");
  level_ = rules_.level;
  if (name) {
    const std::optional<int> level = findLevel(name);
    if (!level) {
      fail("there is no level " + quoted(name) +
           ", expected \"session\", \"user\", \"workgroup\" or \"factory\"");
    }
    if (rules_.isOnlyLevel && *level != rules_.level) {
      fail("a file of the level " + levelName(rules_.level) + " gives no value at the level " +
           quoted(name));
    }
    level_ = *level;
  }
  if (key_->kind() == boostany::kNoValue) fail("a key with a value needs the attribute \"type\"");
  if (!key_->value(level_).empty()) {
    fail("a second value at the level " + quoted(levelName(level_)));
  }
  valueAt_ = rules_.onDoubt && key_->validator() ? position_() : std::string();
  states_.push_back(State::kScalar);
  boostany::withTypeOfKind(key_->kind(), [this](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (boostany::kIsVector<Type>) {
      vector_ = Type();
      states_.back() = State::kVector;
    }
  });
  text_.clear();
  hasContent_ = true;
}

void SettingsBuilder::beginItem(const char* const* list) {
  Attributes("item", list, {});
  text_.clear();
  states_.push_back(State::kItem);
}

void SettingsBuilder::endValue() {
  boost::any value;
  boostany::withTypeOfKind(key_->kind(), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (boostany::kIsVector<Type>) {
      value.swap(vector_);
    } else {
      auto parsed = boostany::valueFromText<Type>(text_);
      if (!parsed) failOnValue(key_->kind(), text_);
      value = boost::any(std::move(*parsed));
    }
  });
  checkDefault(value);
  key_->replaceValue(level_, value);
}

void SettingsBuilder::endItem() {
  boostany::withTypeOfKind(key_->kind(), [this](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (boostany::kIsVector<Type>) {
      using Element = boostany::ElementOf<Type>;
      auto parsed = boostany::valueFromText<Element>(text_);
      if (!parsed) failOnValue(boostany::kKindOf<Element>, text_);
      boost::unsafe_any_cast<Type>(&vector_)->push_back(std::move(*parsed));
    }
  });
}

void SettingsBuilder::checkName(const char* name) const {
  if (!isIdentifierName(name)) {
    fail(quoted(name) + " is not a name: expected a letter, then letters, digits and " +
         "underscores, at most " + std::to_string(kMaxNameLength));
  }
  if (nodes_.size() > static_cast<std::size_t>(kMaxDepth)) {
    fail("nodes are nested more than " + std::to_string(kMaxDepth) + " deep");
  }
}

void SettingsBuilder::checkAgainstEarlier(const char* name, bool isKey, int kind) const {
  const Entry* const earlier = earlierNodes_.back() ? earlierNodes_.back()->child(name) : nullptr;
  if (!earlier) return;
  if (earlier->isKey() != isKey) {
    fail(quoted(name) + (isKey ? " is a node" : " is a key") + " in an earlier file");
  }
  if (!isKey || kind == boostany::kNoValue) return;
  const int before = static_cast<const Key*>(earlier)->kind();
  if (before != boostany::kNoValue && before != kind) {
    fail(quoted(name) + " has the type " + std::string(boostany::kindName(before)) +
         " in an earlier file, not " + std::string(boostany::kindName(kind)));
  }
}

void SettingsBuilder::add(const EntryPtr& entry) {
  if (rules_.isOnlyLevel) entry->setDefinedAt(rules_.level);
  if (!nodes_.back()->appendChild(entry)) fail("a second entry named " + quoted(entry->name()));
}

bool SettingsBuilder::keepsText() const {
  const State state = states_.back();
  return state == State::kScalar || state == State::kItem || state == State::kScriptValidator ||
         state == State::kDescription;
}

}  // namespace zlutil::settings::host
