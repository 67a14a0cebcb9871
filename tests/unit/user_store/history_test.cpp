// The history of the user store, and undoing commits.
#include "service/history.h"

#include <random>
#include <set>
#include <sstream>

#include "tests/support/user_store_fixture.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings;
using namespace zlutil::settings::host;

class HistoryTest : public UserStoreTest {
 protected:
  NodePtr openWith(const HistoryLimits& limits) {
    UserStoreOptions options = storeIn(directory.path());
    options.history = limits;
    return openTree(options);
  }
};

std::string shown(const boost::any& value) {
  const auto* const number = boost::any_cast<int>(&value);
  return number ? std::to_string(*number) : value.empty() ? "-" : "other";
}

// Returns the changes of the last commit, such as "+n n.k:-,1".
std::string lastOf(const NodePtr& root) {
  std::string text;
  const HistoryCommit last = historyOf(root).back();
  for (const HistoryChange& change : last.changes) {
    text += text.empty() ? "" : " ";
    if (change.what == HistoryChange::kAdded) text += '+' + change.path;
    if (change.what == HistoryChange::kRemoved) text += 'x' + change.path;
    if (change.what == HistoryChange::kValue) {
      text += change.path + ':' + shown(change.before) + ',' + shown(change.after);
    }
  }
  return text;
}

std::set<std::string> linesOf(const NodePtr& root) {
  std::istringstream text(contentsOf(root));
  std::set<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.insert(line);
  return lines;
}

TEST_F(HistoryTest, EachCommitKeepsWhatItHasChanged) {
  const NodePtr root = open();
  const SettingsPtr key = addKey(root, "k");
  EXPECT_EQ(lastOf(root), "+k");
  {
    const CommitComment outer("outer");
    { const CommitComment inner("of \xF0\x9F\x98\x80"); }
    root->setAny("k", 1, "user");
  }
  EXPECT_EQ(lastOf(root), "k:-,1");
  const HistoryCommit commit = historyOf(root).back();
  EXPECT_EQ(commit.comment, "outer");
  EXPECT_EQ(commit.process, getpid());
  EXPECT_EQ(commit.program, "unit_tests");
  EXPECT_LT(std::chrono::system_clock::now() - commit.time, std::chrono::minutes(5));
  const SettingsPtr other = addKey(addNode(root, "n"), "k2");
  EXPECT_EQ(setAll(root, {{key, 2}, {other, 3}}, "user"), SettingsProblems());
  EXPECT_EQ(lastOf(root), "k:1,2 n.k2:-,3");
  root->copySubtree(root->getChild("n"), "m");
  EXPECT_EQ(lastOf(root), "+m +m.k2 m.k2:-,3");
  root->removeNode("n");
  EXPECT_EQ(lastOf(root), "xn xn.k2 n.k2:3,-");
  root->unset("k", "user");
  EXPECT_EQ(lastOf(root), "k:2,-");
  root->setAny("k", 7, "session");
  const auto all = historyOf(open());
  EXPECT_EQ(all.size(), 8u);
  EXPECT_EQ(historyOf(root, "k").size(), 4u);
  EXPECT_EQ(historyOf(root, "n").size(), 4u);
  for (std::size_t at = 1; at < all.size(); ++at) EXPECT_GT(all[at].number, all[at - 1].number);
}

TEST_F(HistoryTest, CommitsBeyondTheLimitsAreRemoved) {
  HistoryLimits few;
  few.commits = 3;
  const NodePtr root = openWith(few);
  addKey(root, "k");
  for (int value = 0; value < 130; ++value) root->setAny("k", value, "user");
  EXPECT_EQ(historyOf(root).size(), 3u);
  EXPECT_EQ(lastOf(root), "k:128,129");
  EXPECT_LE(shell()->number("SELECT count(DISTINCT id >> 28) FROM history"), 3 + 64);

  HistoryLimits small;
  small.bytes = 1000;
  const NodePtr large = openWith(small);
  addKey(large, "s");
  for (int size : {300, 400}) large->setAny("s", std::string(size, 'x'), "user");
  EXPECT_EQ(historyOf(large).size(), 1u);

  HistoryLimits young;
  young.days = 2;
  const auto all = historyOf(open());
  ASSERT_GT(all.size(), 5u);
  const std::int64_t middle = all[all.size() / 2].number;
  shell()->execute(("UPDATE history SET time = time - 49 * 3600000000 WHERE id < " +
                    std::to_string(middle) + " << 28")
                       .c_str());
  const auto recent = historyOf(openWith(young));
  EXPECT_EQ(recent.front().number, middle);
  EXPECT_EQ(recent.size(), all.size() - all.size() / 2);

  HistoryLimits none;
  none.commits = 0;
  openWith(none)->setAny("k", 1, "user");
  EXPECT_EQ(shell()->number("SELECT count(*) FROM history"), 0);
}

// Large values do not make the database grow without a limit between two prunings.
TEST_F(HistoryTest, LargeValuesArePrunedSoon) {
  HistoryLimits small;
  small.bytes = 1 << 20;
  const NodePtr root = openWith(small);
  addKey(root, "s");
  for (int n = 0; n < 60; ++n)
    root->setAny("s", std::string(1 << 19, static_cast<char>('a' + n % 26)), "user");
  EXPECT_LT(std::filesystem::file_size(database()), 10u << 20);
}

TEST_F(HistoryTest, ADatabaseOfVersion1IsUpgradedWithItsContent) {
  std::string content;
  {
    const NodePtr root = open();
    addKey(addNode(root, "n"), "k");
    root->getChild("n")->set<int>("k", 4);
    content = contentsOf(root);
  }
  shell()->execute("DROP TABLE history; PRAGMA user_version=1");
  std::filesystem::copy_file(database(), database() + ".backup-1",
                             std::filesystem::copy_options::overwrite_existing);
  {
    const NodePtr root = open();
    EXPECT_EQ(contentsOf(root), content);
    EXPECT_TRUE(historyOf(root).empty());
    root->getChild("n")->set<int>("k", 5);
    EXPECT_EQ(lastOf(root), "n.k:4,5");
    EXPECT_EQ(shell()->number("PRAGMA user_version"), 2);
    root->getChild("n")->set<int>("k", 4);
  }
  // A backup of version 1 restores a damaged database.
  directory.write("settings-1.db", std::string(8192, 'x'));
  testing::internal::CaptureStderr();
  EXPECT_EQ(contentsOf(open()), content);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("the state of"), std::string::npos);
}

boost::optional<std::string> refuseOne(const boost::shared_ptr<const Settings>&, const std::string&,
                                       const boost::any& value) {
  return boost::optional<std::string>(boost::any_cast<int>(value) == 1, "is 1");
}

TEST_F(HistoryTest, UndoIsAChangeLikeEveryOther) {
  const NodePtr root = open();
  addKey(root, "k", CValidator(&refuseOne));
  root->setAny("k", 2, "user");
  root->setAny("k", 3, "user");
  const std::int64_t last = historyOf(root).back().number;
  const NodePtr other = open();
  const Listener here(root), there(other);
  EXPECT_EQ(undoCommit(root, last), SettingsProblems());
  EXPECT_EQ(intAt(root, "k"), 2);
  EXPECT_EQ(here.heard(), Names{"changed k"});
  EXPECT_EQ(there.waitFor(1), Names{"changed k"});
  EXPECT_EQ(historyOf(root).back().comment, "undo of commit " + std::to_string(last));
  // The undo itself can be undone.
  EXPECT_EQ(undoCommit(root, historyOf(root).back().number), SettingsProblems());
  EXPECT_EQ(intAt(root, "k"), 3);

  const auto reason = [&](std::int64_t number, bool isForced = false) {
    const SettingsProblems problems = undoCommit(root, number, isForced);
    return problems.empty() ? "" : problems.front().first + ": " + problems.front().second;
  };
  EXPECT_NE(reason(last).find("k: commit " + std::to_string(last + 2) + " by \"unit_tests\""),
            std::string::npos);
  EXPECT_EQ(reason(12345), ": the history has no commit of this number");
  EXPECT_EQ(reason(last - 1, true), "");
  EXPECT_FALSE(root->isSet("k", "user"));
  shell()->execute("UPDATE history SET old = '1' WHERE old = '2'");
  EXPECT_NE(reason(last, true).find("is 1"), std::string::npos);
  root->removeKey("k");
  EXPECT_NE(reason(last, true).find("k: the key has been removed"), std::string::npos);
}

TEST_F(HistoryTest, UndoingAnAdditionMindsLaterAdditionsBelow) {
  const NodePtr root = open();
  const SettingsPtr node = addNode(root, "n");
  const std::int64_t number = historyOf(root).back().number;
  addKey(node, "k");
  const SettingsProblems problems = undoCommit(root, number);
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems.front().first, "n");
  EXPECT_TRUE(root->getChild("n"));
  EXPECT_TRUE(undoCommit(root, number, true).empty());
  EXPECT_FALSE(root->getChild("n"));
  EXPECT_TRUE(undoCommit(root, historyOf(root).back().number).empty());
  EXPECT_TRUE(root->getChild("n")->getChild("k"));
}

// Two trees on one database, as two processes have them, without threads that read the changes of
// the other one.
TEST_F(HistoryTest, UndoSeesTheChangesOfOtherProcesses) {
  const NodePtr root = openUnwatched(storeIn(directory.path()));
  addKey(root, "k");
  root->setAny("k", 1, "user");
  const NodePtr other = openUnwatched(storeIn(directory.path()));
  const std::int64_t number = historyOf(root).back().number;
  other->setAny("k", 2, "user");
  EXPECT_EQ(undoCommit(root, number).size(), 1u);
  EXPECT_EQ(intAt(root, "k"), 2);
  // A change that no history shows, as an earlier version makes it.
  const std::int64_t next = historyOf(root).back().number;
  shell()->execute(
      "UPDATE settings SET value = '9';"
      "INSERT INTO journal SELECT max(revision) + 1, '=k' || char(10) FROM journal");
  const SettingsProblems problems = undoCommit(root, next);
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems.front().second, "it has another value now");
}

// Makes random changes, and undoes random commits of them: either exactly the lines that a commit
// has changed come back, or a later commit has changed the same entries and nothing is changed.
TEST_F(HistoryTest, UndoGivesBackExactlyTheStateBefore) {
  struct Difference {
    std::set<std::string> gone, come;
  };
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const auto upTo = [&](int limit) { return static_cast<int>(random() % limit); };
  const NodePtr root = open();
  for (int node = 0; node < 3; ++node) {
    const SettingsPtr made = addNode(root, "n" + std::to_string(node));
    for (int key = 0; key < 4; ++key)
      addKey(made, "k" + std::to_string(key),
             JValidator("com.velonix.services.settings.validators.Range", "0..99"));
  }
  const auto anyNode = [&]() { return root->getChild("n" + std::to_string(upTo(5))); };
  const auto change = [&] {
    const SettingsPtr node = anyNode();
    const std::string key = "k" + std::to_string(upTo(6)), name = "n" + std::to_string(upTo(5));
    if (!node) {
      root->copySubtree(root->getChildren().front(), name);
    } else if (const int what = upTo(10); what < 4) {
      node->setAny(key, upTo(100), "user");
    } else if (what < 6) {
      node->unset(key, "user");
    } else if (what < 8) {
      SettingsValues values;
      for (const SettingsPtr& child : node->getChildren()) values.emplace_back(child, upTo(3));
      setAll(root, values, "user");
    } else if (what == 8) {
      addKey(node, key);
    } else if (upTo(2) == 0) {
      node->removeKey(key);
    } else {
      root->removeNode(node->getName());
      if (root->getChildren().empty()) addNode(root, "n0");
    }
  };
  std::map<std::int64_t, Difference> commits;
  const auto lastNumber = [&] { return historyOf(root).back().number; };
  const auto note = [&](const std::set<std::string>& before, std::int64_t number) {
    const std::set<std::string> after = linesOf(root);
    Difference& made = commits[number];
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                        std::inserter(made.gone, made.gone.end()));
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                        std::inserter(made.come, made.come.end()));
  };
  int undone = 0, refused = 0;
  for (int step = 0; step < 240; ++step) {
    const std::set<std::string> before = linesOf(root);
    const std::int64_t last = lastNumber();
    if (step % 3 != 2 || commits.empty()) {
      try {
        change();
      } catch (const IUserException&) {
      }
      if (lastNumber() == last + 1) note(before, last + 1);
      continue;
    }
    const auto chosen =
        std::next(commits.rbegin(), upTo(std::min<int>(6, static_cast<int>(commits.size()))));
    std::set<std::string> expected = before;
    if (undoCommit(root, chosen->first).empty()) {
      for (const std::string& line : chosen->second.come) expected.erase(line);
      expected.insert(chosen->second.gone.begin(), chosen->second.gone.end());
      ++undone;
    } else {
      ++refused;
    }
    ASSERT_EQ(linesOf(root), expected) << "commit " << chosen->first;
    if (lastNumber() == last + 1) note(before, last + 1);
  }
  EXPECT_GT(undone, 10);
  EXPECT_GT(refused, 3);
  EXPECT_EQ(linesOf(open()), linesOf(root));
}

}  // namespace
}  // namespace test
