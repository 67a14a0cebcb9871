// Values as JSON (RFC 8259): exact, and readable for people.
//
//   number, boolean   plain; a float is the double of the same value
//   NaN, infinities   the string "NaN", "Infinity" or "-Infinity"; a NaN with other bits than the
//                     quiet NaN is "NaN:<bits in hex>"
//   string            a string; one that standard UTF-8 without U+0000 cannot hold (a lone
//                     surrogate, U+0000) is {"bytes":"<hex of the narrow text>"}
//   vector            an array of these
//
// Pure functions; any thread.
#pragma once

#include <boost/any.hpp>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace zlutil::boostany {

// Returns the standard UTF-8 that converts back to the same narrow text and has no U+0000; nothing
// if there is none.
std::optional<std::string> exactUtf8(const std::string& narrow);

// The value must be of one of the kinds.
nlohmann::json jsonOfValue(const boost::any& value);

// Returns an empty any if the JSON is no value of the kind.
boost::any valueFromJson(int kind, const nlohmann::json& json);

}  // namespace zlutil::boostany
