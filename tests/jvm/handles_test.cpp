#include "nativesettings/handles.h"

#include <unistd.h>

#include <boost/make_shared.hpp>
#include <boost/numeric/conversion/cast.hpp>
#include <boost/weak_ptr.hpp>
#include <cstdio>
#include <fstream>

#include "nativesettings/zvm_context.h"
#include "service/engine_session.h"
#include "service/z_settings.h"
#include "tests/support/bridge_test.h"

namespace {

using namespace nativesettings;
using test::BridgeTest;
using test::takeException;
using zlutil::contextmgr::BlessedZcrID;
using zlutil::contextmgr::ZcrID;

// A file that exists while the object does.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content)
      : name_(testing::TempDir() + "/handles_test_" + std::to_string(getpid()) + ".xml") {
    std::ofstream(name_) << content;
  }
  ~TemporaryFile() { std::remove(name_.c_str()); }
  const std::string& name() const { return name_; }

 private:
  const std::string name_;
};

class Handles : public BridgeTest {
 protected:
  jlong zvmRoot(jlong session) { return nativeGetZvmRoot(env_, nullptr, session); }
  jlong load(const std::string& file) { return nativeLoadSettings(env_, nullptr, str(file)); }
  jlong target(jlong handle) { return nativeGetPtrTarget(env_, nullptr, handle); }
  void release(jlong handle) { nativeReleasePtr(env_, nullptr, handle); }
};

TEST_F(Handles, TwoHandlesOnOneRootHaveOneTarget) {
  const jlong first = zvmRoot(0);
  const jlong second = zvmRoot(0);
  EXPECT_NE(first, second);
  EXPECT_EQ(target(first), target(second));
  EXPECT_NE(target(first), target(handle_));
  release(first);
  EXPECT_TRUE(getRootFromJava(second)) << "a handle keeps its node when another is released";
  release(second);
  release(0);
}

TEST_F(Handles, AHandleKeepsItsTreeAlive) {
  boost::weak_ptr<zlutil::settings::Settings> weak;
  const jlong handle = nativeLoadSettings(env_, nullptr, nullptr);
  weak = getRootFromJava(handle);
  EXPECT_FALSE(weak.expired());
  release(handle);
  EXPECT_TRUE(weak.expired());
}

TEST_F(Handles, NoFileNameMakesAnEmptyStandaloneRoot) {
  const jlong handle = nativeLoadSettings(env_, nullptr, nullptr);
  EXPECT_EQ(getRootFromJava(handle)->getName(), "__STANDALONE_ROOT__");
  EXPECT_TRUE(getRootFromJava(handle)->getChildren().empty());
  release(handle);
}

TEST_F(Handles, AFileBecomesATreeOfItsOwn) {
  const TemporaryFile file(
      "<settings version=\"1\"><node name=\"n\"><key name=\"k\" type=\"int\">"
      "<value level=\"user\">5</value></key></node></settings>");
  const jlong handle = load(file.name());
  ASSERT_NE(handle, 0) << takeException(env_);
  const auto root = getRootFromJava(handle);
  EXPECT_EQ(root->getName(), "__STANDALONE_ROOT__");
  EXPECT_EQ(boost::any_cast<int>(root->getChild("n")->getValue("k", "")), 5);
  release(handle);
}

TEST_F(Handles, AFileThatCannotBeReadOrParsedIsAFileNotFoundException) {
  EXPECT_EQ(load("/nonexistent/x.xml"), 0);
  const std::string missing = takeException(env_);
  EXPECT_EQ(missing.find("java.io.FileNotFoundException: Settings file could not be loaded for "
                         "\"/nonexistent/x.xml\": "),
            0u)
      << missing;
  const TemporaryFile bad("<settings version=\"1\">\n  <nod name=\"n\"/></settings>");
  EXPECT_EQ(load(bad.name()), 0);
  const std::string parse = takeException(env_);
  EXPECT_EQ(parse.find("java.io.FileNotFoundException: " + bad.name() + ":2:"), 0u) << parse;
  // U+0000 cannot be in a file name.
  EXPECT_EQ(load("/tmp/a\xC0\x80"), 0);
  EXPECT_EQ(takeException(env_).find("java.io.FileNotFoundException: "), 0u);
}

TEST_F(Handles, AnEngineSessionLeadsToItsContext) {
  using boost::make_shared;
  auto& sessions = zvm::ProcessSession::session();
  sessions.addSession(make_shared<zvm::ZVM>(41, zvm::RuntimeContext{ZcrID(77)}));
  sessions.addSession(make_shared<zvm::ZVM>(42, boost::none));
  EXPECT_EQ(ZcrID(77), nativezvm::getZcrForHandle(41));
  for (const long blessed : {0L, 42L, 43L}) {
    EXPECT_EQ(BlessedZcrID, nativezvm::getZcrForHandle(blessed));
  }
  const jlong own = zvmRoot(41);
  const jlong process = zvmRoot(0);
  EXPECT_NE(target(own), target(process));
  EXPECT_EQ(ZcrID(77), getRootFromJava(own)->getZcrID());
  release(own);
  release(process);
  sessions.removeSession(41);
  sessions.removeSession(42);
  EXPECT_EQ(BlessedZcrID, nativezvm::getZcrForHandle(41));
}

TEST_F(Handles, ANegativeSessionLeavesTheNativeAsACppException) {
  EXPECT_THROW(zvmRoot(-1), boost::numeric::negative_overflow);
}

TEST_F(Handles, TheFactoryDirectoryIsTheServices) {
  EXPECT_EQ(zlutil::settings::ZSettings::getFactoryDir(BlessedZcrID),
            text(nativeGetFactoryDir(env_, nullptr, handle_)));
}

}  // namespace
