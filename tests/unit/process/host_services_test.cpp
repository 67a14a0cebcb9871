// The small services of the host: names, messages, texts, sessions, the console.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "base/text.h"
#include "service/console.h"
#include "service/engine_session.h"
#include "service/failures.h"
#include "service/identifier.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using zlutil::settings::Failure;
using zlutil::settings::isIdentifierName;

TEST(IdentifierName, IsALetterThenLettersDigitsAndUnderscoresUpTo63) {
  for (const char* good : {"a", "Z", "a1_B", "x__"}) EXPECT_TRUE(isIdentifierName(good)) << good;
  for (const char* bad : {"", "1a", "_a", "a-b", "a.b", "a b", "\xC3\xA4", "a\xC3\xA4"}) {
    EXPECT_FALSE(isIdentifierName(bad)) << bad;
  }
  EXPECT_TRUE(isIdentifierName(std::string(63, 'a').c_str()));
  EXPECT_FALSE(isIdentifierName(std::string(64, 'a').c_str()));
  EXPECT_FALSE(isIdentifierName(nullptr));
}

TEST(FailureMessage, InsertsNarrowAndWideArguments) {
  const Failure<NoSuchKey> failure(std::string("100%1"), base::ustring(u"k\x00E4"));
  EXPECT_EQ(failure.GetMessageTxt(), "\"100%1\" has no key \"k\xC3\xA4\".");
  EXPECT_STREQ(failure.what(), failure.GetMessageTxt().c_str());
  EXPECT_STREQ(failure.GetMsgID().name(), "NoSuchKey");
  EXPECT_EQ(BaseMsgID("t", "%2|%1|%3|%|%0|50%", {std::string("a"), std::string("b")}).format(),
            "b|a||%|%0|50%");
}

TEST(FailureMessage, IsReachableThroughEveryInterface) {
  const Failure<FileLoadingError> failure(std::string("f"), std::string("gone"));
  EXPECT_STREQ(static_cast<const std::exception&>(failure).what(), "f: gone");
  EXPECT_EQ(static_cast<const IMsgIDException&>(failure).GetMessageTxt(), "f: gone");
  EXPECT_EQ(static_cast<const IUserException&>(failure).GetMessageTxt(), "f: gone");
}

TEST(Text, IsNarrowInsideAndUtf8AtTheBorders) {
  const struct {
    std::u16string units;
    std::string narrow;
    const char* utf8;  // null if UTF-8 cannot hold it
  } cases[] = {
      {u"a\x00E4\x20AC", "a\xC3\xA4\xE2\x82\xAC", "a\xC3\xA4\xE2\x82\xAC"},
      {{0xD83D, 0xDE00}, "\xED\xA0\xBD\xED\xB8\x80", "\xF0\x9F\x98\x80"},
      {{0xD83D}, "\xED\xA0\xBD", nullptr},
      {{0xDE00, 0xD83D}, "\xED\xB8\x80\xED\xA0\xBD", nullptr},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(base::narrowFromUstring(c.units), c.narrow);
    EXPECT_EQ(base::to_ustring(c.narrow), c.units);
    const std::optional<std::string> utf8 = base::utf8FromNarrow(c.narrow);
    ASSERT_EQ(utf8.has_value(), c.utf8 != nullptr);
    if (!c.utf8) continue;
    EXPECT_EQ(*utf8, c.utf8);
    EXPECT_EQ(base::narrowFromUtf8(c.utf8), c.narrow);
  }
  EXPECT_EQ(base::narrowFromUstring(std::u16string(1, u'\0')), "\xC0\x80");
  EXPECT_EQ(base::utf8FromNarrow("\xC0\x80"), std::string(1, '\0'));
  for (const char* bad : {"\xFF", "\xC3", "\xC0\x80", "\xED\xA0\xBD", "\xF4\x90\x80\x80", "\x80"}) {
    EXPECT_EQ(base::narrowFromUtf8(bad), std::nullopt);
  }
  // Text from outside may be standard UTF-8, or arbitrary bytes.
  EXPECT_EQ(base::to_ustring("a\xF0\x9F\x98\x80"), (std::u16string{'a', 0xD83D, 0xDE00}));
  EXPECT_EQ(base::to_ustring("a\xFF\xC3"), u"a\xFFFD\xFFFD");
  EXPECT_EQ(base::displayFromNarrow("a\xED\xA0\xBD"), "a\xEF\xBF\xBD");
  EXPECT_THROW(base::codecvt_ustring_to_string(u"a", "latin1"), std::invalid_argument);
}

TEST(EngineSessions, AreFoundByTheirIdentifierUntilTheyAreRemoved) {
  zvm::ProcessSession& process = zvm::ProcessSession::session();
  const zlutil::contextmgr::ZcrID context(5);
  process.addSession(boost::make_shared<zvm::ZVM>(3, zvm::RuntimeContext{context}));
  process.addSession(boost::make_shared<zvm::ZVM>(4, boost::none));
  EXPECT_EQ(process.findSession(3)->getContext()->zcrID, context);
  EXPECT_EQ(process.findSession(4)->getContext(), nullptr);
  process.addSession(boost::make_shared<zvm::ZVM>(3, boost::none));
  EXPECT_EQ(process.findSession(3)->getContext(), nullptr);
  process.removeSession(3);
  process.removeSession(3);
  EXPECT_EQ(process.findSession(3), nullptr);
  EXPECT_EQ(process.findSession(zvm::ZVM::UndefinedID), nullptr);
  EXPECT_THROW(process.addSession(nullptr), std::invalid_argument);
  EXPECT_THROW(process.addSession(boost::make_shared<zvm::ZVM>(0, boost::none)),
               std::invalid_argument);
}

TEST(Console, PrintsNarrowTextAsUtf8) {
  testing::internal::CaptureStdout();
  utPrintf("%s=%d\n", "\xED\xA0\xBD\xED\xB8\x80", 7);
  utPrintf("%s", "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\xF0\x9F\x98\x80=7\n");
}

}  // namespace
}  // namespace test
