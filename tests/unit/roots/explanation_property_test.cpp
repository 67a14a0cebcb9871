// Explanations of keys in trees of generated files: they must agree with the values that are read.
#include <fstream>
#include <random>

#include "host/roots/context_trees.h"
#include "service/explanation.h"
#include "tests/support/settings_verbs.h"
#include "tests/support/temporary_directory.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace test {
namespace {

using namespace zlutil::settings;

constexpr int kTrees = 25;
constexpr int kKeys = 8;

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  bool oneIn(int n) { return random_() % n == 0; }

  // Returns the file of a level. Each value is on the line of its key and names key and level.
  std::string file(int level, bool mayLock) {
    const std::string lock = " locked=\"true\" reason=\"because\"";
    std::string text = "<settings version=\"1\"><node name=\"n\"";
    text += (mayLock && oneIn(5) ? lock : "") + ">\n";
    for (int key = 0; key < kKeys; ++key) {
      if (oneIn(4)) continue;
      text += "<key name=\"k" + std::to_string(key) + "\" type=\"" + types_[key] + '"';
      text += mayLock && oneIn(4) ? lock : "";
      text += oneIn(3) ? "/>\n" : "><value>" + valueOf(key, level) + "</value></key>\n";
    }
    return text + (oneIn(6) ? "<wrong/>" : "") + "</node></settings>";
  }

  static std::string valueOf(int key, int level) { return std::to_string(10 * key + level); }

  // Gives every key a type, in about half of the cases another one than before.
  void chooseTypes() {
    for (std::string& type : types_) type = oneIn(2) ? "int" : "string";
  }

 private:
  std::mt19937 random_;
  std::array<std::string, kKeys> types_;
};

// Returns the line of a file of the form FILE:LINE:COLUMN.
std::string lineAt(const std::string& source) {
  const std::size_t column = source.rfind(':'), line = source.rfind(':', column - 1);
  std::ifstream file(source.substr(0, line));
  std::string text;
  for (int i = std::stoi(source.substr(line + 1)); i > 0; --i) std::getline(file, text);
  return text.substr(std::stoul(source.substr(column + 1)) - 1);
}

void expectTrue(const SettingsPtr& node, int index) {
  const std::string name = "k" + std::to_string(index);
  const SettingsPtr key = node->getChild(name);
  if (!key) return;
  const Explanation explanation = explainKey(key);
  boost::any inEffect;
  for (int level = 0; level < 4; ++level) {
    const LevelExplanation& one = explanation.levels[level];
    const boost::any value = node->getValue(name, one.level);
    EXPECT_EQ(one.value.empty(), value.empty());
    EXPECT_TRUE(value.empty() || zlutil::boostany::sameValue(one.value, value));
    EXPECT_EQ(one.source.empty(), value.empty());
    if (level >= 2 && !value.empty()) {
      const std::string expected = "<value>" + Generator::valueOf(index, level) + "</value>";
      EXPECT_EQ(lineAt(one.source).substr(0, expected.size()), expected) << one.source;
    }
    EXPECT_EQ(isWritable(key, one.level), !one.isLocked && one.readOnlyReason.empty());
    EXPECT_TRUE(!one.isLocked || explanation.lock);
    if (one.isInEffect) {
      EXPECT_TRUE(inEffect.empty());
      EXPECT_EQ(effectiveLevelOf(key), one.level);
      inEffect = one.value;
    }
  }
  const boost::any read = node->getValue(name, "");
  EXPECT_EQ(read.empty(), inEffect.empty());
  EXPECT_TRUE(read.empty() || zlutil::boostany::sameValue(read, inEffect));
  EXPECT_TRUE(explanation.levels[1].leftOut.empty() || explanation.levels[1].value.empty());
}

// Values of the user are set under one choice of types and read under another, with other locks and
// other files, some of them wrong.
TEST(ExplanationProperty, AgreesWithTheValuesThatAreRead) {
  int inEffect = 0, leftOut = 0, locked = 0, unreadable = 0;
  for (int seed = 0; seed < kTrees; ++seed) {
    SCOPED_TRACE(seed);
    Generator generator(seed);
    const TemporaryDirectory user, workgroup, factory;
    const auto makeTree = [&](bool mayLock) {
      generator.chooseTypes();
      factory.write("a.xml", generator.file(3, mayLock));
      factory.write("b.xml", generator.file(3, mayLock));
      workgroup.write("w.xml", generator.file(2, mayLock));
      testing::internal::CaptureStderr();
      SettingsPtr root = host::makeContextTree(zlutil::contextmgr::BlessedZcrID,
                                               {user.path(), workgroup.path(), factory.path()});
      testing::internal::GetCapturedStderr();
      return root;
    };
    const SettingsPtr before = makeTree(false);
    if (const SettingsPtr node = before->getChild("n")) {
      for (int key = 0; key < kKeys; ++key) {
        const std::string name = "k" + std::to_string(key);
        if (!node->getChild(name)) continue;
        const bool isInt = node->getKeyType(name) == zlutil::boostany::kKindOf<int>;
        if (isInt) node->setAny(name, 10 * key + 1, "user");
        if (!isInt) node->setAny(name, Generator::valueOf(key, 1), "user");
      }
    }
    const SettingsPtr root = makeTree(true), node = root->getChild("n");
    if (!node) continue;
    for (int key = 0; key < kKeys; ++key) {
      expectTrue(node, key);
      const SettingsPtr entry = node->getChild("k" + std::to_string(key));
      if (!entry) continue;
      const Explanation explanation = explainKey(entry);
      inEffect += !effectiveLevelOf(entry).empty();
      leftOut += !explanation.levels[1].leftOut.empty();
      locked += explanation.lock.has_value();
      unreadable += !explanation.levels[3].unreadable.empty();
    }
  }
  // The generator reaches each case.
  for (const int count : {inEffect, leftOut, locked, unreadable}) EXPECT_GT(count, 10);
}

}  // namespace
}  // namespace test
