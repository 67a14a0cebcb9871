// Descriptions, constraints and former names of keys, which settings files supply.
#include "service/description.h"

#include "host/roots/context_trees.h"
#include "service/constraints.h"
#include "service/explanation.h"
#include "service/new_key.h"
#include "service/settings_file.h"
#include "tests/support/settings_verbs.h"
#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings;

std::string file(const std::string& content) {
  return "<settings version=\"1\">\n" + content + "</settings>\n";
}

class Descriptions : public testing::Test {
 protected:
  // Makes a tree of the directories, and stores its reports in errors_.
  SettingsPtr makeTree() {
    testing::internal::CaptureStderr();
    const SettingsPtr root = host::makeContextTree(
        zlutil::contextmgr::BlessedZcrID, {user_.path(), workgroup_.path(), factory_.path()});
    errors_ = testing::internal::GetCapturedStderr();
    return root;
  }

  const TemporaryDirectory user_, workgroup_, factory_;
  std::string errors_;
};

// Everything that a file can say, as the writer puts it.
const char kDescribed[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<settings version="1">
  <node name="n" title="A &amp; B">
    <key name="mode" type="string" title="Mode" unit="x" deprecated="Since 2." replaced-by="n.size" replaces="old.mode">
      <description>Two &lt;words&gt;.</description>
      <choices>
        <choice value="a" label="The a"/>
        <choice value=""/>
      </choices>
      <value level="factory">a</value>
    </key>
    <key name="size" type="int[]">
      <java-validator class="com.velonix.services.settings.validators.Range" argument="1.."/>
    </key>
  </node>
</settings>
)";

TEST_F(Descriptions, AreReadWrittenAndMergedWithTheLowestLevelFirst) {
  const SettingsPtr loaded =
      Settings::importAsStandaloneObject(base::to_ustring(factory_.write("a.xml", kDescribed)));
  EXPECT_EQ(SettingsFile::text(loaded, {"factory"}), kDescribed);
  workgroup_.write("w.xml", file("<node name=\"n\" title=\"C\" deprecated=\"D\">"
                                 "<key name=\"size\" title=\"Size\"><description>\n  One\n two "
                                 "</description></key></node>"));
  const SettingsPtr root = makeTree(), node = root->getChild("n");
  EXPECT_EQ(errors_, "");
  EXPECT_EQ(describe(node).title, "A & B");
  EXPECT_EQ(describe(node).deprecated, "D");
  const SettingDescription mode = describe(node->getChild("mode"));
  EXPECT_EQ(mode.text + mode.unit + mode.deprecated + mode.replacedBy + mode.replaces,
            "Two <words>.xSince 2.n.sizeold.mode");
  ASSERT_EQ(mode.choices.size(), 2u);
  EXPECT_EQ(mode.choices[0].value + mode.choices[0].label, "aThe a");
  EXPECT_EQ(mode.constraint, "choices");
  const SettingDescription size = describe(node->getChild("size"));
  EXPECT_EQ(size.title + size.text + size.constraint, "SizeOne tworange 1..");
  EXPECT_EQ(explainKey(node->getChild("size")).description.title, "Size");
  messageOf<NoSuchNode>([] { describe({}); });
}

TEST_F(Descriptions, ConstraintsBindCppAndMistakesInThemAreReported) {
  const std::string path = factory_.write(
      "a.xml",
      file("<key name=\"r\" type=\"int\"><range min=\"1\" max=\"9\"/></key>\n"
           "<key name=\"l\" type=\"string\"><length max=\"2\"/></key>\n"
           "<key name=\"f\" type=\"double[]\"><choices><choice value=\"0.10\"/></choices></key>\n"
           "<node name=\"n\"><range min=\"1\"/><key name=\"k\" type=\"int\"/></node>\n"
           "<key name=\"out\" type=\"int\"><range max=\"1\"/>\n<value>2</value></key>\n"
           "<key name=\"bad\" type=\"int\">\n<java-validator argument=\"2..1\" "
           "class=\"com.velonix.services.settings.validators.Range\"/></key>\n"
           "<key name=\"no\" type=\"int\">\n<java-validator argument=\"\" "
           "class=\"com.velonix.services.settings.validators.Rang\"/></key>\n"));
  const SettingsPtr root = makeTree();
  root->set("r", 9);
  root->set("l", "ab");
  root->set("f", std::vector<double>{0.1});
  root->set("n.k", 1);
  EXPECT_EQ(root->get<int>("out"), 2);
  const struct {
    std::function<void()> set;
    std::string reason;
  } cases[] = {{[&] { root->set("r", 10); }, "10 is outside 1..9"},
               {[&] { root->set("l", "abc"); }, "the length 3 is outside ..2"},
               {[&] {
                  root->set("f", std::vector<double>{0.1, 0.2});
                },
                "\"0.2\" is none of 0.10"},
               {[&] { root->set("n.k", 0); }, "0 is outside 1.."}};
  for (const auto& [set, reason] : cases) {
    const std::string message = messageOf<ValidationFailure>(set);
    EXPECT_NE(message.find(reason), std::string::npos) << message;
  }
  const Names reports = {path + ":7:1: the value breaks the key's own constraint: 2 is outside ..1",
                         path + ":9:1: \"2..1\" is not of the form min..max, such as 1..72",
                         path +
                             ":11:1: there is no validator com.velonix.services.settings."
                             "validators.Rang"};
  for (const std::string& report : reports) {
    EXPECT_NE(errors_.find(report), std::string::npos) << report << " in " << errors_;
  }
  EXPECT_EQ(SettingsFile::check(base::to_ustring(path)).size(), reports.size());
  for (const char* wrong :
       {"<range min=\"2\" max=\"1\"/>", "<range min=\"x\"/>", "<choices/>", "<choice value=\"1\"/>",
        "<choices><choice value=\"x\"/></choices>", "<choices><choice value=\"1|2\"/></choices>",
        "<range/><length/>", "<range/><description/>", "<value>1</value><range/>"}) {
    const std::string one = factory_.write(
        "one.xml", file(std::string("<key name=\"k\" type=\"int\">") + wrong + "</key>"));
    messageOf<SaxParseException>(
        [&] { Settings::importAsStandaloneObject(base::to_ustring(one)); });
  }
  // The same by C++, for a key that is added.
  NewKey::add(root, "own", constraints::choices({"", "1", "2"}), 2, "user");
  EXPECT_EQ(describe(root->getChild("own")).choices.size(), 3u);
  messageOf<ValidationFailure>([&] { root->set("own", 3); });
  EXPECT_EQ(makeTree()->get<int>("own"), 2);
  EXPECT_THROW(constraints::choices({"a|b"}), std::invalid_argument);
  EXPECT_THROW(constraints::choices({}), std::invalid_argument);
}

TEST_F(Descriptions, AValueUnderAFormerNameIsReadUntilThePresentOneIsWritten) {
  const auto define = [&](const std::string& key) {
    factory_.write("a.xml", file("<node name=\"n\"><key " + key +
                                 " type=\"int\"><value>1</value></key></node>"));
  };
  const std::string former = "name=\"old\"", present = "name=\"new\" replaces=\"n.old\"";
  define(former);
  makeTree()->set("n.old", 2);
  define(present);
  SettingsPtr root = makeTree();
  EXPECT_EQ(errors_, "");
  EXPECT_EQ(root->get<int>("n.new"), 2);
  EXPECT_FALSE(root->find<int>("n.old"));
  root->set("n.new", 3);
  EXPECT_EQ(makeTree()->get<int>("n.new"), 3);
  define(former);
  EXPECT_EQ(makeTree()->get<int>("n.old"), 1);
  // A newer value counts, whatever a program of the former version stores; a removed one does not
  // come back.
  makeTree()->set("n.old", 4);
  define(present);
  root = makeTree();
  EXPECT_EQ(root->get<int>("n.new"), 3);
  root->getChild("n")->unset("new", "user");
  EXPECT_EQ(root->get<int>("n.new"), 1);
  EXPECT_EQ(makeTree()->get<int>("n.new"), 1);
}

TEST_F(Descriptions, AnExplanationSaysWhatIsLeftOutAndWhy) {
  factory_.write("a.xml", file("<key name=\"k\" type=\"int\"/>"));
  makeTree()->set("k", 2);
  factory_.write("a.xml", file("<key name=\"k\" type=\"string\"/>"));
  const std::string wrong = factory_.write("b.xml", file("<key/>"));
  const Explanation explanation = explainKey(makeTree()->getChild("k"));
  EXPECT_TRUE(explanation.levels[1].value.empty());
  EXPECT_EQ(explanation.levels[1].leftOut,
            "the stored value is int, and the key holds string values");
  ASSERT_EQ(explanation.levels[3].unreadable.size(), 1u);
  EXPECT_NE(explanation.levels[3].unreadable[0].find(wrong + ":2:1: "), std::string::npos);
}

}  // namespace
}  // namespace test
