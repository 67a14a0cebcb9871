// Settings files with flipped bits and cut tails, and a disk that fails while one is written.
#include "service/settings_file.h"

#include <cerrno>

#include "tests/durability/failing_system.h"
#include "tests/support/settings_verbs.h"
#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using zlutil::settings::SettingsFile;
using zlutil::settings::ZSettings;

class SettingsFileDamage : public testing::Test {
 protected:
  SettingsFileDamage() : root_(ZSettings::createSettingsNode("r", false, true, {})) {
    const SettingsPtr node = addNode(root_, "n", zlutil::settings::JValidator("c", "1..2"));
    addKey(root_, "text");
    root_->setAny("text", std::string("a <b> & c"), "user");
    addKey(root_, "numbers");
    root_->setAny("numbers", std::vector<double>{0.5, -1e300}, "factory");
    for (int key = 0; key < 5; ++key) addKey(node, "k" + std::to_string(key));
    SettingsFile::write(root_, {"user", "factory"}, name());
    whole_ = directory_.read("f.xml");
  }

  base::ustring name() { return base::to_ustring(directory_.file("f.xml")); }

  // Returns how many entries a tree loaded from that content has; -1 if it is refused with a
  // message that names the file.
  int load(const std::string& content) {
    directory_.write("f.xml", content);
    try {
      return count(Settings::importAsStandaloneObject(name()));
    } catch (const Failure<SaxParseException>& refused) {
      EXPECT_NE(refused.GetMessageTxt().find("f.xml:"), std::string::npos)
          << refused.GetMessageTxt();
      return -1;
    }
  }

  static int count(const SettingsPtr& entry) {
    int entries = 1;
    for (const SettingsPtr& child : entry->getChildren()) entries += count(child);
    return entries;
  }

  const TemporaryDirectory directory_;
  const SettingsPtr root_;
  std::string whole_;
};

TEST_F(SettingsFileDamage, ATruncatedFileIsRefused) {
  const std::size_t end = whole_.rfind('>');
  for (std::size_t size = 0; size < end; ++size) {
    EXPECT_EQ(load(whole_.substr(0, size)), -1) << "cut at " << size;
  }
  EXPECT_EQ(load(whole_), count(root_));
}

TEST_F(SettingsFileDamage, AFlippedBitIsRefusedOrLosesNoEntry) {
  int refused = 0;
  for (std::size_t i = 0; i < whole_.size(); ++i) {
    for (const int bits : {0x01, 0x04, 0x20, 0x80, 0xFF}) {
      std::string damaged = whole_;
      damaged[i] = static_cast<char>(damaged[i] ^ bits);
      const int entries = load(damaged);
      refused += entries < 0;
      EXPECT_TRUE(entries < 0 || entries == count(root_)) << i << ": " << damaged;
    }
  }
  EXPECT_GT(refused, 0);
}

TEST_F(SettingsFileDamage, AFailedWriteLeavesTheOldFileOrTheNewOne) {
  root_->setAny("text", std::string("new"), "user");
  SettingsFile::write(root_, {"user"}, name());
  const std::string written = directory_.read("f.xml");
  for (const int error : {ENOSPC, EIO, EACCES}) {
    int failed = 0;
    for (int n = 1;; ++n) {
      directory_.write("f.xml", whole_);
      failOn(n, error);
      bool refused = false;
      try {
        SettingsFile::write(root_, {"user"}, name());
      } catch (const Failure<StoreFailure>& failure) {
        refused = true;
        EXPECT_NE(failure.GetMessageTxt().find(directory_.file("f.xml")), std::string::npos);
      }
      const bool over = !hasCome();
      failOn(0, 0);
      failed += refused;
      const std::string found = directory_.read("f.xml");
      EXPECT_TRUE(found == written || (refused && found == whole_)) << "call " << n;
      EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory_.path()), {}), 1)
          << "call " << n << ": a file remains";
      if (over) break;
    }
    EXPECT_GE(failed, 5) << "open, write, fsync, rename, and the directory";
  }
}

}  // namespace
}  // namespace test
