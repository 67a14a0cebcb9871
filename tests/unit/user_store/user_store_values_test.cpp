// The content of the user store: every value of every kind, definitions, and the text of the
// database.
#include <boost/variant/get.hpp>
#include <limits>

#include "host/user_store/sqlite_value.h"
#include "tests/support/user_store_fixture.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace test {
namespace {

using namespace zlutil::settings::host;
using zlutil::boostany::kindOfType;

template <class Type>
void addLimits(std::vector<boost::any>& values) {
  using Limits = std::numeric_limits<Type>;
  std::vector<Type> all = {Type(), Limits::lowest(), Limits::max()};
  if constexpr (std::is_floating_point_v<Type>) {
    for (const Type value :
         {-Type(), Limits::min(), Limits::denorm_min(), Limits::infinity(), -Limits::infinity(),
          Limits::quiet_NaN(), -Limits::quiet_NaN(), static_cast<Type>(0.1)}) {
      all.push_back(value);
    }
  }
  for (const Type value : all) values.push_back(value);
  values.push_back(all);
  values.push_back(std::vector<Type>());
}

std::vector<boost::any> valuesOfEveryKind() {
  std::vector<boost::any> values;
  zlutil::boostany::forEachKind([&](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (std::is_arithmetic_v<Type>) addLimits<Type>(values);
  });
  // The last three: U+0000, a lone surrogate, a pair of them in the narrow form.
  const std::vector<std::string> strings = {
      "",         "plain",          "a\"b\\c\n\t\x01",         "\xC3\xA9", "{\"bytes\":\"00\"}",
      "\xC0\x80", "x\xED\xA0\x80y", "\xED\xA0\xBD\xED\xB8\x80"};
  for (const std::string& string : strings) values.push_back(string);
  values.push_back(strings);
  values.push_back(std::vector<std::string>());
  return values;
}

TEST_F(UserStoreTest, EveryValueOfEveryKindComesBackExactly) {
  const std::vector<boost::any> values = valuesOfEveryKind();
  {
    const NodePtr root = open();
    for (std::size_t i = 0; i < values.size(); ++i) {
      const std::string name = "k" + std::to_string(i);
      addKey(root, name);
      root->setAny(name, values[i], "user");
    }
  }
  const NodePtr root = open();
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_TRUE(
        zlutil::boostany::sameValue(root->getValue("k" + std::to_string(i), "user"), values[i]))
        << i;
  }
}

TEST_F(UserStoreTest, ColumnsWithoutAValueOfTheKindAreRefused) {
  const std::pair<std::string, std::string> cases[] = {{"int", "x"},
                                                       {"int", ""},
                                                       {"byte", "128"},
                                                       {"boolean", "1"},
                                                       {"int[]", "[1,]"},
                                                       {"int[]", "[1"},
                                                       {"int[]", "1"},
                                                       {"int[]", "[1]x"},
                                                       {"string[]", "[\"a]"},
                                                       {"string[]", "[\"\\ud800\"]"},
                                                       {"string[]", "[\"a\", 1]"},
                                                       {"ubyte[]", "[-1]"},
                                                       {"byte[]", "[128]"},
                                                       {"long[]", "[9223372036854775808]"},
                                                       {"int[]", "[1.0]"},
                                                       {"float[]", "[1e39]"},
                                                       {"double[]", "[\"1\"]"},
                                                       {"string[]", "[{\"bytes\":\"0\"}]"},
                                                       {"int[]", "[{\"bytes\":\"31\"}]"},
                                                       {"double", "NaN:0"},
                                                       {"double", "NaN:zz"},
                                                       {"string", "\xFF"},
                                                       {"string", std::string("a\0", 2)},
                                                       {"string[]", "[\"\\x\"]"}};
  for (const auto& [kind, text] : cases) {
    EXPECT_TRUE(valueFromColumn(*zlutil::boostany::kindOfName(kind), text, false).empty())
        << kind << ' ' << text;
  }
  // A BLOB can only be a string.
  for (const char* kind : {"int", "boolean", "int[]", "string[]"}) {
    EXPECT_TRUE(valueFromColumn(*zlutil::boostany::kindOfName(kind), "1", true).empty()) << kind;
  }
}

TEST_F(UserStoreTest, ArraysMadeByTheDatabaseAreRead) {
  {
    const NodePtr root = open();
    for (const auto& [name, value] :
         {std::pair<const char*, boost::any>("texts", std::vector<std::string>{"old"}),
          {"numbers", std::vector<float>{1}},
          {"flags", std::vector<bool>{true}}}) {
      addKey(root, name);
      root->setAny(name, value, "user");
    }
  }
  shell()->execute(
      "UPDATE settings SET value = json_array('a' || char(10, 8, 127) || '/\"', char(233, 128512))"
      " WHERE path = 'texts';"
      "UPDATE settings SET value = json_array(-1, 2.5, 1e10) WHERE path = 'numbers';"
      "UPDATE settings SET value = '[ true ,\tfalse\n]' WHERE path = 'flags'");
  const NodePtr root = open();
  EXPECT_TRUE(zlutil::boostany::sameValue(
      root->getValue("texts", ""),
      std::vector<std::string>{"a\n\b\x7F/\"", "\xC3\xA9\xED\xA0\xBD\xED\xB8\x80"}));
  EXPECT_TRUE(zlutil::boostany::sameValue(root->getValue("numbers", ""),
                                          std::vector<float>{-1, 2.5, 1e10}));
  EXPECT_TRUE(
      zlutil::boostany::sameValue(root->getValue("flags", ""), std::vector<bool>{true, false}));
}

TEST_F(UserStoreTest, DefinitionsKeepKindAndValidator) {
  const std::string odd = "x\xED\xA0\x80y";
  {
    const NodePtr root = open();
    addKey(root, "java", zlutil::settings::JValidator("class", odd));
    addNode(root, "script", zlutil::settings::ZValidator("text"));
    addKey(root, "typed");
    root->setAny("typed", 1, "user");
    root->unset("typed", "user");
  }
  const NodePtr root = open();
  const auto choice = [&](const char* name) {
    return choiceOf(boost::static_pointer_cast<Entry>(root->getChild(name))->validator());
  };
  EXPECT_EQ(boost::get<zlutil::settings::JValidator>(choice("java")).second(), odd);
  EXPECT_EQ(boost::get<zlutil::settings::ZValidator>(choice("script")).text(), "text");
  EXPECT_EQ(root->getKeyType("typed"), kindOfType(typeid(int)));
}

TEST_F(UserStoreTest, TheDatabaseIsReadableInItsShell) {
  const NodePtr root = open();
  const SettingsPtr node = addNode(root, "editor");
  addKey(node, "title");
  addKey(node, "stops");
  node->setAny("title", std::string("caf\xC3\xA9 \xED\xA0\xBD\xED\xB8\x80"), "user");
  node->setAny("stops", std::vector<int>{2, 4}, "user");
  EXPECT_EQ(shell()->text("SELECT value FROM settings WHERE path = 'editor.title'"),
            "caf\xC3\xA9 \xF0\x9F\x98\x80");
  EXPECT_EQ(shell()->number("SELECT json_extract(value, '$[1]') FROM settings"
                            " WHERE path = 'editor.stops'"),
            4);
  root->removeNode("editor");
  EXPECT_EQ(shell()->number("SELECT (SELECT count(*) FROM settings) +"
                            " (SELECT count(*) FROM definitions)"),
            0);
  EXPECT_EQ(shell()->number("PRAGMA application_id"), 0x6E736574);
}

}  // namespace
}  // namespace test
