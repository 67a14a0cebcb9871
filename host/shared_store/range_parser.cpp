// parseRange() of etcd_messages.h. A level may have 100,000 keys, so the answer is read as it is
// parsed, and not made into a JSON object first.
#include <charconv>
#include <nlohmann/json.hpp>

#include "host/shared_store/base64.h"
#include "host/shared_store/etcd_messages.h"

namespace zlutil::settings::host {
namespace {

using nlohmann::json;

// Receives the parts of the text, and keeps those of an answer. Each function returns false if it
// is none.
class RangeReader {
 public:
  // Returns the answer, after all of the text.
  std::optional<RangeAnswer> take() {
    if (!hasHeader_) return std::nullopt;
    return std::move(answer_);
  }

  bool null() { return !isItem(); }
  bool boolean(bool value) {
    if (depth_ == 1 && name_ == "more") answer_.hasMore = value;
    return isUnknown();
  }
  bool number_integer(json::number_integer_t) { return isUnknown(); }
  bool number_float(json::number_float_t, const std::string&) { return isUnknown(); }
  bool number_unsigned(json::number_unsigned_t value) {
    std::int64_t* const number = numberHere();
    if (!number) return isUnknown();
    *number = static_cast<std::int64_t>(value);
    return *number >= 0;
  }
  bool binary(json::binary_t&) { return false; }

  bool string(std::string& text) {
    if (std::int64_t* const number = numberHere()) {
      const char* const end = text.data() + text.size();
      const auto [stop, error] = std::from_chars(text.data(), end, *number);
      return error == std::errc() && stop == end && *number >= 0;
    }
    if (std::string* const bytes = bytesHere()) {
      std::optional<std::string> decoded = bytesFromBase64(text);
      if (!decoded) return false;
      *bytes = std::move(*decoded);
      return true;
    }
    if (isIn(kHeader, 2) && name_ == "cluster_id") answer_.header.cluster = text;
    return isUnknown();
  }

  bool key(std::string& name) {
    name_ = name;
    if (depth_ == 1) part_ = name == "kvs" ? kItems : name == "header" ? kHeader : kOther;
    return true;
  }

  bool start_object(std::size_t) {
    if (depth_ == 1 && part_ == kHeader) hasHeader_ = true;
    if (isItem()) {
      answer_.found.emplace_back();
    } else if (!isUnknown()) {
      return false;
    }
    ++depth_;
    return true;
  }
  bool end_object() {
    const bool isWhole = !isIn(kItems, 3) || !answer_.found.back().key.empty();
    --depth_;
    return isWhole;
  }
  bool start_array(std::size_t) {
    const bool isList = part_ == kItems && depth_ == 1;
    if (depth_ == 0 || (!isList && !isUnknown())) return false;
    ++depth_;
    return true;
  }
  bool end_array() {
    --depth_;
    return true;
  }

  bool parse_error(std::size_t, const std::string&, const json::exception&) { return false; }

 private:
  enum Part { kOther, kHeader, kItems };

  bool isIn(Part part, int depth) const { return part_ == part && depth_ == depth; }
  // Returns whether an element of the list of items comes next.
  bool isItem() const { return isIn(kItems, 2); }
  // Returns whether the value that comes next may have any form.
  bool isUnknown() { return !isItem() && !isIn(kItems, 1) && !numberHere() && !bytesHere(); }

  std::int64_t* numberHere() {
    if (depth_ == 1 && name_ == "count") return &answer_.count;
    if (isIn(kHeader, 2) && name_ == "revision") return &answer_.header.revision;
    if (!isIn(kItems, 3)) return nullptr;
    if (name_ == "create_revision") return &answer_.found.back().created;
    return name_ == "mod_revision" ? &answer_.found.back().modified : nullptr;
  }
  std::string* bytesHere() {
    if (!isIn(kItems, 3)) return nullptr;
    if (name_ == "key") return &answer_.found.back().key;
    return name_ == "value" ? &answer_.found.back().value : nullptr;
  }

  RangeAnswer answer_;
  Part part_ = kOther;
  int depth_ = 0;     // of objects and lists
  std::string name_;  // of the member
  bool hasHeader_ = false;
};

}  // namespace

std::optional<RangeAnswer> parseRange(std::string_view text) {
  RangeReader reader;
  if (!json::sax_parse(text, &reader)) return std::nullopt;
  return reader.take();
}

}  // namespace zlutil::settings::host
