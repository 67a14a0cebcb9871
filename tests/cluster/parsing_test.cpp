// The parts of a shared store that need no server: addresses, credentials, keys, documents, lines.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/shared_store/base64.h"
#include "host/shared_store/cluster_options.h"
#include "host/shared_store/key_layout.h"
#include "host/shared_store/line_splitter.h"
#include "host/shared_store/setting_document.h"
#include "tests/support/temporary_directory.h"
#include "values/stored_value.h"

namespace test {
namespace {

using namespace zlutil::settings::host;

std::string refusalOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::invalid_argument& refusal) {
    return refusal.what();
  }
  return "";
}

TEST(ClusterAddresses, HaveMembersWithPortsAndAPrefix) {
  const ClusterAddress address = parseClusterAddress("https://a,https://[::1]:1/team/x/");
  EXPECT_EQ(address.members, (std::vector<std::string>{"https://a:2379", "https://[::1]:1"}));
  EXPECT_EQ(address.keyPrefix(), "/team/x/");
  for (const char* wrong :
       {"", "a:1/p", "https://", "https:///p", "https://a", "https://a/", "https://a,/p",
        "https://u:p@a/p", "https://a:x/p", "ftp://a/p", "https://a/p?q", "https://a/p//q",
        "https://[/p", "https://a:1:2/p", "https://a,b/p"}) {
    EXPECT_NE(refusalOf([&] { parseClusterAddress(wrong); }), "") << wrong;
  }
  const std::string refusal = refusalOf([] { parseClusterAddress("http://u:secret@a:1/p"); });
  EXPECT_EQ(refusal.find("secret"), std::string::npos) << refusal;
  const auto secrecyOf = [](const char* text) {
    return refusalOf([&] { requireSecrecy(parseClusterAddress(text)); });
  };
  EXPECT_EQ(secrecyOf("https://a,http://127.0.0.1,http://localhost:1,http://[::1]/p"), "");
  for (const char* open : {"https://a,http://b/p", "http://127.b/p", "http://localhost.b/p"}) {
    EXPECT_NE(secrecyOf(open).find("unencrypted"), std::string::npos) << open;
  }
}

TEST(ClusterCredentials, AreReadFromAFileThatOnlyItsOwnerMayUse) {
  const TemporaryDirectory directory;
  const std::string file = directory.write("password", "anna\nse cret\n");
  const auto read = [&] { readCredentials(file); };
  chmod(file.c_str(), 0640);
  EXPECT_NE(refusalOf(read).find("chmod 600"), std::string::npos);
  chmod(file.c_str(), 0600);
  EXPECT_EQ(readCredentials(file).user, "anna");
  EXPECT_EQ(readCredentials(file).password, "se cret");
  directory.write("password", "anna");
  EXPECT_NE(refusalOf(read), "");
  EXPECT_NE(refusalOf([&] { readCredentials(directory.file("none")); }), "");
  EXPECT_NE(refusalOf([&] { readCredentials(directory.path()); }), "");
}

TEST(Base64, ComesBackExactlyAndIsStrict) {
  for (const std::string& bytes : {std::string(), std::string("a"), std::string("ab"),
                                   std::string("abc"), std::string("\0\xFF\x80~", 4)}) {
    EXPECT_EQ(bytesFromBase64(base64From(bytes)), bytes);
  }
  EXPECT_EQ(base64From("any carnal pleas"), "YW55IGNhcm5hbCBwbGVhcw==");
  for (const char* wrong : {"a", "ab", "abc", "a===", "ab=c", "YR==", "a\nb=", "====", "?AAA"}) {
    EXPECT_FALSE(bytesFromBase64(wrong)) << wrong;
  }
}

TEST(SettingDocuments, ComeBackExactly) {
  const SettingDocument documents[] = {
      {true, 0, {}, zlutil::settings::ZValidator("x > 1"), "c"},
      {false, 7, 5, zlutil::settings::JValidator("\xED\xA0\x80", "1..2"), "c"},
      {false, 0, {}, {}, "c"},
      {false, 13, std::vector<std::string>{"\xC0\x80", "y"}, {}, "c"}};
  for (const SettingDocument& document : documents) {
    const std::string text = textOf(document, {"u", "t", "m"});
    std::string reason;
    const auto read = parseDocument(text, reason);
    ASSERT_TRUE(read) << text << reason;
    EXPECT_EQ(read->isNode, document.isNode);
    EXPECT_EQ(read->kind, document.kind);
    EXPECT_TRUE(zlutil::boostany::sameValue(read->value, document.value)) << text;
    EXPECT_EQ(textOf(*read, {"u", "t", "m"}), text);
  }
  for (const char* wrong :
       {"", "1", "{}", "{\"type\":\"x\"}", "{\"type\":\"int\",\"value\":2147483648}",
        "{\"type\":\"none\",\"value\":1}", "{\"type\":\"int\",\"validator\":{\"java\":[1,2]}}"}) {
    std::string reason;
    EXPECT_FALSE(parseDocument(wrong, reason)) << wrong;
    EXPECT_NE(reason, "") << wrong;
  }
}

TEST(KeyLayout, NodesLiveAsLongAsAKeyBelowThem) {
  KeyReader reader("/p/", [](const std::string&, const std::string&) {});
  const auto put = [&](const std::string& key, const std::string& text) {
    return reader.read({"/p/" + key, text, 1, 1}, true).changes.size();
  };
  const auto removedBy = [&](const std::string& key) {
    const Changes changes = reader.readDeletion({"/p/" + key, "", 0, 2}).changes;
    return changes.empty() ? std::string() : std::get<RemoveSubtree>(changes.front()).path;
  };
  const std::string number = "{\"type\":\"int\",\"value\":1}";
  EXPECT_EQ(put("a/b/c", number), 4u);
  EXPECT_EQ(put("a/b/d", number), 2u);
  EXPECT_EQ(put("a/n", "{\"type\":\"node\"}"), 1u);
  EXPECT_EQ(put("a/n/k", "no document"), 0u);
  EXPECT_EQ(removedBy("a/n/k"), "");
  EXPECT_EQ(removedBy("a/b/c"), "a.b.c");
  EXPECT_EQ(removedBy("a/b/d"), "a.b");
  EXPECT_EQ(removedBy("a/n"), "a");
  // A node with a key of its own stays until that is gone.
  put("m", "{\"type\":\"node\"}");
  put("m/k", number);
  EXPECT_EQ(removedBy("m/k"), "m.k");
  put("m/k", number);
  EXPECT_EQ(removedBy("m"), "");
  EXPECT_EQ(removedBy("m/k"), "m");
  std::string deep = "/p/a";
  for (int level = 0; level < 300; ++level) deep += "/a";
  for (const std::string& wrong :
       {deep, std::string("/p/"), std::string("/p/a/"), std::string("/p/a.b"), std::string("/p//a"),
        std::string("/q/a"), std::string("/p/a\0b", 6)}) {
    EXPECT_FALSE(pathOf("/p/", wrong)) << wrong;
  }
}

TEST(LineSplitter, JoinsPartsAndRefusesLinesThatAreTooLong) {
  LineSplitter lines(5);
  EXPECT_TRUE(lines.feed("ab"));
  EXPECT_TRUE(lines.feed("c\n\nde\nf"));
  EXPECT_EQ(lines.take(), (std::vector<std::string>{"abc", "de"}));
  lines.finish();
  EXPECT_EQ(lines.take(), std::vector<std::string>{"f"});
  EXPECT_FALSE(lines.feed("123456"));
}

}  // namespace
}  // namespace test
