// The validators of the Java API that need no Java, run by the host. The Java tests have the same
// rules of the classes themselves.
#include "host/tree/standard_validators.h"

#include <gtest/gtest.h>

#include <limits>

#include "host/tree/decimal.h"
#include "host/tree/java_proxies.h"
#include "service/failures.h"
#include "service/z_settings.h"
#include "tests/support/settings_verbs.h"

namespace test {
namespace {

using namespace zlutil::settings;
using host::Decimal;
using KORVEN::settings::core::ValidationFailure;

constexpr char kPackage[] = "com.velonix.services.settings.validators.";

// Returns the reason; "" for a valid value and "needs Java" for one that only Java can judge.
std::string judged(const std::string& name, const std::string& argument, const boost::any& value) {
  const auto judgement = host::judged(JValidator(kPackage + name, argument), value);
  if (!judgement) return "needs Java";
  return judgement->value_or("");
}

TEST(StandardValidators, ARangeIsInclusiveAndExact) {
  constexpr auto kGreatest = std::numeric_limits<unsigned long>::max();
  const double infinity = std::numeric_limits<double>::infinity();
  struct {
    const char* bounds;
    boost::any value;
    const char* problem;
  } const cases[] = {
      {"6..72", 6, ""},
      {"6..72", 72, ""},
      {"6..72", 5, "5 is outside 6..72"},
      {" -1.5 .. 1e1 ", -1.5, ""},
      {"-1.5..1e1", -1.51, "-1.51 is outside -1.5..1e1"},
      {"-1.5..1e1", 10.5, "10.5 is outside -1.5..1e1"},
      {"0.1..", 0.1f, ""},
      {"0.1000000001..", 0.1f, "0.1 is outside 0.1000000001.."},
      {"..18446744073709551614", kGreatest,
       "18446744073709551615 is outside ..18446744073709551614"},
      {"18446744073709551615..", kGreatest, ""},
      {"0..", infinity, ""},
      {"..0", infinity, "Infinity is outside ..0"},
      {"..0", -infinity, ""},
      {"..", std::nan(""), "NaN is outside .."},
      {"1..2", std::vector<int>{1, 3}, "element 1: 3 is outside 1..2"},
      {"1..2", std::vector<int>{}, ""},
      {"1..2", true, "true is not a number"},
      {"1..2", std::string("1"), "1 is not a number"},
      {"2..1", 1, "\"2..1\" is not of the form min..max, such as 1..72"},
      {"1-2", 1, "\"1-2\" is not of the form min..max, such as 1..72"},
      {"a..2", 1, "\"a..2\" is not of the form min..max, such as 1..72"},
      {"1e..2", 1, "\"1e..2\" is not of the form min..max, such as 1..72"},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(judged("Range", one.bounds, one.value), one.problem) << one.bounds;
  }
}

TEST(StandardValidators, ALengthCountsCharactersAndAChoiceNamesItsTexts) {
  const std::string outside = "\xED\xA0\xBD\xED\xB8\x80";  // U+1F600 as a surrogate pair
  EXPECT_EQ(judged("Length", "1..1", outside), "");
  EXPECT_EQ(judged("Length", "2..", outside), "the length 1 is outside 2..");
  EXPECT_EQ(judged("Length", "..1", std::vector<int>{1, 2}), "the length 2 is outside ..1");
  EXPECT_EQ(judged("Length", "..1", 5), "5 is neither a text nor an array");
  EXPECT_EQ(judged("Choice", "a|b|", std::string("b")), "");
  EXPECT_EQ(judged("Choice", "a|b|", std::string()), "");
  EXPECT_EQ(judged("Choice", "a|b", std::string("c")), "\"c\" is none of a, b");
  EXPECT_EQ(judged("Choice", "1|2", 2), "");
  EXPECT_EQ(judged("Choice", "a", std::vector<std::string>{"a", "b"}),
            "element 1: \"b\" is none of a");
  EXPECT_EQ(judged("Choice", "1.0|NaN", 1.0), "");
  EXPECT_EQ(judged("Choice", "1.0|NaN", std::nan("")), "");
  EXPECT_EQ(judged("Choice", "1.0|NaN", 1.5f), "\"1.5\" is none of 1.0, NaN");
  EXPECT_EQ(judged("Pattern", "a", std::string("a")), "needs Java");
  EXPECT_FALSE(host::judged(JValidator("Range", "1..2"), 5));
}

TEST(StandardValidators, DecimalsAreOrdered) {
  const char* const ascending[] = {"-1e400", "-12.5", "-12",   "-1e-400", "0",
                                   "1e-400", "0.009", "0.01",  ".1",      "1.",
                                   "9.9",    "10",    "10.01", "100",     "1e400"};
  for (std::size_t i = 0; i < std::size(ascending); ++i) {
    for (std::size_t j = 0; j < std::size(ascending); ++j) {
      EXPECT_EQ(*Decimal::parse(ascending[i]) < *Decimal::parse(ascending[j]), i < j)
          << ascending[i] << ' ' << ascending[j];
    }
  }
  EXPECT_FALSE(*Decimal::parse("-0") < *Decimal::parse("0.0"));
  EXPECT_FALSE(*Decimal::parse("1e1") < *Decimal::parse("+10.0"));
  for (const char* const text : {"", "-", ".", "1e", "1e+", "1x", "e1", "1e99999999999", "--1"}) {
    EXPECT_FALSE(Decimal::parse(text)) << text;
  }
}

TEST(StandardValidators, WithoutJavaOtherValidatorsRefuseUnlessTheProgramAcceptsThat) {
  const SettingsPtr root = ZSettings::createSettingsNode("root", false, true, {});
  addKey(root, "ranged", JValidator(std::string(kPackage) + "Range", "1..5"));
  addKey(root, "other", JValidator("a.B", ""));
  root->setAny("ranged", 5, "user");
  EXPECT_EQ(messageOf<ValidationFailure>([&] { root->setAny("ranged", 6, "user"); }),
            "6 is outside 1..5");
  EXPECT_EQ(messageOf<ValidationFailure>([&] { root->setAny("other", 6, "user"); }),
            "\"other\" has the Java validator a.B, which cannot be run: there is no Java in this "
            "process.");
  JValidator::acceptUnchecked();
  root->setAny("other", 6, "user");
  EXPECT_EQ(messageOf<ValidationFailure>([&] { root->setAny("ranged", 6, "user"); }),
            "6 is outside 1..5");
}

}  // namespace
}  // namespace test
