#include "kalmia/analysis/table/TableRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FailureOf.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

/// Five rows, one of which is called by the number of another one, and two alike.
class TableRows : public ::testing::Test {
 protected:
  std::vector<int> Named(const std::vector<std::string>& words) const {
    return RequireRows(table_, RowNames(table_, 0), words);
  }
  std::vector<int> Numbered(const std::vector<std::string>& words) const {
    return RequireRows(table_, RowNames(table_, -1), words);
  }

  Table table_{"name,x\ntank,1\n5,2\nvalve,3\ntwin,4\ntwin,5\n", "t.csv"};
};

TEST_F(TableRows, AreFoundByNameOrByNumber) {
  EXPECT_THAT(Named({"valve", "tank"}), ElementsAre(2, 0));
  EXPECT_THAT(Named({"3", "1"}), ElementsAre(2, 0));
  EXPECT_THAT(Numbered({"5"}), ElementsAre(4));
  EXPECT_THAT(Named({}), IsEmpty());
}

TEST_F(TableRows, WithANameThatIsTheNumberOfAnotherOneWin) { EXPECT_THAT(Named({"5"}), ElementsAre(1)); }

TEST_F(TableRows, ThatAreNamedAgainComeOnce) { EXPECT_THAT(Named({"valve", "3", "valve"}), ElementsAre(2)); }

TEST_F(TableRows, ThatAreNotThereAreRefused) {
  for (const char* word : {"0", "6", "-1", "1.5", "1 ", "", "99999999999999999999"}) {
    EXPECT_THAT(FailureOf<BadData>([&] { Named({word}); }),
                Optional(AllOf(HasSubstr("t.csv: there is no row '" + std::string(word) + "'"), HasSubstr("its number from 1 to 5"))))
        << word;
  }
  EXPECT_THAT(FailureOf<BadData>([&] { Named({"valv"}); }), Optional(HasSubstr("did you mean 'valve'?")));
}

TEST_F(TableRows, OfOneNameAreRefused) {
  EXPECT_THAT(FailureOf<BadData>([&] { Named({"twin"}); }),
              Optional(HasSubstr("several rows are called 'twin', such as row 4 (line 5) and row 5 (line 6)")));
}

}  // namespace
}  // namespace kalmia::analysis
