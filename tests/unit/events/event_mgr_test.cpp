#include "service/event_mgr.h"

#include "tests/support/settings_verbs.h"

namespace test {
namespace {

using zlutil::eventmgr::BaseEvent;
using zlutil::eventmgr::EventMgr;
using zlutil::eventmgr::ScopedConnection;
using zlutil::exchange::IDType;

class Ping : public BaseEvent {
 public:
  static const std::string& EventType() {
    static const std::string type = "Ping:";
    return type;
  }
  bool isKindOf(const std::string& type) const override { return type == EventType(); }
  SettingsPtr getObj() const override { return {}; }
};

const IDType kId(std::uint64_t{1} << 62);

TEST(EventManager, ReachesTheSubscribersOfTheTopicInTheOrderOfSubscription) {
  EventMgr& events = EventMgr::instance();
  std::string heard;
  const auto note = [&](char c) { return [&heard, c](const Ping&) { heard += c; }; };
  ScopedConnection a(events.subscribe<Ping>(Ping::EventType() + kId.toString(), note('a')));
  ScopedConnection b(events.subscribe<Ping>(Ping::EventType() + kId.toString(), note('b')));
  ScopedConnection other(events.subscribe<Ping>(Ping::EventType() + "1", note('c')));
  events.publish(Ping::EventType(), kId, Ping());
  events.publish("Other:", kId, Ping());
  EXPECT_EQ(heard, "ab");
}

TEST(EventManager, KnowsWhereNobodyListens) {
  EventMgr& events = EventMgr::instance();
  EXPECT_FALSE(events.mayHaveSubscribers(kId));
  {
    ScopedConnection one(events.subscribe<Ping>(Ping::EventType() + kId.toString(), [](auto&) {}));
    EXPECT_TRUE(events.mayHaveSubscribers(kId));
  }
  EXPECT_FALSE(events.mayHaveSubscribers(kId));
  // A topic that names no identity may be about any.
  ScopedConnection odd(events.subscribe<Ping>(Ping::EventType() + "any", [](auto&) {}));
  EXPECT_TRUE(events.mayHaveSubscribers(kId));
}

TEST(EventManager, AConnectionEndsOnce) {
  EventMgr& events = EventMgr::instance();
  int calls = 0;
  auto connection =
      events.subscribe<Ping>(Ping::EventType() + kId.toString(), [&](const Ping&) { ++calls; });
  connection->disconnect();
  connection->disconnect();
  events.publish(Ping::EventType(), kId, Ping());
  EXPECT_EQ(calls, 0);
  EXPECT_FALSE(events.mayHaveSubscribers(kId));
}

TEST(EventManager, AnEventIsOnlyWhatItSaysItIs) {
  const Ping ping;
  EXPECT_EQ(&BaseEvent::safeDownCast<Ping>(ping), &ping);
  EXPECT_THROW(BaseEvent::safeDownCast<zlutil::settings::SettingsAddNodeEvent>(ping),
               std::bad_cast);
}

}  // namespace
}  // namespace test
