#include "service/setting_key.h"

#include <thread>

#include "tests/contract/service_contract.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using zlutil::settings::CValidator;
using zlutil::settings::SettingKey;

boost::optional<std::string> problemOfOdd(
    const boost::shared_ptr<const zlutil::settings::Settings>&, const std::string&,
    const boost::any& value) {
  if (boost::any_cast<int>(value) % 2 == 0) return boost::none;
  return std::string("it is odd");
}

TEST_P(ServiceContract, ADeclaredSettingHasItsDefaultAndAddsItsKeyWithTheFirstValue) {
  const SettingKey<int> size("a.b.size", 12);
  const SettingKey<std::string> title("title", "none");
  const SettingKey<std::vector<std::string>> recent("a.recent", {"x"});
  EXPECT_EQ(size.get(root), 12);
  EXPECT_EQ(recent.get(root), (std::vector<std::string>{"x"}));
  EXPECT_TRUE(root->getChildren().empty());
  size.set(root, 14);
  title.set(root, "\xC3\xBC", "session");
  recent.set(root, {});
  EXPECT_EQ(size.get(root), 14);
  EXPECT_EQ(title.get(root), "\xC3\xBC");
  EXPECT_EQ(root->find<std::string>("title", "user"), std::nullopt);
  EXPECT_EQ(recent.get(root), std::vector<std::string>());
  size.set(root, 15);
  EXPECT_EQ(root->get<int>("a.b.size", "user"), 15);
  root->findDescendant({"a", "b"})->unset("size", "user");
  EXPECT_EQ(size.get(root), 12);
}

TEST_P(ServiceContract, ADeclaredSettingRefusesAnotherTypeAnotherEntryAndABadValue) {
  const SettingKey<int> even("n.even", 2, CValidator(&problemOfOdd));
  messageOf<CValidationError>([&] { even.set(root, 3); });
  EXPECT_FALSE(root->findDescendant({"n", "even"}));
  even.set(root, 4);
  messageOf<CValidationError>([&] { even.set(root, 5); });
  EXPECT_EQ(even.get(root), 4);
  const SettingKey<std::string> otherType("n.even", "");
  messageOf<ValidationFailure>([&] { otherType.get(root); });
  messageOf<ValidationFailure>([&] { otherType.set(root, ""); });
  messageOf<NotAKeyName>([&] { SettingKey<int>("n", 1).set(root, 1); });
  messageOf<NotANodeName>([&] { SettingKey<int>("n.even.below", 1).set(root, 1); });
  messageOf<NotAKeyName>([&] { SettingKey<int>("m.", 1).set(root, 1); });
}

TEST_P(ServiceContract, SeveralThreadsMaySetADeclaredSettingForTheFirstTime) {
  for (int round = 0; round < 50; ++round) {
    const std::string node = "n" + std::to_string(round);
    std::vector<std::thread> threads;
    for (int value = 1; value <= 4; ++value) {
      threads.emplace_back([&, value] { SettingKey<int>(node + ".deep.key", 0).set(root, value); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_GT(root->get<int>(node + ".deep.key"), 0);
  }
}

}  // namespace
}  // namespace test
