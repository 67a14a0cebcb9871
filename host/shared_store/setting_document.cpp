#include "host/shared_store/setting_document.h"

#include <boost/variant/get.hpp>
#include <nlohmann/json.hpp>

#include "values/value_json.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using nlohmann::json;

constexpr char kNode[] = "node";

json jsonOfText(const std::string& narrow) { return boostany::jsonOfValue(narrow); }

// Returns false if the JSON is no text.
bool readText(const json& from, std::string& narrow) {
  const boost::any text = boostany::valueFromJson(boostany::kKindOf<std::string>, from);
  if (text.empty()) return false;
  narrow = boost::any_cast<std::string>(text);
  return true;
}

json jsonOfValidator(const ValidatorChoice& choice) {
  if (const auto* java = boost::get<JValidator>(&choice)) {
    return {{"java", json::array({jsonOfText(java->first()), jsonOfText(java->second())})}};
  }
  if (const auto* script = boost::get<ZValidator>(&choice)) {
    return {{"script", jsonOfText(script->text())}};
  }
  return {};
}

bool readValidator(const json& from, ValidatorChoice& choice) {
  std::string first, second;
  const auto java = from.find("java"), script = from.find("script");
  if (java != from.end() && java->is_array() && java->size() == 2 && readText((*java)[0], first) &&
      readText((*java)[1], second)) {
    choice = JValidator(first, second);
    return true;
  }
  if (script == from.end() || !readText(*script, first)) return false;
  choice = ZValidator(first);
  return true;
}

bool readType(const json& object, SettingDocument& document) {
  const auto type = object.find("type");
  if (type == object.end() || !type->is_string()) return false;
  const std::string& name = type->get_ref<const std::string&>();
  document.isNode = name == kNode;
  if (document.isNode || name == boostany::kindName(boostany::kNoValue)) return true;
  const std::optional<int> kind = boostany::kindOfName(name);
  if (kind) document.kind = *kind;
  return kind.has_value();
}

}  // namespace

std::string textOf(const SettingDocument& document, const DocumentOrigin& origin) {
  nlohmann::ordered_json object;
  object["type"] =
      document.isNode ? std::string(kNode) : std::string(boostany::kindName(document.kind));
  if (!document.value.empty()) object["value"] = boostany::jsonOfValue(document.value);
  const json validator = jsonOfValidator(document.validator);
  if (!validator.is_null()) object["validator"] = validator;
  object["by"] = origin.user;
  object["at"] = origin.time;
  object["on"] = origin.machine;
  object["commit"] = document.commit;
  return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::optional<SettingDocument> parseDocument(std::string_view text, std::string& reason) {
  const json object = json::parse(text, nullptr, false);
  SettingDocument document;
  if (!object.is_object()) {
    reason = "it is not a JSON object";
  } else if (!readType(object, document)) {
    reason = "it has no \"type\" that is known";
  } else if (const auto value = object.find("value");
             value != object.end() && !document.isNode &&
             (document.value = boostany::valueFromJson(document.kind, *value)).empty()) {
    reason = "its \"value\" is not of its \"type\"";
  } else if (const auto validator = object.find("validator");
             validator != object.end() && !readValidator(*validator, document.validator)) {
    reason = "its \"validator\" is not understood";
  } else {
    const auto commit = object.find("commit");
    if (commit != object.end() && commit->is_string()) document.commit = commit->get<std::string>();
    return document;
  }
  return std::nullopt;
}

}  // namespace zlutil::settings::host
