#include "tests/contract/service_contract.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using zlutil::settings::CValidator;
using zlutil::settings::JValidator;
using zlutil::settings::ZValidator;
using Reason = boost::optional<std::string>;

CValidator atMost(int limit) {
  return CValidator([limit](const auto&, const std::string& key, const boost::any& value) {
    return boost::any_cast<int>(value) <= limit ? Reason() : Reason(key + " is too large");
  });
}

using Node = boost::shared_ptr<const Settings>;

Reason throwing(const Node&, const std::string&, const boost::any&) {
  throw std::runtime_error("broken");
}

// A message for the user that is no std::exception.
struct OnlyForTheUser : IUserException {
  std::string GetMessageTxt() const override { return "for the user"; }
};

Reason lessThanFive(const std::string& text, const Node&, const std::string&,
                    const boost::any& value) {
  EXPECT_EQ(text, "k < 5");
  return boost::any_cast<int>(value) < 5 ? Reason() : Reason("no");
}

void refuse(const std::string& first, const std::string& second, const Node&, const std::string&,
            const boost::any&) {
  throw Failure<ValidationFailure>(first + " " + second);
}

TEST_P(ServiceContract, TheKeysValidatorElseThatOfTheNearestNodeChecksAValue) {
  const SettingsPtr outer = addNode(root, "outer", atMost(10));
  const SettingsPtr inner = addNode(addNode(outer, "between"), "inner", atMost(20));
  const SettingsPtr own = addKey(inner, "own", atMost(30));
  const SettingsPtr nearest = addKey(inner, "nearest");
  addKey(outer->getChild("between"), "far");
  const struct {
    SettingsPtr node;
    const char* key;
    int limit;
  } cases[] = {{inner, "own", 30}, {inner, "nearest", 20}, {outer->getChild("between"), "far", 10}};
  for (const auto& c : cases) {
    c.node->setAny(c.key, c.limit, "user");
    EXPECT_EQ(messageOf<CValidationError>([&] { c.node->setAny(c.key, c.limit + 1, "user"); }),
              c.key + std::string(" is too large"));
    EXPECT_EQ(intAt(c.node, c.key), c.limit);
  }
  const SettingsValues values = {{own, 1}, {nearest, 21}};
  const SettingsProblems expected = {{nearest->getPath(), "nearest is too large"}};
  EXPECT_EQ(root->validateMultiple(boost::make_iterator_range(values.begin(), values.end()), 0),
            expected);
  EXPECT_EQ(setAll(root, values, "user"), expected);
  EXPECT_EQ(intAt(inner, "own"), 30);
  inner->unset("own", "user");
}

TEST_P(ServiceContract, AValidatorReceivesTheNodeAndMayReadAndChangeSettings) {
  SettingsPtr seenNode;
  const SettingsPtr node = addNode(root, "n"), other = addKey(root, "other");
  addKey(node, "k", CValidator([&](const auto& at, const std::string& key, const boost::any&) {
           seenNode = boost::const_pointer_cast<Settings>(at);
           EXPECT_EQ(key, "k");
           root->setAny("other", 1, "session");
           return Reason();
         }));
  node->setAny("k", 1, "user");
  EXPECT_EQ(seenNode, node);
  EXPECT_EQ(intAt(root, "other"), 1);
  EXPECT_EQ(setAll(root, {{node->getChild("k"), 2}}, "user"), SettingsProblems());
}

TEST_P(ServiceContract, AValidatorThatThrowsRefusesTheValue) {
  addKey(root, "k", CValidator(&throwing));
  EXPECT_EQ(messageOf<CValidationError>([&] { root->setAny("k", 1, "user"); }), "broken");
  const SettingsPtr strange = addKey(
      root, "strange", CValidator([](const Node&, const std::string&, const boost::any& value) {
        if (boost::any_cast<int>(value) == 1) throw OnlyForTheUser();
        if (boost::any_cast<int>(value) == 2) throw 2;
        return Reason();
      }));
  const std::pair<int, std::string> refused[] = {{1, "for the user"}, {2, "unknown failure"}};
  for (const auto& [value, reason] : refused) {
    // The other values are still checked.
    EXPECT_EQ(setAll(root, {{root->getChild("k"), 1}, {strange, value}}, "user"),
              (SettingsProblems{{root->getChild("k")->getPath(), "broken"},
                                {strange->getPath(), reason}}));
  }
  EXPECT_FALSE(root->isSet("strange", ""));
}

TEST_P(ServiceContract, TheEvaluatorRunsAScriptAndWithoutOneItRefuses) {
  addKey(root, "k", ZValidator("k < 5"));
  ZValidator::setEvaluator({});
  EXPECT_NE(messageOf<ValidationFailure>([&] { root->setAny("k", 1, "user"); }).find("k < 5"),
            std::string::npos);
  ZValidator::setEvaluator(&lessThanFive);
  root->setAny("k", 4, "user");
  EXPECT_EQ(messageOf<ValidationFailure>([&] { root->setAny("k", 5, "user"); }), "no");
  ZValidator::setEvaluator({});
}

TEST_P(ServiceContract, TheProxyRunsAJavaValidator) {
  addKey(root, "k", JValidator("Range", "1..5"));
  JValidator::setJValProxy(&refuse);
  EXPECT_EQ(messageOf<ValidationFailure>([&] { root->setAny("k", 9, "user"); }), "Range 1..5");
  JValidator::clearFunctions();
}

}  // namespace
}  // namespace test
