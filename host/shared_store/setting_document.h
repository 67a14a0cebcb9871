// The JSON document that a key of etcd holds for one entry of the tree:
//
//   {"type":"int","value":14,"by":"anna","at":"2026-03-01T12:00:00Z","on":"pc17",
//    "validator":{"java":["<class>","<argument>"]},"comment":"..."}
//
//   type       the kind of the key's values, "none" if it has none yet, or "node"
//   value      the value as JSON (values/value_json.h); none if it is missing
//   validator  {"java":[first, second]} or {"script":text}; none if it is missing
//   by, at, on the user who wrote it, when (UTC) and on which machine; for people
//   comment    for people; lost when a program writes the document
//   commit     names the transaction that wrote it
//
// Other members are ignored. Pure functions; any thread.
#pragma once

#include <boost/any.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "service/validators.h"

namespace zlutil::settings::host {

struct SettingDocument {
  bool isNode = false;
  int kind = 0;  // kNoValue for a node, and for a key whose kind is not fixed
  boost::any value;
  ValidatorChoice validator;
  std::string commit;
};

// The origin of a document; standard UTF-8.
struct DocumentOrigin {
  std::string user, time, machine;
};

// Returns the document as JSON. A C++ validator is code and is left out.
std::string textOf(const SettingDocument& document, const DocumentOrigin& origin);

// Returns nothing, with `reason`, if the text is no document.
std::optional<SettingDocument> parseDocument(std::string_view text, std::string& reason);

}  // namespace zlutil::settings::host
