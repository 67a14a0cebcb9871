// Registration of Java listeners and delivery to them.
#include "nativesettings/listeners.h"

#include <thread>

#include "bridge/java_layer.h"
#include "nativesettings/listener_registry.h"
#include "tests/support/bridge_test.h"
#include "tests/support/patched_java.h"

namespace {

using namespace nativesettings;
using test::PatchedJava;
using test::SettingsPtr;
using test::takeException;
using Names = std::vector<std::string>;

class Listeners : public test::BridgeTest {
 protected:
  // Registrations on entries that die with the tree of a test would stay for ever.
  void TearDown() override {
    valueChangeListeners.clear();
    addNodeListeners.clear();
    removeNodeListeners.clear();
    BridgeTest::TearDown();
  }

  void SetUp() override {
    BridgeTest::SetUp();
    listener_ = make("RecordingListener", "()V");
  }

  std::string add(jobject listener, const Names& node, const char* key = nullptr,
                  const char* source = "src") {
    return addOrRemove(str(source), listener, node, key);
  }
  std::string remove(jobject listener, const Names& node, const char* key = nullptr) {
    return addOrRemove(nullptr, listener, node, key);
  }
  std::string addOrRemove(jobject source, jobject listener, const Names& node, const char* key) {
    nativeAddRemoveListener(env_, nullptr, source, handle_, path(node), key ? str(key) : nullptr,
                            listener);
    return takeException(env_);
  }
  std::string heard(jobject listener) {
    return text(call(listener, "take", "()Ljava/lang/String;"));
  }
  std::string heard() { return heard(listener_); }
  void turnOn(const char* knob) {
    jfieldID field = env_->GetFieldID(env_->GetObjectClass(listener_), knob, "Z");
    env_->SetBooleanField(listener_, field, JNI_TRUE);
  }
  void setK(int value) { entryAt({"a", "b"})->setAny("k", value, "user"); }

  jobject listener_ = nullptr;
};

TEST_F(Listeners, ANodeHearsOfEverythingBelowIt) {
  EXPECT_EQ(add(listener_, {"a"}), "");
  setK(8);
  EXPECT_EQ(heard(), "create src a.b k null false; changed");
  addNode(entryAt({"a", "b"}), "n");
  EXPECT_EQ(heard(), "create src a.b n null true; added");
  entryAt({"a", "b"})->removeNode("n");
  EXPECT_EQ(heard(), "create src a.b n null true; removed");
  entryAt({"a"})->unset("s", "user");
  EXPECT_EQ(heard(), "create src a s null false; changed");
  addNode(root_, "elsewhere");
  EXPECT_EQ(heard(), "");
  EXPECT_EQ(remove(listener_, {"a"}), "");
  setK(9);
  EXPECT_EQ(heard(), "");
}

TEST_F(Listeners, AKeyHearsOfItselfOnly) {
  add(listener_, {"a", "b"}, "k");
  setK(8);
  EXPECT_EQ(heard(), "create src a.b k null false; changed");
  entryAt({"a", "b"})->setAny("empty", 1, "user");
  EXPECT_EQ(heard(), "");
  remove(listener_, {"a", "b"}, "k");
  setK(9);
  EXPECT_EQ(heard(), "");
  add(listener_, {"a", "b"}, "k");
  entryAt({"a", "b"})->removeKey("k");
  EXPECT_EQ(heard(), "create src a.b k null false; removed");
}

TEST_F(Listeners, AnEventBelowTheRootHasAnEmptyPath) {
  add(listener_, {});
  addNode(root_, "n");
  EXPECT_EQ(heard(), "create src  n null true; added");
  remove(listener_, {});
}

TEST_F(Listeners, AddingTwiceKeepsTheFirstRegistrationAndItsSource) {
  const PatchedJava java(env_);
  add(listener_, {"a"}, nullptr, "first");
  const long once = java.calls().globals;
  add(listener_, {"a"}, nullptr, "second");
  EXPECT_EQ(once, java.calls().globals);
  setK(8);
  EXPECT_EQ(heard(), "create first a.b k null false; changed");
  remove(listener_, {"a"});
  EXPECT_EQ(java.calls().globals, 0);
  setK(9);
  EXPECT_EQ(heard(), "");
}

TEST_F(Listeners, ListenersAreDistinguishedByIdentityAndNode) {
  jobject other = make("RecordingListener", "()V");  // equals() of both says yes to anything
  add(listener_, {"a"});
  add(other, {"a"});
  add(listener_, {"a", "b"});
  setK(8);
  EXPECT_EQ(heard(), "create src a.b k null false; changed; create src a.b k null false; changed");
  EXPECT_EQ(heard(other), "create src a.b k null false; changed");
  remove(listener_, {"a"});
  setK(9);
  EXPECT_EQ(heard(), "create src a.b k null false; changed");
  remove(listener_, {"a", "b"});
  remove(other, {"a"});
}

TEST_F(Listeners, NullAndUnknownListenersChangeNothing) {
  const std::size_t before = valueChangeListeners.size();
  EXPECT_EQ(add(nullptr, {"a"}), "");
  EXPECT_EQ(remove(nullptr, {"a"}), "");
  EXPECT_EQ(remove(listener_, {"a"}), "");
  EXPECT_EQ(before, valueChangeListeners.size());
}

TEST_F(Listeners, AMissingEntryIsNotFound) {
  const std::string notFound = "com.velonix.services.settings.SettingNotFoundException: ";
  EXPECT_EQ(notFound + "x", add(listener_, {"x"}, "k")) << "the path alone";
  EXPECT_EQ(notFound + "a.x", add(listener_, {"a"}, "x"));
  EXPECT_EQ(notFound + "a.s", add(listener_, {"a", "s"})) << "a path must end at a node";
}

TEST_F(Listeners, AFailingListenerStopsNoOtherAndLeavesNoExceptionPending) {
  for (const char* knob : {"listenerThrows", "noEvent", "createThrows"}) {
    SCOPED_TRACE(knob);
    jobject healthy = make("RecordingListener", "()V");
    listener_ = make("RecordingListener", "()V");
    turnOn(knob);
    add(listener_, {"a"});
    add(healthy, {"a"});
    setK(static_cast<int>(knob[0]));
    EXPECT_FALSE(env_->ExceptionCheck());
    EXPECT_EQ(heard(healthy), "create src a.b k null false; changed");
    EXPECT_EQ(knob == std::string("listenerThrows") ? "create src a.b k null false; changed"
              : knob == std::string("noEvent")      ? "create src a.b k null false"
                                                    : "",
              heard());
    remove(listener_, {"a"});
    remove(healthy, {"a"});
  }
}

TEST_F(Listeners, ARegistrationOnADeadNodeStaysAndFailsLookupsOfItsListener) {
  const std::size_t before = valueChangeListeners.size();
  SettingsPtr doomed = addNode(root_, "doomed");
  add(listener_, {"doomed"});
  root_->removeNode("doomed");
  doomed.reset();
  const std::string failure = add(listener_, {"a"});
  EXPECT_EQ(failure.find("java.lang.RuntimeException: std::exception for \"a\": "), 0u) << failure;
  EXPECT_EQ(before + 1, valueChangeListeners.size());
  jobject other = make("RecordingListener", "()V");
  EXPECT_EQ(add(other, {"a"}), "") << "other listeners are not concerned";
  EXPECT_EQ(remove(other, {"a"}), "");
}

TEST_F(Listeners, EventsOfShortLivedThreadsLeaveNoThreadAttached) {
  add(listener_, {"a"});
  for (int i = 0; i < 300; ++i) {
    std::thread([&] { setK(1000 + i); }).join();
  }
  std::string expected = "create src a.b k null false; changed";
  for (int i = 1; i < 300; ++i) expected += "; create src a.b k null false; changed";
  EXPECT_EQ(expected, heard());
  remove(listener_, {"a"});
  jclass threads = env_->FindClass("java/lang/Thread");
  jmethodID activeCount = env_->GetStaticMethodID(threads, "activeCount", "()I");
  EXPECT_EQ(env_->CallStaticIntMethod(threads, activeCount), 1);
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(Listeners, RegistrationsByManyThreadsAllEnd) {
  jobject shared = env_->NewGlobalRef(listener_);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      const jzi::JavaGuard guard;
      JNIEnv* env = guard.env();
      jobject source = env->NewLocalRef(shared);
      const SettingsPtr node = t % 2 ? entryAt({"a"}) : entryAt({"a", "b"});
      for (int i = 0; i < 200; ++i) {
        addListener(env, shared, source, node);
        removeListener(env, shared, node);
      }
    });
  }
  for (int i = 0; i < 200; ++i) setK(2000 + i);
  for (std::thread& thread : threads) thread.join();
  heard();
  setK(1);
  EXPECT_EQ(heard(), "");
  EXPECT_EQ(valueChangeListeners.size(), 0u);
  env_->DeleteGlobalRef(shared);
}

}  // namespace
