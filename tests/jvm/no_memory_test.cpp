// Every call of the JVM by a native method, failing as it does without memory: the method returns
// its usual answer or raises an exception, does all of its change or nothing, and works again
// afterwards.
#include <functional>

#include "nativesettings/changing.h"
#include "nativesettings/handles.h"
#include "nativesettings/reading.h"
#include "tests/support/bridge_test.h"
#include "tests/support/patched_java.h"
#include "values/java/class_records.h"

namespace {

using namespace nativesettings;
using test::PatchedJava;
using test::SettingsPtr;
using test::takeException;

constexpr const char* kRange = "com.velonix.services.settings.validators.Range";

class NoMemory : public test::BridgeTest {
 protected:
  using Call = std::function<jobject()>;
  using Action = std::function<void()>;

  // Makes one call after another of `call` fail, with nothing resolved before. `half` is a state in
  // which it may leave the tree besides that before it and that after it. `silent` is the number of
  // JVM calls whose failure it hides, having done nothing: getValue() of a SettingInfo is one.
  void failEach(
      const char* what, const Call& call, const Action& undo = [] {}, const std::string& half = "",
      int silent = 0) {
    SCOPED_TRACE(what);
    const std::string before = contents(root_);
    const std::string usual = answer(call());
    const std::string after = contents(root_);
    undo();
    for (int n = 1;; ++n) {
      SCOPED_TRACE(n);
      ASSERT_EQ(before, contents(root_));
      nativesettings_utilsUnload();
      rearmClassRecords(env_);
      ASSERT_EQ(env_->PushLocalFrame(64), JNI_OK);
      jobject given = nullptr;
      bool over = false;
      {
        PatchedJava java(env_);
        java.failOn(n);
        given = call();
        over = !java.hasFailed();
      }
      const std::string answered = answer(given), now = contents(root_);
      env_->PopLocalFrame(nullptr);
      EXPECT_EQ(std::vector<std::string>(), test::takeJniWarnings());
      if (answered != usual) {
        EXPECT_FALSE(over);
        EXPECT_EQ(answered.find("threw "), 0u) << answered;
        EXPECT_TRUE(now == before || now == after || now == half) << now;
      } else if (now != after) {
        --silent;
        EXPECT_TRUE(now == before || now == half) << now;
      }
      undo();
      if (over) break;
    }
    EXPECT_EQ(silent, 0);
  }

  void failEachOfChange(const char* what, const Action& change, const Action& undo,
                        const std::string& half = "", int silent = 0) {
    const auto call = [&]() -> jobject {
      change();
      return nullptr;
    };
    failEach(what, call, undo, half, silent);
  }

  // Returns the entries below a node, with the numbers.
  static std::string contents(const SettingsPtr& node) {
    std::string all;
    for (const SettingsPtr& child : node->getChildren()) {
      all += child->getName();
      if (!child->isKey()) {
        all += '(' + contents(child) + ')';
        continue;
      }
      const boost::any value = node->getValue(child->getName(), "");
      if (const int* number = boost::any_cast<int>(&value)) all += '=' + std::to_string(*number);
      all += ' ';
    }
    return all;
  }

  // Describes the object, or the pending exception, which it ends.
  std::string answer(jobject given) {
    const std::string thrown = takeException(env_);
    if (!thrown.empty()) return "threw " + thrown;
    const std::string cls = className(given);
    if (cls == "[Ljava.lang.String;") {
      std::string all;
      for (const std::string& each : texts(static_cast<jobjectArray>(given))) all += each + ' ';
      return all;
    }
    if (cls == "com.velonix.services.settings.SettingInfo") {
      return answer(valueOf(given)) + " of " + show(typeOf(given));
    }
    return cls[0] == '[' ? cls : show(given);
  }

  const std::vector<std::string> b_ = {"a", "b"};
};

TEST_F(NoMemory, ReadingGivesTheAnswerOrAnException) {
  addKey(root_, "texts");
  addKey(root_, "numbers");
  addKey(root_, "typed");
  root_->setAny("texts", std::vector<std::string>{"x", "y"}, "user");
  root_->setAny("numbers", std::vector<double>{1, 2}, "user");
  root_->setAny("typed", std::vector<int>{1}, "session");
  const jobjectArray root = path({}), a = path({"a"}), b = path(b_), none = path({"x"});
  const jstring k = str("k"), user = str("user"), node = str("b");
  const struct {
    jobjectArray node;
    jstring key;
  } reads[] = {{b, k},
               {a, str("s")},
               {root, str("texts")},
               {root, str("numbers")},
               {root, str("typed")},
               {b, str("empty")},
               {none, k},
               {a, k}};
  for (const auto& read : reads) {
    failEach("get", [&] { return nativeGet(env_, nullptr, handle_, read.node, read.key, user); });
  }
  const auto found = [&](jboolean answer) { return answer ? k : nullptr; };
  failEach("level", [&] { return nativeGetLevel(env_, nullptr, handle_, b, k); });
  failEach("children", [&] { return nativeGetChildren(env_, nullptr, handle_, root, 0); });
  failEach("is set", [&] { return found(nativeIsSet(env_, nullptr, handle_, b, k, user)); });
  failEach("exists", [&] { return found(nativeExists(env_, nullptr, handle_, b, k)); });
  failEach("is node", [&] { return found(nativeIsChildNode(env_, nullptr, handle_, a, node)); });
  failEach("directory", [&] { return nativeGetFactoryDir(env_, nullptr, handle_); });
}

TEST_F(NoMemory, ChangingDoesAllOrNothing) {
  const jobjectArray root = path({}), a = path({"a"}), b = path(b_), to = path({"spare"});
  const jstring k = str("k"), fresh = str("fresh"), spare = str("spare"), user = str("user");
  const jobject twelve = info(integer(12));
  const auto setBack = [&] { entryAt(b_)->setAny("k", 7, "user"); };
  const auto removeFresh = [&](const SettingsPtr& from) {
    if (const SettingsPtr added = from->getChild("fresh")) {
      added->isKey() ? from->removeKey("fresh") : from->removeNode("fresh");
    }
  };
  failEachOfChange(
      "set", [&] { nativeSet(env_, nullptr, 0, handle_, b, k, twelve, user); }, setBack, "", 1);
  failEachOfChange(
      "unset", [&] { nativeUnset(env_, nullptr, handle_, b, k, user); }, setBack);
  failEachOfChange(
      "add node", [&] { nativeAddNode(env_, nullptr, handle_, a, fresh, nullptr, nullptr); },
      [&] { removeFresh(entryAt({"a"})); });
  failEachOfChange(
      "delete", [&] { nativeDelete(env_, nullptr, handle_, root, spare); },
      [&] {
        if (!entryAt({"spare"})) addNode(root_, "spare");
      });
  failEachOfChange(
      "copy", [&] { nativeCopySubtree(env_, nullptr, handle_, to, handle_, b, fresh); },
      [&] { removeFresh(entryAt({"spare"})); });
  // The key stays without its value, as it does if the value is refused.
  failEachOfChange(
      "add key",
      [&] { nativeAddKey(env_, nullptr, handle_, b, fresh, twelve, user, nullptr, nullptr); },
      [&] { removeFresh(entryAt(b_)); }, "a(b(empty fresh k=7 )s )spare()", 1);
}

TEST_F(NoMemory, AValidatorThatCannotBeCalledRefusesOrTheValueIsSet) {
  const jobjectArray b = path(b_);
  const jstring guarded = str("guarded"), user = str("user");
  const jobject twelve = info(integer(12));
  nativeAddKey(env_, nullptr, handle_, b, guarded, info(integer(7)), user, str(kRange),
               str("1..50"));
  failEachOfChange(
      "set", [&] { nativeSet(env_, nullptr, 0, handle_, b, guarded, twelve, user); },
      [&] { entryAt(b_)->setAny("guarded", 7, "user"); }, "", 1);
}

TEST_F(NoMemory, OpeningGivesAHandleOrAnException) {
  const jstring opened = str("opened");
  const auto close = [&](jlong handle) {
    nativeReleasePtr(env_, nullptr, handle);
    return handle ? opened : nullptr;
  };
  failEach("load", [&] { return close(nativeLoadSettings(env_, nullptr, nullptr)); });
  failEach("process", [&] { return close(nativeGetZvmRoot(env_, nullptr, 0)); });
}

}  // namespace
