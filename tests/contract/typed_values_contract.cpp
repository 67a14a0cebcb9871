#include <tuple>

#include "tests/contract/service_contract.h"
#include "values/value_kinds.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace std::string_literals;
using zlutil::boostany::ElementOf;
using zlutil::boostany::forEachKind;
using zlutil::boostany::kHasKind;
using zlutil::boostany::kindName;
using zlutil::boostany::kIsVector;
using zlutil::boostany::kKindOf;

static_assert(!kHasKind<char> && !kHasKind<long long> && !kHasKind<const char*> &&
              !kHasKind<std::vector<std::vector<int>>>);

// Texts are in standard UTF-8, with a character that the service stores in another form.
const std::string kText = "nul \0, \xC3\xBC, \xF0\x9F\x98\x80"s;

const std::tuple kElementSamples{kText,
                                 true,
                                 static_cast<signed char>(-128),
                                 static_cast<unsigned char>(255),
                                 static_cast<short>(-32768),
                                 static_cast<unsigned short>(65535),
                                 -2147483647 - 1,
                                 4294967295U,
                                 -9223372036854775807L - 1,
                                 18446744073709551615UL,
                                 1.5F,
                                 -0.1};

template <class Type>
Type sample() {
  if constexpr (kIsVector<Type>) {
    using Element = ElementOf<Type>;
    return {std::get<Element>(kElementSamples), Element(), std::get<Element>(kElementSamples)};
  } else {
    return std::get<Type>(kElementSamples);
  }
}

template <class Type>
std::string nameOf() {
  return "k" + std::to_string(kKindOf<Type>);
}

TEST_P(ServiceContract, ATypedValueOfEveryKindComesBackByItsPathAndFromItsKey) {
  const SettingsPtr node = addNode(addNode(root, "a"), "b");
  forEachKind([&](auto tag) {
    using Type = typename decltype(tag)::type;
    const SettingsPtr key = addKey(node, nameOf<Type>());
    const std::string path = "a.b." + nameOf<Type>();
    EXPECT_EQ(root->find<Type>(path), std::nullopt);
    root->set(path, sample<Type>());
    EXPECT_EQ(root->get<Type>(path), sample<Type>());
    EXPECT_EQ(root->find<Type>(path), sample<Type>());
    EXPECT_TRUE(node->isSet(nameOf<Type>(), "user"));
    key->set("", Type(), "session");
    EXPECT_EQ(key->get<Type>(), Type());
    EXPECT_EQ(key->get<Type>("", "user"), sample<Type>());
  });
}

TEST_P(ServiceContract, ATypedValueOfAnotherTypeIsRefusedWithThePathAndBothTypesNamed) {
  const SettingsPtr node = addNode(addNode(root, "a"), "b");
  forEachKind([&](auto tag) {
    using Stored = typename decltype(tag)::type;
    addKey(node, nameOf<Stored>());
    node->set(nameOf<Stored>(), sample<Stored>());
    forEachKind([&](auto other) {
      using Asked = typename decltype(other)::type;
      if constexpr (!std::is_same_v<Stored, Asked>) {
        const std::string path = node->getPath() + "." + nameOf<Stored>();
        const std::string problem = "\"" + path + "\" holds " +
                                    std::string(kindName(kKindOf<Stored>)) + " values, not " +
                                    std::string(kindName(kKindOf<Asked>));
        const auto expectProblem = [&](const std::string& message) {
          EXPECT_EQ(message.substr(0, problem.size()), problem);
        };
        expectProblem(messageOf<ValidationFailure>([&] { node->get<Asked>(nameOf<Stored>()); }));
        expectProblem(messageOf<ValidationFailure>([&] { node->find<Asked>(nameOf<Stored>()); }));
        expectProblem(
            messageOf<ValidationFailure>([&] { node->set(nameOf<Stored>(), sample<Asked>()); }));
      }
    });
  });
}

TEST_P(ServiceContract, WhatIsMissingIsAFailureOfGetAndNothingForFind) {
  const SettingsPtr node = addNode(addNode(root, "a"), "b");
  addKey(node, "k");
  for (const char* path : {"a.b.x", "a.x.k", "a.b.k.x", "x", ".", "a..k"}) {
    EXPECT_EQ(root->find<int>(path), std::nullopt) << path;
    messageOf<NoSuchKey>([&] { root->get<int>(path); });
    messageOf<NoSuchKey>([&] { root->set(path, 1); });
  }
  messageOf<ValueNotDefinedForGivenLevel>([&] { root->get<int>("a.b.k"); });
  messageOf<NotAKeyName>([&] { root->find<int>("a.b"); });
  messageOf<NotAKeyName>([&] { node->get<int>(); });
  messageOf<UnSupportedLevel>([&] { root->find<int>("a.b.k", "nowhere"); });
  const SettingsPtr removed = node->getChild("k");
  node->removeKey("k");
  EXPECT_EQ(removed->find<int>(), std::nullopt);
  messageOf<NoSuchKey>([&] { removed->get<int>(); });
}

TEST_P(ServiceContract, TypedTextsAreStandardUtf8) {
  addKey(root, "k");
  root->set("k", "literal");
  EXPECT_EQ(root->get<std::string>("k"), "literal");
  root->set("k", std::string_view(kText));
  EXPECT_EQ(root->get<std::string>("k"), kText);
  EXPECT_NE(boost::any_cast<std::string>(root->getValue("k", "")), kText);
  messageOf<ValidationFailure>([&] { root->set("k", "\xFF"); });
  root->setAny("k", std::string("\xED\xA0\x80"), "user");
  const std::string message = messageOf<ValidationFailure>([&] { root->get<std::string>("k"); });
  EXPECT_NE(message.find("k\" has a lone surrogate"), std::string::npos) << message;
}

}  // namespace
}  // namespace test
