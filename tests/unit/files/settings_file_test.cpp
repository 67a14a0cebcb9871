#include "service/settings_file.h"

#include <sys/stat.h>

#include <limits>

#include "tests/support/settings_verbs.h"
#include "tests/support/temporary_directory.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using zlutil::boostany::ElementOf;
using zlutil::boostany::forEachKind;
using zlutil::boostany::kIsVector;
using zlutil::boostany::kKindOf;
using zlutil::settings::JValidator;
using zlutil::settings::SettingsFile;
using zlutil::settings::ZSettings;
using zlutil::settings::ZValidator;

const Names kAllLevels = {"session", "user", "workgroup", "factory"};

class SettingsFileTest : public testing::Test {
 protected:
  SettingsPtr load(const std::string& content) {
    return Settings::importAsStandaloneObject(base::to_ustring(directory_.write("f.xml", content)));
  }

  // Returns a file with this content.
  static std::string fileOf(const std::string& key) {
    return "<settings version=\"1\">\n" + key + "\n</settings>";
  }

  base::ustring name(const std::string& file) { return base::to_ustring(directory_.file(file)); }

  const TemporaryDirectory directory_;
};

TEST_F(SettingsFileTest, AFileBecomesAStandaloneTree) {
  const SettingsPtr root = load(R"(<?xml version="1.0"?>
<settings version="1">
  <!-- a comment -->
  <node name="editor">
    <key name="fontSize" type="int"><value>12</value><value level="user"> 14 </value></key>
    <key name="tabs" type="int[]"><value> <item>2</item><item>4</item> </value></key>
    <key name="none" type="ulong"/>
    <key name="untyped"/>
  </node>
  <key name="title" type="string"><value> a &amp; &#x1F600;
</value></key>
</settings>)");
  EXPECT_EQ(root->getName(), "__STANDALONE_ROOT__");
  EXPECT_EQ(root->getZcrID(), zlutil::contextmgr::AnyZcrID);
  const SettingsPtr editor = root->getChild("editor");
  EXPECT_EQ(namesOf(editor->getChildren()), (Names{"fontSize", "none", "tabs", "untyped"}));
  EXPECT_EQ(intAt(editor, "fontSize"), 14);
  EXPECT_EQ(intAt(editor, "fontSize", "factory"), 12);
  EXPECT_EQ(boost::any_cast<std::vector<int>>(editor->getValue("tabs", "")),
            (std::vector<int>{2, 4}));
  EXPECT_EQ(editor->getKeyType("none"), boost::make_optional(kKindOf<unsigned long>));
  EXPECT_FALSE(editor->getKeyType("untyped"));
  // Inside, a supplementary character is two three-byte surrogates.
  EXPECT_EQ(boost::any_cast<std::string>(root->getValue("title", "")),
            " a & \xED\xA0\xBD\xED\xB8\x80\n");
  EXPECT_EQ(editor->getChild("fontSize")->getPath(), "__STANDALONE_ROOT__.editor.fontSize");
}

TEST_F(SettingsFileTest, DeclaredEncodingsAreRead) {
  const SettingsPtr root =
      load("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
           fileOf("<key name=\"k\" type=\"string\"><value>\xE4</value></key>"));
  EXPECT_EQ(boost::any_cast<std::string>(root->getValue("k", "")), "\xC3\xA4");
}

TEST_F(SettingsFileTest, AnInvalidFileIsRefusedWithLineAndColumn) {
  const std::string text = "<key name=\"k\" type=\"string\"><value>";
  const std::string intKey = "<key name=\"k\" type=\"int\">";
  const std::string manyNodes = [] {
    std::string text;
    for (int i = 0; i < 201; ++i) text += "<node name=\"n\">";
    return text;
  }();
  const struct {
    std::string content;
    const char* position;
    const char* text;
  } cases[] = {
      {"", ":1:1: ", "no element"},
      {"<settings version=\"1\">", ":1:23: ", "ends too early: <settings> is open since line 1"},
      {"<settings version=\"1\">\n<node", ":2:1: ", "<settings> is open since line 1"},
      {"<?xml version=\"1.0\" encoding=\"x-odd\"?><settings/>", ":1:31: ", "expected UTF-8"},
      {"<other/>", ":1:1: ", "\"other\""},
      {"<settings/>", ":1:1: ", "needs the attribute \"version\""},
      {"<settings version=\"2\"/>", ":1:1: ", "\"2\""},
      {"<settings version=\"1\" x=\"\"/>", ":1:1: ", "\"x\""},
      {"<settings version=\"1\"/><more/>", ":1:24: ", "junk"},
      {"<!DOCTYPE settings [<!ENTITY a \"b\">]><settings version=\"1\"/>", ":1:", "document type"},
      {"<!DOCTYPE settings SYSTEM \"/etc/passwd\"><settings version=\"1\"/>",
       ":1:", "document type"},
      {fileOf("&a;"), ":2:1: ", "undefined entity: \"&\" is written \"&amp;\""},
      {fileOf(text + "a & b</value></key>"), ":2:39: ", ": \"&\" is written \"&amp;\""},
      {fileOf(text + "AT&T </value></key>"), ":2:40: ", ": \"&\" is written \"&amp;\""},
      {fileOf("<node name=\"a&b\"/>"), ":2:", ": \"&\" is written \"&amp;\""},
      {fileOf("<node name=\"a<b\"/>"), ":2:14: ", ": \"<\" is written \"&lt;\""},
      {fileOf("<node name=\"a&#10;b&#x9b;\"/>"), ":2:1: ", "\"a\\nb\\u009b\" is not a name"},
      {fileOf("text"), ":2:", "text cannot stand here"},
      {fileOf("<key type=\"int\"/>"), ":2:1: ", "\"name\""},
      {fileOf("<key name=\"1k\" type=\"int\"/>"), ":2:1: ", "\"1k\""},
      {fileOf("<key name=\"k\" type=\"text\"/>"),
       ":2:1: ", "\"text\", expected one of string, boolean,"},
      {fileOf("<key name=\"" + std::string(3000000, 'k') + "\"/>"), ":2:1: ", "kkk...\" is not a"},
      {fileOf("<key name=\"" + std::string(5000000, 'k') + "\"/>"), ":2:1: ", "longer than 4 MB"},
      {fileOf("<key name=\"k\"/>\n<node name=\"k\"/>"), ":3:1: ", "a second entry named \"k\""},
      {fileOf("<key name=\"k\"><value/></key>"), ":2:15: ", "\"type\""},
      {fileOf(intKey + "<value>1</value><value>1</value></key>"), ":2:42: ", "second value"},
      {fileOf(intKey + "<value level=\"top\">1</value></key>"), ":2:", "\"top\""},
      {fileOf(intKey + "<value>1<item>1</item></value></key>"), ":2:", "\"item\""},
      {fileOf(intKey + "<value></value></key>"), ":2:", "\"\" is not a value of the type int"},
      {fileOf(intKey + "<value>2147483648</value></key>"), ":2:", "\"2147483648\""},
      {fileOf(intKey + "<value>1x</value></key>"), ":2:", "\"1x\""},
      {fileOf(intKey + "<value>+1</value></key>"), ":2:", "\"+1\""},
      {fileOf("<key name=\"k\" type=\"ubyte\"><value>-1</value></key>"), ":2:", "ubyte"},
      {fileOf("<key name=\"k\" type=\"float\"><value>1e39</value></key>"), ":2:", "1e39"},
      {fileOf("<key name=\"k\" type=\"double\"><value>inf</value></key>"), ":2:", "inf"},
      {fileOf("<key name=\"k\" type=\"boolean\"><value>TRUE</value></key>"), ":2:", "TRUE"},
      {fileOf("<key name=\"k\" type=\"int[]\"><value>1</value></key>"), ":2:", "text cannot"},
      {fileOf("<key name=\"k\" type=\"int[]\"><value><item>x</item></value></key>"),
       ":2:", "the type int"},
      {fileOf("<key name=\"k\" type=\"int\"><value>1</value><script-validator/></key>"),
       ":2:", "before everything else"},
      {fileOf("<node name=\"n\"><java-validator class=\"c\"/></node>"), ":2:", "\"argument\""},
      {fileOf("<node name=\"n\"></key>"), ":2:18: ", "mismatched tag: <node> is open since line 2"},
      {fileOf("<key name=\"k\" type=\"string\"><value>\xFF</value></key>"), ":2:", "are not UTF-8"},
      {fileOf("<key name=\"k\" type=\"string\"><value>&#0;</value></key>"), ":2:", "invalid"},
      {fileOf(manyNodes), ":2:", "more than 200 deep"},
  };
  for (const auto& c : cases) {
    const std::string message = messageOf<SaxParseException>([&] { load(c.content); });
    EXPECT_EQ(message.rfind(directory_.file("f.xml") + c.position, 0), 0u) << message;
    EXPECT_NE(message.find(c.text), std::string::npos) << message;
    EXPECT_LT(message.size(), 500u);
    EXPECT_EQ(message, base::withControlsEscaped(message));
  }
}

TEST_F(SettingsFileTest, AMillionNestedElementsAreRefusedAtOnce) {
  std::string text = "<settings version=\"1\">";
  for (int i = 0; i < 1000000; ++i) text += "<node name=\"n\">";
  EXPECT_NE(messageOf<SaxParseException>([&] { load(text); }).find("200 deep"), std::string::npos);
}

TEST_F(SettingsFileTest, AnUnreadableFileIsReportedWithTheReason) {
  const auto failure = [](const base::ustring& path) {
    return messageOf<FileLoadingError>([&] { Settings::importAsStandaloneObject(path); });
  };
  EXPECT_EQ(failure(name("none.xml")), directory_.file("none.xml") + ": No such file or directory");
  EXPECT_EQ(failure(base::to_ustring(directory_.path())), directory_.path() + ": Is a directory");
  failure(u"");
  failure(name("a.xml") + base::ustring(1, u'\0'));
  failure(name("a.xml") + base::ustring(1, char16_t{0xD800}));
  ASSERT_EQ(mkfifo(directory_.file("pipe").c_str(), 0600), 0);
  failure(name("pipe"));
  // It opens as a file, and nothing is mapped at its beginning.
  EXPECT_EQ(failure(u"/proc/self/mem"), "/proc/self/mem: Input/output error");
}

// Returns values of a kind that are likely to be read back changed.
template <class Element>
std::vector<Element> hardValues() {
  using Limits = std::numeric_limits<Element>;
  if constexpr (std::is_same_v<Element, std::string>) {
    return {"",
            " ",
            "\r\n\t",
            "<&>\"']]>",
            "\xC3\xA4\xED\xA0\xBD\xED\xB8\x80",
            "\x7F",
            std::string(5000, 'x')};
  } else if constexpr (std::is_same_v<Element, bool>) {
    return {true, false};
  } else if constexpr (std::is_floating_point_v<Element>) {
    return {Element(0.1),        Element(-0.0),    Limits::denorm_min(), Limits::min(),
            Limits::max(),       Limits::lowest(), Limits::infinity(),   -Limits::infinity(),
            Limits::quiet_NaN(), Element(1) / 3};
  } else {
    return {0, 1, Limits::min(), Limits::max()};
  }
}

TEST_F(SettingsFileTest, EveryValueLevelAndValidatorComesBackExactly) {
  JValidator::acceptUnchecked();
  const SettingsPtr root = ZSettings::createSettingsNode("r", false, true, ValidatorChoice());
  const SettingsPtr node = addNode(root, "n", JValidator("a.B", "\"<1>\r\n\t\xC3\xA4"));
  addKey(node, "guarded", ZValidator(" x < 1 && y "));
  addKey(node, "untyped");
  addNode(node, "empty");
  forEachKind([&](auto tag) {
    using Type = typename decltype(tag)::type;
    const auto values = hardValues<ElementOf<Type>>();
    const std::string kind = "k" + std::to_string(kKindOf<Type>);
    if constexpr (kIsVector<Type>) {
      addKey(node, kind);
      node->setAny(kind, values, "user");
      node->setAny(kind, Type(), "factory");
    } else {
      for (std::size_t i = 0; i < values.size(); ++i) {
        const std::string name = kind + "_" + std::to_string(i);
        addKey(node, name);
        node->setAny(name, Type(values[i]), kAllLevels[i % 4]);
      }
    }
  });
  SettingsFile::write(root, kAllLevels, name("out.xml"));
  const SettingsPtr back = Settings::importAsStandaloneObject(name("out.xml"));
  const SettingsPtr twin = back->getChild("n");
  ASSERT_EQ(namesOf(twin->getChildren()), namesOf(node->getChildren()));
  for (const SettingsPtr& key : node->getChildren()) {
    if (!key->isKey()) continue;
    EXPECT_EQ(twin->getKeyType(key->getName()), node->getKeyType(key->getName()));
    for (const std::string& level : kAllLevels) {
      EXPECT_TRUE(zlutil::boostany::sameValue(twin->getValue(key->getName(), level),
                                              node->getValue(key->getName(), level)))
          << key->getName() << " at " << level;
    }
  }
  // The validators too: written again, the file is the same.
  SettingsFile::write(back, kAllLevels, name("again.xml"));
  EXPECT_EQ(directory_.read("again.xml"), directory_.read("out.xml"));
}

TEST_F(SettingsFileTest, TextThatXmlCannotHoldIsRefusedAndTheOldFileRemains) {
  const SettingsPtr root = ZSettings::createSettingsNode("r", false, true, ValidatorChoice());
  addKey(root, "k");
  directory_.write("out.xml", "old");
  for (const char* text : {"\xC0\x80", "\xED\xA0\x80", "\x01", "\xEF\xBF\xBF"}) {
    root->setAny("k", std::string(text), "user");
    const std::string message =
        messageOf<StoreFailure>([&] { SettingsFile::write(root, {"user"}, name("out.xml")); });
    EXPECT_NE(message.find("r.k"), std::string::npos) << message;
  }
  EXPECT_EQ(directory_.read("out.xml"), "old");
}

TEST_F(SettingsFileTest, WritingReplacesTheFileBehindALinkAndKeepsItsMode) {
  const SettingsPtr root = load(fileOf("<key name=\"k\" type=\"int\"><value>1</value></key>"));
  directory_.write("target.xml", "old");
  ASSERT_EQ(chmod(directory_.file("target.xml").c_str(), 0640), 0);
  std::filesystem::create_symlink("target.xml", directory_.file("link.xml"));
  SettingsFile::write(root, {"factory"}, name("link.xml"));
  EXPECT_TRUE(std::filesystem::is_symlink(directory_.file("link.xml")));
  EXPECT_EQ(intAt(Settings::importAsStandaloneObject(name("target.xml")), "k"), 1);
  struct stat status;
  ASSERT_EQ(stat(directory_.file("target.xml").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  messageOf<StoreFailure>([&] { SettingsFile::write(root, {"user"}, name("none/out.xml")); });
  messageOf<UnSupportedLevel>([&] { SettingsFile::write(root, {"top"}, name("out.xml")); });
  messageOf<NotANodeName>(
      [&] { SettingsFile::write(root->getChild("k"), {"user"}, name("out.xml")); });
  // f.xml, target.xml and link.xml: nothing is left behind.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory_.path()), {}), 3);
}

TEST_F(SettingsFileTest, OnlyTheChosenLevelsAreWritten) {
  const SettingsPtr root = load(
      fileOf(R"(<key name="k" type="int"><value level="user">1</value><value>2</value></key>)"));
  SettingsFile::write(root, {"factory"}, name("out.xml"));
  const SettingsPtr back = Settings::importAsStandaloneObject(name("out.xml"));
  EXPECT_EQ(intAt(back, "k"), 2);
  EXPECT_FALSE(back->isSet("k", "user"));
}

TEST_F(SettingsFileTest, ReadingIntoALevelIsOneOperation) {
  const SettingsPtr root =
      load(fileOf(R"(<node name="n"><key name="a" type="int"/><key name="b" type="int"/></node>)"));
  directory_.write("in.xml", fileOf(R"(<node name="n">
      <key name="a" type="int"><value level="user">1</value><value>0</value></key>
      <key name="b" type="int"><value>2</value></key></node>)"));
  Listener listener(root);
  EXPECT_EQ(SettingsFile::read(root, "session", name("in.xml")), SettingsProblems());
  EXPECT_EQ(listener.heard(), (Names{"changed a", "changed b"}));
  EXPECT_EQ(intAt(root->getChild("n"), "a", "session"), 1);
  EXPECT_EQ(intAt(root->getChild("n"), "b", "session"), 2);

  directory_.write("bad.xml", fileOf(R"(<node name="n">
      <key name="a" type="int"><value>7</value></key>
      <key name="x" type="int"><value>7</value></key></node>)"));
  const SettingsProblems problems = SettingsFile::read(root, "session", name("bad.xml"));
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].first, "n.x");
  EXPECT_EQ(intAt(root->getChild("n"), "a", "session"), 1);
  EXPECT_EQ(SettingsFile::read(root, "top", name("in.xml")).size(), 1u);
}

}  // namespace
}  // namespace test
