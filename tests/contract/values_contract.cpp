#include "service/levels.h"
#include "tests/contract/service_contract.h"
#include "values/value_kinds.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using zlutil::boostany::forEachKind;
using zlutil::boostany::kKindOf;

TEST_P(ServiceContract, TheEffectiveValueIsThatOfTheHighestLevelThatHasOne) {
  addKey(root, "k");
  EXPECT_TRUE(root->getValue("k", "").empty());
  EXPECT_FALSE(root->isSet("k", ""));
  root->setAny("k", 2, "user");
  EXPECT_EQ(intAt(root, "k"), 2);
  root->setAny("k", 1, "session");
  EXPECT_EQ(intAt(root, "k"), 1);
  EXPECT_EQ(intAt(root, "k", "user"), 2);
  EXPECT_EQ(intAt(root, "k", "factory"), -1);
  root->unset("k", "session");
  EXPECT_EQ(intAt(root, "k"), 2);
  EXPECT_FALSE(root->isSet("k", "session"));
  EXPECT_TRUE(root->isSet("k", "user"));
}

TEST_P(ServiceContract, TheLevelsAreListedInPriorityOrder) {
  using Manager = zlutil::settings::SettingsLevelManager;
  EXPECT_EQ(Manager::getSettingsLevelManagerInstance()->getAllLevelNames(),
            (Names{"session", "user", "workgroup", "factory"}));
}

TEST_P(ServiceContract, EveryKindOfValueComesBackAndFixesTheKeysType) {
  forEachKind([&](auto tag) {
    using Type = typename decltype(tag)::type;
    const std::string name = "k" + std::to_string(kKindOf<Type>);
    Type value{};
    if constexpr (zlutil::boostany::kIsVector<Type>) value.resize(2);
    addKey(root, name);
    EXPECT_FALSE(root->getKeyType(name));
    root->setAny(name, value, "user");
    EXPECT_EQ(boost::any_cast<Type>(root->getValue(name, "")), value);
    EXPECT_EQ(root->getKeyType(name), boost::make_optional(kKindOf<Type>));
    // The type stays after the value has gone.
    root->unset(name, "user");
    EXPECT_EQ(root->getKeyType(name), boost::make_optional(kKindOf<Type>));
  });
}

TEST_P(ServiceContract, AValueOfAnotherTypeIsRefusedWithBothTypesNamed) {
  addKey(root, "k");
  root->setAny("k", 5, "user");
  const std::string message =
      messageOf<ValidationFailure>([&] { root->setAny("k", std::string("x"), "session"); });
  EXPECT_NE(message.find("int"), std::string::npos) << message;
  EXPECT_NE(message.find("string"), std::string::npos) << message;
  messageOf<ValidationFailure>([&] { root->setAny("k", 5L, "user"); });
  messageOf<ValidationFailure>([&] { root->setAny("k", std::make_pair(1, 2), "user"); });
  messageOf<DefaultValidationFailedOnVoidType>([&] { root->setAny("k", boost::any(), "user"); });
  EXPECT_EQ(intAt(root, "k"), 5);
  EXPECT_FALSE(root->isSet("k", "session"));
}

TEST_P(ServiceContract, AMissingEntryAndAWrongLevelHaveTheirFailures) {
  addNode(root, "n");
  addKey(root, "k");
  messageOf<NoSuchKey>([&] { root->getValue("x", ""); });
  messageOf<NoSuchKey>([&] { root->isSet("x", ""); });
  messageOf<NoSuchKey>([&] { root->getKeyType("x"); });
  messageOf<NoSuchKey>([&] { root->setAny("x", 1, "user"); });
  messageOf<NoSuchKey>([&] { root->unset("x", "user"); });
  messageOf<NotAKeyName>([&] { root->getValue("n", ""); });
  messageOf<NotAKeyName>([&] { root->setAny("n", 1, "user"); });
  messageOf<NotAKeyName>([&] { root->unset("n", "user"); });
  messageOf<NoSuchKey>([&] { root->getChild("k")->getValue("x", ""); });
  messageOf<UnSupportedLevel>([&] { root->getValue("k", "nowhere"); });
  messageOf<UnSupportedLevel>([&] { root->isSet("k", "nowhere"); });
  messageOf<UnSupportedLevel>([&] { root->setAny("k", 1, "nowhere"); });
  messageOf<UnSupportedLevel>([&] { root->setAny("k", 1, ""); });
  messageOf<UnSupportedLevel>([&] { root->unset("k", ""); });
  const std::string unset =
      messageOf<ValueNotDefinedForGivenLevel>([&] { root->unset("k", "user"); });
  EXPECT_NE(unset.find("user"), std::string::npos) << unset;
}

TEST_P(ServiceContract, SettingTheStoredValueAgainPublishesNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  addKey(root, "a");
  addKey(root, "b");
  root->setAny("a", nan, "user");
  root->setAny("b", std::vector<double>{0.0, nan}, "user");
  Listener listener(root);
  root->setAny("a", nan, "user");
  root->setAny("b", std::vector<double>{0.0, nan}, "user");
  EXPECT_EQ(setAll(root, {{root->getChild("a"), nan}}, "user"), SettingsProblems());
  EXPECT_EQ(listener.heard(), Names());
  root->setAny("b", std::vector<double>{-0.0, nan}, "user");
  EXPECT_EQ(listener.heard(), Names{"changed b"});
}

TEST_P(ServiceContract, ManyValuesAreSetAsOneOperationWithOneEventPerKey) {
  const SettingsPtr a = addKey(root, "a"), b = addKey(root, "b");
  Listener listener(root);
  EXPECT_EQ(setAll(root, {{b, 1}, {a, 2}, {b, 3}}, "user"), SettingsProblems());
  EXPECT_EQ(intAt(root, "a"), 2);
  EXPECT_EQ(intAt(root, "b"), 3);
  EXPECT_EQ(listener.heard(), (Names{"changed b", "changed a"}));
}

TEST_P(ServiceContract, AProblemWithOneValueKeepsAllFromBeingSet) {
  const SettingsPtr node = addNode(root, "n");
  const SettingsPtr good = addKey(node, "good"), bad = addKey(node, "bad"),
                    fresh = addKey(node, "f");
  node->setAny("bad", 1, "user");
  Listener listener(root);
  const SettingsValues values = {{good, 1},    {bad, std::string("x")}, {node, 1}, {fresh, 1},
                                 {fresh, 2.0}, {good, boost::any()}};
  const SettingsProblems problems = setAll(root, values, "user");
  ASSERT_EQ(problems.size(), 4u);
  EXPECT_EQ(problems[0].first, bad->getPath());
  EXPECT_EQ(problems[1].first, node->getPath());
  EXPECT_EQ(problems[2].first, fresh->getPath());
  EXPECT_EQ(problems[3].first, good->getPath());
  for (const auto& problem : problems) EXPECT_NE(problem.second, "");
  EXPECT_FALSE(node->isSet("good", ""));
  EXPECT_FALSE(node->getKeyType("f"));
  EXPECT_EQ(listener.heard(), Names());
  EXPECT_EQ(root->validateMultiple(boost::make_iterator_range(values.begin(), values.end()), 0),
            problems);
}

TEST_P(ServiceContract, SettingManyValuesNeverThrows) {
  const SettingsPtr a = addKey(root, "a");
  EXPECT_EQ(setAll(root, {}, "nowhere"), SettingsProblems());
  EXPECT_EQ(setAll(root, {{a, 1}}, "nowhere").size(), 1u);
  EXPECT_EQ(setAll(root, {{nullptr, 1}}, "user").size(), 1u);
  const SettingsPtr elsewhere = GetParam().makeRoot();
  EXPECT_EQ(setAll(root, {{addKey(elsewhere, "a"), 1}}, "user").size(), 1u);
  EXPECT_FALSE(elsewhere->isSet("a", ""));
  root->removeKey("a");
  EXPECT_EQ(setAll(root, {{a, 1}}, "user").size(), 1u);
}

TEST_P(ServiceContract, ThePathOfAKeyResolvesFromTheRoot) {
  const SettingsPtr node = addNode(addNode(root, "a"), "b");
  const SettingsPtr key = addKey(node, "k");
  std::vector<std::pair<std::string, boost::any>> changes = {{key->getPath(), 7}};
  EXPECT_EQ(root->multipleSet(changes.begin(), changes.end(), "user"), SettingsProblems());
  EXPECT_EQ(intAt(node, "k"), 7);
  changes = {{key->getPath(), 8}, {key->getPath() + "x", 8}, {node->getPath(), 8}, {"", 8}};
  const SettingsProblems problems = root->multipleSet(changes.begin(), changes.end(), "user");
  ASSERT_EQ(problems.size(), 3u);
  EXPECT_EQ(problems[0].first, key->getPath() + "x");
  EXPECT_EQ(root->multipleValidate(changes.begin(), changes.end()), problems);
  EXPECT_EQ(intAt(node, "k"), 7);
}

TEST_P(ServiceContract, TextsOfACppProgramBecomeNarrowTextOrAreRefused) {
  using Texts = std::vector<std::string>;
  const std::string emoji = "\xF0\x9F\x98\x80", narrow = "\xED\xA0\xBD\xED\xB8\x80";
  const SettingsPtr text = addKey(root, "text"), texts = addKey(root, "texts");
  const auto textNow = [&] { return boost::any_cast<std::string>(root->getValue("text", "")); };
  root->setAny("text", "a" + emoji + std::string(1, '\0') + "b", "user");
  EXPECT_EQ(textNow(), "a" + narrow + "\xC0\x80" + "b");
  root->setAny("text", std::string("\xED\xA0\x80 \xC0\x80"), "user");
  EXPECT_EQ(textNow(), "\xED\xA0\x80 \xC0\x80") << "is narrow text already";
  EXPECT_EQ(setAll(root, {{texts, Texts{"x", emoji}}, {text, emoji}}, "user"), SettingsProblems());
  EXPECT_EQ(boost::any_cast<Texts>(root->getValue("texts", "")), (Texts{"x", narrow}));
  EXPECT_EQ(textNow(), narrow);
  for (const char* bad : {"ab\xFF", "ab\xE4z", "ab\xF0\x9F", "ab\xC1\x81", "ab\xF5\x80\x80\x80"}) {
    const std::string message =
        messageOf<ValidationFailure>([&] { root->setAny("text", std::string(bad), "user"); });
    EXPECT_EQ(message, "The text for \"text\" cannot be taken: it is not in UTF-8 from byte 3 on.");
    messageOf<ValidationFailure>([&] { root->setAny("texts", Texts{"x", bad}, "user"); });
    EXPECT_EQ(
        setAll(root, {{texts, Texts{bad}}, {text, std::string("x")}, {text, std::string(bad)}},
               "user")
            .size(),
        2u);
    messageOf<ValidationFailure>([&] { addNode(root, bad); });
    const auto found = messageOf<NoSuchKey>([&] { root->getValue(bad, ""); });
    EXPECT_TRUE(base::isNarrow(found)) << found;
  }
  EXPECT_EQ(textNow(), narrow);
}

}  // namespace
}  // namespace test
