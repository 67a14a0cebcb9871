// The tree of a context, read from its directories.
#include "host/roots/context_trees.h"
#include "tests/support/settings_verbs.h"
#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
namespace host = zlutil::settings::host;

std::string file(const std::string& content) {
  return "<settings version=\"1\">" + content + "</settings>";
}
std::string key(const std::string& name, const std::string& type, const std::string& value) {
  return "<key name=\"" + name + "\" type=\"" + type + "\"><value>" + value + "</value></key>";
}

class LevelDirectories : public testing::Test {
 protected:
  // Makes a tree of the directories, and stores its reports in errors_.
  SettingsPtr makeTree() {
    testing::internal::CaptureStderr();
    const SettingsPtr root = host::makeContextTree(zlutil::contextmgr::BlessedZcrID,
                                                   {"", workgroup_.path(), factory_.path()});
    errors_ = testing::internal::GetCapturedStderr();
    return root;
  }

  const TemporaryDirectory workgroup_;
  const TemporaryDirectory factory_;
  std::string errors_;
};

TEST_F(LevelDirectories, FilesOfAllLevelsMakeOneTree) {
  factory_.write("a.xml", file("<node name=\"n\">" + key("x", "int", "1") + "</node>"));
  factory_.write("b.xml", file("<node name=\"n\">" + key("y", "int", "2") + "</node>"));
  factory_.write("notes.txt", "no settings");
  workgroup_.write("w.xml", file("<node name=\"n\">" + key("x", "int", "3") + "</node>"));
  const SettingsPtr root = makeTree(), node = root->getChild("n");
  EXPECT_EQ(errors_, "");
  EXPECT_EQ(namesOf(node->getChildren()), (Names{"x", "y"}));
  EXPECT_EQ(intAt(node, "x"), 3);
  EXPECT_EQ(intAt(node, "x", "factory"), 1);
  EXPECT_EQ(intAt(node, "y"), 2);
  EXPECT_EQ(node->getChild("x")->getPath(), "n.x");
  EXPECT_EQ(node->getParent(), root);
  EXPECT_EQ(node->getZcrID(), zlutil::contextmgr::BlessedZcrID);
}

TEST_F(LevelDirectories, ABrokenFileIsReportedInOneLineAndTheOthersAreRead) {
  factory_.write("a.xml", file(key("before", "int", "1") + key("bad", "int", "x")));
  factory_.write("b.xml", file(key("good", "int", "1")));
  workgroup_.write("c.xml", file("<key name=\"good\" type=\"string\"/>"));
  workgroup_.write("d.xml", file("<node name=\"good\"/>"));
  workgroup_.write("e.xml", file("<key name=\"good\" type=\"int\"><value level=\"user\">1</value>"
                                 "</key>"));
  const SettingsPtr root = makeTree();
  EXPECT_EQ(namesOf(root->getChildren()), Names{"good"});
  EXPECT_EQ(intAt(root, "good"), 1);
  const std::string lines[] = {factory_.file("a.xml") + ":1:", workgroup_.file("c.xml") + ":1:",
                               workgroup_.file("d.xml") + ":1:", workgroup_.file("e.xml") + ":1:"};
  for (const std::string& line : lines) {
    EXPECT_NE(errors_.find(line), std::string::npos) << errors_;
  }
  EXPECT_EQ(std::count(errors_.begin(), errors_.end(), '\n'), 4) << errors_;
}

TEST_F(LevelDirectories, EntriesOfFilesCanBeOverriddenButNotChanged) {
  factory_.write("a.xml", file("<node name=\"n\">" + key("k", "int", "1") + "</node>"));
  const SettingsPtr root = makeTree(), node = root->getChild("n");
  for (const char* level : {"workgroup", "factory"}) {
    const std::string message =
        messageOf<CantModifyValuesOnReadOnlyLevel>([&] { node->setAny("k", 2, level); });
    EXPECT_NE(message.find("\"n.k\""), std::string::npos) << message;
    EXPECT_NE(message.find(level), std::string::npos) << message;
    EXPECT_EQ(setAll(root, {{node->getChild("k"), 2}}, level).size(), 1u);
  }
  messageOf<CantModifyValuesOnReadOnlyLevel>([&] { node->unset("k", "factory"); });
  messageOf<CantModifyValuesOnReadOnlyLevel>([&] { node->removeKey("k"); });
  messageOf<CantModifyValuesOnReadOnlyLevel>([&] { root->removeNode("n"); });
  node->setAny("k", 2, "user");
  EXPECT_EQ(intAt(node, "k"), 2);
  addKey(node, "own");
  node->removeKey("own");
  root->copySubtree(node, "copy");
  EXPECT_EQ(intAt(root->getChild("copy"), "k", "user"), 2);
  root->removeNode("copy");
}

TEST_F(LevelDirectories, MissingDirectoriesAreEmptyLevels) {
  const SettingsPtr root =
      host::makeContextTree(zlutil::contextmgr::BlessedZcrID, {"", "", factory_.file("none")});
  EXPECT_TRUE(root->getChildren().empty());
}

TEST_F(LevelDirectories, MissingDirectoriesAndMisnamedFilesAreReported) {
  factory_.write("odd\n.XML", file(key("k", "int", "1")));
  const std::string none = factory_.file("none"), notThere = ": No such file or directory\n";
  const struct {
    host::Directories directories;
    std::string reported;
  } cases[] = {
      {{"", "", factory_.write("file", "")}, factory_.file("file") + ": Not a directory\n"},
      {{"", none, ""}, none + notThere},
      {{"", "", none, true}, none + notThere},
      {{"", "", factory_.path()},
       factory_.file("odd\\n.XML") +
           ": is not read: the name of a settings file must end in \".xml\"\n"}};
  for (const auto& [directories, reported] : cases) {
    testing::internal::CaptureStderr();
    const SettingsPtr root = host::makeContextTree(zlutil::contextmgr::BlessedZcrID, directories);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), reported);
    EXPECT_TRUE(root->getChildren().empty());
  }
}

TEST_F(LevelDirectories, TheTreeOfAContextIsMadeOnceFromTheEnvironment) {
  using zlutil::contextmgr::ZcrID;
  const ZcrID context(77);
  const TemporaryDirectory user;
  factory_.write("a.xml", file(key("k", "int", "1")));
  setenv("SETTINGS_USERDIR", user.path().c_str(), 1);
  setenv("SETTINGS_FACTORYDIR", factory_.path().c_str(), 1);
  setenv("SETTINGS_WORKGROUPDIR", "", 1);
  EXPECT_EQ(zlutil::settings::ZSettings::getFactoryDir(context), factory_.path());
  const SettingsPtr root = Settings::getSettingsRoot(context);
  setenv("SETTINGS_FACTORYDIR", "/nowhere", 1);
  EXPECT_EQ(Settings::getSettingsRoot(context), root);
  EXPECT_EQ(root->getZcrID(), context);
  EXPECT_EQ(intAt(root, "k"), 1);
  EXPECT_EQ(zlutil::settings::ZSettings::getFactoryDir(context), factory_.path());
  EXPECT_EQ(zlutil::settings::ZSettings::getFactoryDir(ZcrID(78)), "/nowhere");
  unsetenv("SETTINGS_FACTORYDIR");
  EXPECT_EQ(Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID),
            Settings::getSettingsRoot(zlutil::contextmgr::BlessedZcrID));
  const std::string beside = zlutil::settings::ZSettings::getFactoryDir(ZcrID(78));
  EXPECT_EQ(beside.substr(beside.rfind('/')), "/factory");
}

}  // namespace
}  // namespace test
