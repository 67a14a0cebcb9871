// Problems that no call reports: who receives them.
#include "service/problems.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace zlutil::settings {
namespace {

using Lines = std::vector<std::string>;

// Ends the process of a death test: with 0 if it is so.
void endWith(bool isSo) { std::exit(isSo ? 0 : 1); }

TEST(ProblemsDeathTest, ThatWereTakenOverArePrintedOnlyIfNobodyFetchesThem) {
  EXPECT_EXIT(
      {
        const std::uint64_t before = takeProblemsOver();
        reportProblem("first\n");
        const bool isFetched = fetchProblems() == Lines{"first\\n"} && fetchProblems().empty();
        reportProblem("second");
        endWith(isFetched && takeProblemsOver() == before + 2);
      },
      testing::ExitedWithCode(0), "^second\n$");
}

TEST(ProblemsDeathTest, AreNotLostIfManyWait) {
  EXPECT_EXIT(
      {
        takeProblemsOver();
        for (int i = 0; i < 258; ++i) reportProblem(std::to_string(i));
        endWith(fetchProblems().front() == "2" && noticedProblems().size() == 256);
      },
      testing::ExitedWithCode(0), "^0\n1\n$");
}

TEST(ProblemsDeathTest, ArePrintedAgainOnceTheyAreGivenBack) {
  EXPECT_EXIT(
      {
        takeProblemsOver();
        takeProblemsOver();
        reportProblem("waits");
        giveProblemsBack();
        reportProblem("waits too");
        std::fputs("given back: ", stderr);
        giveProblemsBack();
        reportProblem("is printed");
        endWith(noticedProblems().back() == "is printed");
      },
      testing::ExitedWithCode(0), "^given back: waits\nwaits too\nis printed\n$");
}

}  // namespace
}  // namespace zlutil::settings
