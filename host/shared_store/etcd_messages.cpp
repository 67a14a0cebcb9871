#include "host/shared_store/etcd_messages.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "host/shared_store/base64.h"

namespace zlutil::settings::host {
namespace {

using nlohmann::json;

// Reading. The gateway writes 64-bit numbers as strings, and leaves out zeros and empty members.

// Returns the JSON object of the text, or null.
json objectIn(std::string_view text) {
  json parsed = json::parse(text, nullptr, false);
  return parsed.is_object() ? parsed : json();
}

// Returns the member, or null if it is missing.
const json& member(const json& object, const char* name) {
  static const json none;
  if (!object.is_object()) return none;
  const auto found = object.find(name);
  return found == object.end() ? none : *found;
}

bool readFlag(const json& object, const char* name) {
  const json& found = member(object, name);
  return found.is_boolean() && found.get<bool>();
}

// Returns false if the member is there and is no number that is not negative.
bool readNumber(const json& object, const char* name, std::int64_t& number) {
  const json& found = member(object, name);
  if (found.is_null()) return true;
  if (found.is_number_unsigned()) {
    const auto value = found.get<std::uint64_t>();
    number = static_cast<std::int64_t>(value);
    return number >= 0;
  }
  if (!found.is_string()) return false;
  const std::string& text = found.get_ref<const std::string&>();
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && stop == text.data() + text.size() && number >= 0;
}

bool readBytes(const json& object, const char* name, std::string& bytes) {
  const json& found = member(object, name);
  if (found.is_null()) return true;
  if (!found.is_string()) return false;
  std::optional<std::string> decoded = bytesFromBase64(found.get_ref<const std::string&>());
  if (!decoded) return false;
  bytes = std::move(*decoded);
  return true;
}

// Returns text of the server as narrow text on one line.
std::string shownText(const json& text) {
  constexpr std::size_t kLongest = 400;
  if (!text.is_string()) return {};
  const std::string& utf8 = text.get_ref<const std::string&>();
  return base::narrowFromUstring(base::to_ustring(utf8.substr(0, kLongest)));
}

bool readHeader(const json& answer, AnswerHeader& header) {
  const json& found = member(answer, "header");
  const json& cluster = member(found, "cluster_id");
  if (!found.is_object() || !readNumber(found, "revision", header.revision)) return false;
  if (cluster.is_string()) header.cluster = cluster.get<std::string>();
  return true;
}

bool readKeyValue(const json& object, KeyValue& item) {
  return object.is_object() && readBytes(object, "key", item.key) &&
         readBytes(object, "value", item.value) &&
         readNumber(object, "create_revision", item.created) &&
         readNumber(object, "mod_revision", item.modified) && !item.key.empty();
}

bool readKeyValues(const json& range, std::vector<KeyValue>& found) {
  const json& list = member(range, "kvs");
  if (list.is_null()) return true;
  if (!list.is_array()) return false;
  found.reserve(found.size() + list.size());
  for (const json& object : list) {
    found.emplace_back();
    if (!readKeyValue(object, found.back())) return false;
  }
  return true;
}

bool readEvent(const json& object, WatchEvent& event) {
  const json& type = member(object, "type");
  if (type.is_string()) {
    if (type == "DELETE") {
      event.isDeletion = true;
    } else if (type != "PUT") {
      return false;
    }
  }
  return readKeyValue(member(object, "kv"), event.item);
}

// Reads both forms of errors: that of a request, and that of a stream.
std::optional<EtcdError> errorIn(const json& object) {
  const json& error = member(object, "error");
  const bool isOfStream = error.is_object();
  const json& message = isOfStream ? member(error, "message") : error;
  const json& code = isOfStream ? member(error, "grpc_code") : member(object, "code");
  if (!isOfStream && !message.is_string()) return std::nullopt;
  return EtcdError{code.is_number_integer() ? static_cast<int>(code.get<std::int64_t>()) : 0,
                   shownText(message)};
}

// Writing. Keys and values are base64, so nothing needs escapes.

void addMember(std::string& text, const char* name, std::string_view value) {
  if (text.back() != '{') text += ',';
  text += '"';
  text += name;
  text += "\":\"";
  text += value;
  text += '"';
}

void addNumber(std::string& text, const char* name, std::int64_t number) {
  if (number != 0) addMember(text, name, std::to_string(number));
}

void addRange(std::string& text, std::string_view key, std::string_view end) {
  addMember(text, "key", base64From(key));
  if (!end.empty()) addMember(text, "range_end", base64From(end));
}

}  // namespace

std::optional<EtcdError> parseError(std::string_view text) { return errorIn(objectIn(text)); }

std::optional<TxnAnswer> parseTxn(std::string_view text) {
  const json object = objectIn(text);
  TxnAnswer answer;
  if (!readHeader(object, answer.header)) return std::nullopt;
  answer.succeeded = readFlag(object, "succeeded");
  const json& responses = member(object, "responses");
  if (!responses.is_null() && !responses.is_array()) return std::nullopt;
  for (const json& response : responses) {
    if (!readKeyValues(member(response, "response_range"), answer.found)) return std::nullopt;
  }
  return answer;
}

std::optional<std::string> parseToken(std::string_view text) {
  const json object = objectIn(text);
  const json& token = member(object, "token");
  if (!token.is_string() || token.get_ref<const std::string&>().empty()) return std::nullopt;
  return token.get<std::string>();
}

std::optional<WatchAnswer> parseWatch(std::string_view text) {
  const json object = objectIn(text);
  WatchAnswer answer;
  if (const std::optional<EtcdError> error = errorIn(object)) {
    answer.isCanceled = true;
    answer.reason = error->message;
    return answer;
  }
  const json& result = member(object, "result");
  if (!readHeader(result, answer.header) ||
      !readNumber(result, "compact_revision", answer.compactedTo)) {
    return std::nullopt;
  }
  answer.isCreated = readFlag(result, "created");
  answer.isCanceled = readFlag(result, "canceled");
  answer.reason = shownText(member(result, "cancel_reason"));
  const json& events = member(result, "events");
  if (!events.is_null() && !events.is_array()) return std::nullopt;
  for (const json& event : events) {
    answer.events.emplace_back();
    if (!readEvent(event, answer.events.back())) return std::nullopt;
  }
  return answer;
}

std::string rangeEndOf(std::string_view prefix) {
  std::string end(prefix);
  while (!end.empty() && end.back() == '\xFF') end.pop_back();
  if (!end.empty()) ++end.back();
  return end;
}

std::string requestOf(const RangeRequest& range) {
  std::string text = "{";
  addRange(text, range.key, range.end);
  addNumber(text, "limit", range.limit);
  addNumber(text, "revision", range.revision);
  addNumber(text, "min_mod_revision", range.changedSince);
  return text + '}';
}

std::string watchRequest(std::string_view key, std::string_view end, std::int64_t from) {
  std::string text = "{\"create_request\":{";
  addRange(text, key, end);
  addNumber(text, "start_revision", from);
  return text + ",\"progress_notify\":true}}";
}

std::string tokenRequest(std::string_view user, std::string_view password) {
  const auto replace = json::error_handler_t::replace;
  return json{{"name", user}, {"password", password}}.dump(-1, ' ', false, replace);
}

void TxnRequest::require(std::string_view key, std::string_view end, std::int64_t known) {
  conditions_ += conditions_.empty() ? "{" : ",{";
  addRange(conditions_, key, end);
  conditions_ += ",\"target\":\"MOD\",\"result\":\"LESS\"";
  addNumber(conditions_, "mod_revision", known + 1);
  conditions_ += '}';
}

void TxnRequest::put(std::string_view key, std::string_view value) {
  operations_ += operations_.empty() ? "{\"request_put\":{" : ",{\"request_put\":{";
  addMember(operations_, "key", base64From(key));
  addMember(operations_, "value", base64From(value));
  operations_ += "}}";
}

void TxnRequest::erase(std::string_view key, std::string_view end) {
  operations_ += operations_.empty() ? "{" : ",{";
  operations_ += "\"request_delete_range\":{";
  addRange(operations_, key, end);
  operations_ += "}}";
}

std::string TxnRequest::text(const RangeRequest& otherwise) const {
  return "{\"compare\":[" + conditions_ + "],\"success\":[" + operations_ +
         "],\"failure\":[{\"request_range\":" + requestOf(otherwise) + "}]}";
}

}  // namespace zlutil::settings::host
