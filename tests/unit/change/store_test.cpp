// The contract suite of stores for those of this process, and the tree over a store that fails.
#include "service/change_counters.h"
#include "service/new_key.h"
#include "tests/support/store_contract.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

INSTANTIATE_TEST_SUITE_P(
    Stores, WritableStore,
    testing::Values(
        StoreKind{"Memory",
                  [](const auto&, const auto&) { return std::make_shared<MemoryStore>(); }},
        StoreKind{"User",
                  [](const auto&, const TemporaryDirectory& directory) {
                    return std::make_shared<UserStore>(UserStoreOptions{directory.path(), 1});
                  }},
        StoreKind{"Fake", [](const auto& record,
                             const auto&) { return std::make_shared<FakeStore>(record); }}),
    [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Stores, ReadOnlyStore,
    testing::Values(StoreKind{"XmlDirectory",
                              [](const auto&, const TemporaryDirectory& directory) {
                                return std::make_shared<XmlDirectoryStore>(directory.path());
                              }},
                    StoreKind{"Fake",
                              [](const auto& record, const auto&) {
                                return std::make_shared<FakeStore>(record, "no permission");
                              }}),
    [](const auto& info) { return info.param.name; });

class TreeOverStore : public testing::Test {
 protected:
  const std::shared_ptr<FakeStore::Record> record = std::make_shared<FakeStore::Record>();
  const std::shared_ptr<FakeStore> store = std::make_shared<FakeStore>(record);
};

TEST_F(TreeOverStore, AChangeThatTheStoreRefusesChangesNothingAndIsNotPublished) {
  const NodePtr root = treeOver(store);
  const SettingsPtr a = addKey(root, "a"), b = addKey(root, "b");
  root->setAny("a", 1, "user");
  Listener listener(root);
  const std::function<void()> changes[] = {
      [&] { root->setAny("a", 2, "user"); }, [&] { root->unset("a", "user"); },
      [&] { addKey(root, "c"); }, [&] { root->removeKey("a"); },
      [&] { root->copySubtree(root, "copy"); }};
  for (const auto& change : changes) {
    store->failOn(1);
    EXPECT_NE(messageOf<StoreFailure>(change).find("the disk is full"), std::string::npos);
  }
  store->failOn(1);
  EXPECT_EQ(setAll(root, {{a, 2}, {b, 2}}, "user"),
            (SettingsProblems{{"a", "Cannot write the fake store: the disk is full"}}));
  EXPECT_EQ(namesOf(root->getChildren()), (Names{"a", "b"}));
  EXPECT_EQ(intAt(root, "a"), 1);
  EXPECT_FALSE(root->getKeyType("b"));
  EXPECT_EQ(listener.heard(), Names());
  addKey(root, "c");
}

TEST_F(TreeOverStore, AnOperationIsOneTransaction) {
  const NodePtr root = treeOver(store);
  const SettingsPtr node = addNode(root, "n");
  const SettingsPtr a = addKey(node, "a"), b = addKey(node, "b");
  const int before = record->applied;
  setAll(root, {{a, 1}, {b, 2}, {a, 3}}, "user");
  EXPECT_EQ(record->applied, before + 1);
  root->copySubtree(node, "copy");
  EXPECT_EQ(record->applied, before + 2);
  setAll(root, {{a, 3}}, "user");
}

TEST_F(TreeOverStore, AKeyAndItsFirstValueAreOneChange) {
  using zlutil::settings::NewKey;
  const NodePtr root = treeOver(store);
  Listener listener(root);
  const zlutil::eventmgr::ScopedConnection onAdded(
      root->addListener<zlutil::settings::SettingsAddNodeEvent>([&](const auto& event) {
        EXPECT_EQ(intAt(root, event.getObj()->getName(), "user"), 1);
      }));
  const auto never = zlutil::settings::CValidator([](const auto&, const auto&, const auto&) {
    return boost::make_optional(std::string("no"));
  });
  const auto inOneCall = [&](const std::string& name, const ValidatorChoice& validator) {
    NewKey::add(root, name, validator, 1, "user");
  };
  // As whoever knows only the two calls of the contract adds a key.
  const auto inTwoCalls = [&](const std::string& name, const ValidatorChoice& validator) {
    NewKey::expectValue();
    addKey(root, name, validator);
    EXPECT_EQ(root->getChild(name), nullptr);
    root->setAny(name, 1, "user");
    NewKey::settle();
  };
  inOneCall("a", ValidatorChoice());
  EXPECT_EQ(record->applied, 1);
  inTwoCalls("b", ValidatorChoice());
  EXPECT_EQ(record->applied, 2);
  EXPECT_EQ(listener.heard(),
            (Names{"added a to settings", "changed a", "added b to settings", "changed b"}));
  EXPECT_EQ(intAt(treeOver(std::make_shared<FakeStore>(record)), "b"), 1);
  store->failOn(1);
  messageOf<StoreFailure>([&] { inOneCall("x", ValidatorChoice()); });
  messageOf<CValidationError>([&] { inOneCall("x", never); });
  messageOf<ErrorAddingChildNodeOrKey>([&] { inOneCall("a", ValidatorChoice()); });
  EXPECT_EQ(namesOf(root->getChildren()), (Names{"a", "b"}));
  NewKey::expectValue();
  addKey(root, "late");
  store->changeFromOutside({DefineEntry{"late", false, 0, {}}});
  messageOf<ErrorAddingChildNodeOrKey>([&] { root->setAny("late", 1, "user"); });
  messageOf<ErrorAddingChildNodeOrKey>([] { NewKey::settle(); });
}

TEST_F(TreeOverStore, AKeyWhoseFirstValueIsRefusedIsThereWithoutOneAfterTwoCalls) {
  using zlutil::settings::NewKey;
  const NodePtr root = treeOver(store);
  NewKey::expectValue();
  addKey(root, "k");
  messageOf<ValidationFailure>([&] { root->setAny("k", 'x', "user"); });
  NewKey::settle();
  EXPECT_FALSE(root->getKeyType("k"));
  root->setAny("k", 1, "user");
  EXPECT_EQ(record->applied, 2);
}

TEST_F(TreeOverStore, ChangesByOthersAppearAndArePublished) {
  const TemporaryDirectory factory;
  factory.write("a.xml", "<settings version=\"1\"><key name=\"f\" type=\"int\"/></settings>");
  const NodePtr root = treeOver(store, factory.path());
  Listener listener(root);
  store->changeFromOutside({DefineEntry{"n", false, 0, {}}, DefineEntry{"n.k", true, 7, {}},
                            PutValue{"n.k", 1}, PutValue{"n.none", 1}, PutValue{"n.k", 2.0},
                            PutValue{"f", 5}});
  EXPECT_EQ(listener.waitFor(4),
            (Names{"added n to settings", "added k to n", "changed k", "changed f"}));
  EXPECT_EQ(intAt(root->getChild("n"), "k", "user"), 1);
  listener.clear();
  store->changeFromOutside({PutValue{"f", 5}, EraseValue{"f"}, RemoveSubtree{"n"},
                            RemoveSubtree{"f"}, RemoveSubtree{"x"},
                            DefineEntry{"f.x", true, 7, {}}});
  EXPECT_EQ(listener.waitFor(2), (Names{"changed f", "removed n from settings"}));
  EXPECT_EQ(namesOf(root->getChildren()), Names{"f"});
  EXPECT_FALSE(root->isSet("f", ""));
}

TEST_F(TreeOverStore, ChangesAndRemovalsByOthersAreCountedForThoseWhoKeepValues) {
  using zlutil::settings::ChangeCounters;
  const NodePtr root = treeOver(store);
  addKey(addNode(addNode(root, "above"), "n"), "k");
  for (const Change& change : {Change(PutValue{"above.n.k", 1}), Change(EraseValue{"above.n.k"}),
                               Change(RemoveSubtree{"above"})}) {
    const std::uint64_t before = ChangeCounters::table()[ChangeCounters::position("n", "k")];
    store->changeFromOutside({change});
    EXPECT_NE(before, ChangeCounters::table()[ChangeCounters::position("n", "k")])
        << change.index();
  }
}

}  // namespace
}  // namespace test
