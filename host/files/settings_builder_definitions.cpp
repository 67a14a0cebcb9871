#include <algorithm>
#include <boost/variant/get.hpp>

#include "base/text.h"
#include "host/files/settings_builder.h"
#include "host/tree/standard_validators.h"
#include "host/tree/subtree.h"
#include "service/constraints.h"

namespace zlutil::settings::host {
namespace {

constexpr char kSpaces[] = " \t\r\n";

void readTexts(const Attributes& attributes, SettingDescription& texts) {
  texts.title = attributes.textOf("title");
  texts.unit = attributes.textOf("unit");
  texts.deprecated = attributes.textOf("deprecated");
  texts.replacedBy = attributes.pathOf("replaced-by");
  texts.replaces = attributes.pathOf("replaces");
}

}  // namespace

// Changes the part of the entry's definition that the file supplies.
template <class Assign>
void SettingsBuilder::define(Entry& entry, const Assign& assign) {
  const DefinitionPtr present = entry.definition(rules_.level);
  const boost::intrusive_ptr<Definition> part(present ? new Definition(*present) : new Definition);
  assign(*part);
  entry.setDefinition(rules_.level, part);
}

// Changes the description of the entry, if there is anything in it.
template <class Assign>
void SettingsBuilder::describe(Entry& entry, const Assign& assign) {
  const DefinitionPtr present = entry.definition(rules_.level);
  const bool isDescribed = present && present->description;
  SettingDescription texts = isDescribed ? *present->description : SettingDescription();
  assign(texts);
  if (!isEmpty(texts)) {
    define(entry, [&](Definition& part) {
      part.description = std::make_shared<const SettingDescription>(std::move(texts));
    });
  }
}

// Reads the attributes that every entry may have beside its name.
void SettingsBuilder::readDefinition(Entry& entry, const Attributes& attributes) {
  setLock(entry, attributes.find("locked"), attributes.find("reason"));
  describe(entry, [&](SettingDescription& texts) { readTexts(attributes, texts); });
}

void SettingsBuilder::setLock(Entry& entry, const char* locked, const char* reason) {
  const std::string_view is = locked ? locked : "false";
  if (is != "true" && is != "false") {
    fail(quoted(is) +
         " is not a value of the attribute \"locked\", expected \"true\" or \"false\"");
  }
  if (is == "true") {
    define(entry, [&](Definition& part) {
      part.lock = Lock{narrow(reason ? reason : ""), position_()};
    });
    findFirstLevels(entry);
  } else if (reason) {
    fail("the attribute \"reason\" needs locked=\"true\"");
  }
}

void SettingsBuilder::setValidator(const ValidatorChoice& validator) {
  Entry& entry = openEntry();
  if (entry.validator()) fail("a second validator");
  if (hasContent_) fail("a validator stands before everything else in its entry");
  define(entry, [&](Definition& part) { part.validator = makeValidator(validator); });
}

void SettingsBuilder::beginJavaValidator(const char* const* list) {
  const Attributes attributes("java-validator", list, {"class", "argument"});
  const JValidator validator(narrow(attributes.require("class")),
                             narrow(attributes.require("argument")));
  setValidator(validator);
  if (const auto mistake = mistakeOf(validator, key_ ? key_->kind() : boostany::kNoValue)) {
    doubt(position_(), *mistake + "; every value will be refused");
  }
  states_.push_back(State::kEmpty);
}

void SettingsBuilder::beginScriptValidator(const char* const* list) {
  Attributes("script-validator", list, {});
  text_.clear();
  states_.push_back(State::kScriptValidator);
}

void SettingsBuilder::beginDescription(const char* const* list) {
  Attributes("description", list, {});
  if (hasContent_ || openEntry().validator()) {
    fail("a description stands before everything else in its entry");
  }
  text_.clear();
  states_.push_back(State::kDescription);
}

void SettingsBuilder::beginRange(const char* const* list) {
  const Attributes attributes("range", list, {"min", "max"});
  setConstraint(constraints::range(attributes.textOf("min"), attributes.textOf("max")));
}

void SettingsBuilder::beginLength(const char* const* list) {
  const Attributes attributes("length", list, {"min", "max"});
  setConstraint(constraints::length(attributes.textOf("min"), attributes.textOf("max")));
}

void SettingsBuilder::setConstraint(const JValidator& constraint) {
  setValidator(constraint);
  const auto mistake = mistakeOf(constraint, key_ ? key_->kind() : boostany::kNoValue);
  if (mistake) fail(base::displayFromNarrow(*mistake));
  states_.push_back(State::kEmpty);
}

void SettingsBuilder::beginChoices(const char* const* list) {
  Attributes("choices", list, {});
  choices_.clear();
  states_.push_back(State::kChoices);
}

void SettingsBuilder::beginChoice(const char* const* list) {
  const Attributes attributes("choice", list, {"value", "label"});
  const std::string value = attributes.require("value");
  if (value.find('|') != std::string::npos) {
    fail("a choice cannot have the character \"|\": " + quoted(value));
  }
  choices_.push_back({value, attributes.textOf("label")});
  states_.push_back(State::kEmpty);
}

void SettingsBuilder::endDescription() {
  std::string text;
  for (std::size_t at = 0; at < text_.size();) {
    const std::size_t begin = std::min(text_.find_first_not_of(kSpaces, at), text_.size());
    at = std::min(text_.find_first_of(kSpaces, begin), text_.size());
    if (at > begin && !text.empty()) text += ' ';
    text.append(text_, begin, at - begin);
  }
  describe(openEntry(), [&](SettingDescription& texts) { texts.text = text; });
}

void SettingsBuilder::endChoices() {
  if (choices_.empty()) fail("<choices> has no <choice>");
  std::vector<std::string> texts;
  for (const SettingChoice& choice : choices_) texts.push_back(narrow(choice.value));
  setConstraint(constraints::choices(texts));
  states_.pop_back();
  describe(openEntry(), [&](SettingDescription& all) { all.choices = std::move(choices_); });
}

// A value is judged by the constraint of its own key only: files of other levels may change those
// of the nodes above.
void SettingsBuilder::checkDefault(const boost::any& value) const {
  if (valueAt_.empty()) return;
  const ValidatorPtr validator = key_->validator();
  const JValidator* const java = boost::get<JValidator>(&choiceOf(validator));
  if (!java || mistakeOf(*java, key_->kind())) return;
  const auto judgement = judged(*java, value);
  if (judgement && *judgement) {
    doubt(valueAt_, "the value breaks the key's own constraint: " + **judgement);
  }
}

void SettingsBuilder::doubt(const std::string& position, const std::string& problem) const {
  if (rules_.onDoubt) rules_.onDoubt(position + ": " + problem);
}

}  // namespace zlutil::settings::host
