// Values of settings as the texts and the JSON that the program prints and takes. Texts are in
// standard UTF-8. Throws ProgramError for a text that is not of the type.
#pragma once

#include <boost/any.hpp>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace command_line {

// Keeps the order in which members are added.
using Json = nlohmann::ordered_json;

// Returns the text of a value, or those of its elements if it is an array.
std::vector<std::string> textsOf(const boost::any& value);

// Returns the value on one line: as it is printed in a list.
std::string lineOf(const boost::any& value);

// Returns null for an empty value. NaN and the infinities are texts, because JSON lacks them.
Json jsonOf(const boost::any& value);

// Returns the name of the kind, such as "int[]"; empty for a value that is none.
std::string typeNameOf(int kind);

// Returns the number of the type that is named.
int kindOfTypeName(const std::string& name);

// Returns the value of a kind that the texts stand for: one text, or for an array any number.
boost::any valueOf(int kind, const std::vector<std::string>& texts);

}  // namespace command_line
