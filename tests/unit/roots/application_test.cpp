// The trees of applications that name their sources (service/application.h).
#include "service/application.h"

#include "service/locks.h"
#include "service/testing.h"
#include "tests/support/settings_verbs.h"
#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using zlutil::settings::ApplicationSources;
using zlutil::settings::openApplication;
using zlutil::settings::overrideEnvironment;

std::string file(int value) {
  return "<settings version=\"1\"><key name=\"k\" type=\"int\" locked=\"true\"><value>" +
         std::to_string(value) + "</value></key></settings>";
}

class Applications : public testing::Test {
 protected:
  Applications() {
    overrideEnvironment("SETTINGS_USERDIR", user_.path());
    overrideEnvironment("SETTINGS_FACTORYDIR", factory_.path());
    overrideEnvironment("SETTINGS_WORKGROUPDIR", workgroup_.path());
  }
  ~Applications() override {
    for (const char* variable :
         {"SETTINGS_USERDIR", "SETTINGS_FACTORYDIR", "SETTINGS_WORKGROUPDIR"}) {
      overrideEnvironment(variable, "");
    }
  }

  static ApplicationSources named(const std::string& name) {
    ApplicationSources sources;
    sources.name = name;
    return sources;
  }

  const TemporaryDirectory user_, factory_, workgroup_;
};

TEST_F(Applications, TheSourcesOfTheProcessCountInTheFolderOfTheName) {
  for (const TemporaryDirectory* level : {&factory_, &workgroup_}) {
    std::filesystem::create_directory(level->path() + "/app");
    level->write("here.xml", file(1));
  }
  factory_.write("app/f.xml", file(2));
  testing::internal::CaptureStderr();
  const SettingsPtr app = openApplication(named("app")), none = openApplication(named("")),
                    other = openApplication(named("other"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");  // nobody has to make the other folders
  EXPECT_EQ(intAt(app, "k"), 2);
  EXPECT_EQ(intAt(app, "k", "workgroup"), -1);
  EXPECT_EQ(intAt(none, "k", "workgroup"), 1);
  EXPECT_EQ(namesOf(other->getChildren()), Names{});
  EXPECT_TRUE(std::filesystem::exists(user_.path() + "/app/settings-1.db"));
  EXPECT_TRUE(std::filesystem::exists(user_.path() + "/settings-1.db"));
}

TEST_F(Applications, ATreeIsSharedByTheSameSourcesAndEndsWithItsLastReference) {
  ApplicationSources sources = named("app");
  sources.factoryFiles.push_back({{}, "first", file(1)});
  sources.factoryFiles.push_back({{}, "second", file(2)});
  SettingsPtr root = openApplication(sources);
  EXPECT_EQ(openApplication(sources), root);
  EXPECT_EQ(intAt(root, "k"), 2);
  EXPECT_EQ(zlutil::settings::lockOf(root->getChild("k"))->source, "first:1:23");
  addKey(root, "session");
  root->setAny("session", 5, "session");
  std::swap(sources.factoryFiles[0], sources.factoryFiles[1]);
  const SettingsPtr swapped = openApplication(sources);
  EXPECT_EQ(intAt(swapped, "k"), 1);
  std::swap(sources.factoryFiles[0], sources.factoryFiles[1]);
  root.reset();
  root = openApplication(sources);
  EXPECT_TRUE(root->getChild("session"));
  EXPECT_EQ(intAt(root, "session"), -1);
}

TEST_F(Applications, InATestOnlySourcesThatAreNamedAreRead) {
  ASSERT_TRUE(zlutil::settings::keepSettingsInMemory());
  ApplicationSources sources = named("app");
  sources.factoryFiles.push_back({{}, "first", file(1)});
  SettingsPtr root = openApplication(sources);
  addKey(root, "own");
  root->setAny("own", 2, "user");
  EXPECT_EQ(intAt(openApplication(sources), "own"), 2);
  EXPECT_EQ(intAt(root, "k"), 1);
  root.reset();
  EXPECT_EQ(namesOf(openApplication(sources)->getChildren()), Names{"k"});
  EXPECT_TRUE(std::filesystem::is_empty(user_.path()));
}

TEST_F(Applications, TwoSourcesForOneLevelAndOtherNamesAreRefused) {
  ApplicationSources sources = named("app");
  sources.workgroupCluster = "https://a:2379/app";
  sources.workgroupDirectory = base::to_ustring(workgroup_.path());
  EXPECT_THROW(openApplication(sources), Failure<FileLoadingError>);
  sources = named("app");
  sources.factoryFiles.push_back({{}, "first", file(1)});
  sources.factoryDirectory = base::to_ustring(factory_.path());
  EXPECT_THROW(openApplication(sources), Failure<FileLoadingError>);
  for (const char* name : {"..", "/", "a/b", ".a", "\xff"}) {
    EXPECT_THROW(openApplication(named(name)), std::exception) << name;
  }
  EXPECT_NO_THROW(openApplication(named(std::string(63, 'a'))));
  EXPECT_THROW(openApplication(named(std::string(64, 'a'))), Failure<ValidationFailure>);
  EXPECT_THROW(overrideEnvironment("SETTINGS_USERDIR", std::string("a\0b", 3)),
               Failure<ValidationFailure>);
}

}  // namespace
}  // namespace test
