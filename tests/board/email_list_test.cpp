// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/email_list.h"

#include "board_rows.h"
#include "core/user_interface.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

using core::StatusPanel;
using testing::RememberingForm;

class EmailList : public testing::ProgramFixture {
 protected:
  ~EmailList() override { ResetBoard(); }
  RememberingForm form_;
};

TEST_F(EmailList, AFirstStartListsEverythingThereIs) {
  AddListed({.subject = "old", .received = DateTime::FromDate(1975, 2, 1)});
  AddListed({.subject = "in a wrong clock's future", .received = DateTime::FromDate(2036, 2, 7)});
  ASSERT_TRUE(RestoreFilterAndLoad(form_));
  EXPECT_EQ(CountListed(), 2);
  EXPECT_EQ(form_.filter.DateFrom, DateTime::FromDate(1975, 2, 1));
  EXPECT_EQ(form_.filter.DateTo, DateTime::FromDate(2036, 2, 7));
  EXPECT_EQ(ui_.status[StatusPanel::kCounts], "2; 2 In; 0 Out");
  EXPECT_EQ(ui_.status[StatusPanel::kLastLoaded], "");
}

TEST_F(EmailList, TheFilterComesBackAsItWasLeft) {
  ListFilter filter = EveryMessage();
  filter.DateFrom = DateTime::FromDate(2001, 5, 6);
  filter.DateFromGrows = filter.DateToGrows = false;
  filter.Active = true;
  filter.FromTo = "O'Neill";
  filter.Subject = "100% \u20AC";
  filter.FileName = "a.doc";
  filter.MailText = " x ";
  filter.Project = "Inbox";
  filter.Direction = ListDirection::kOut;
  filter.SortBy = ListSort::kFromTo;
  filter.SortOrder = ListOrder::kAscending;
  SaveFilter(filter, 7);
  repository::SetLastLoaded(DateTime::FromDate(2005, 3, 5).WithTime(14, 7, 0));

  ASSERT_TRUE(RestoreFilterAndLoad(form_));
  const ListFilter& read = form_.filter;
  EXPECT_EQ(BuildListWhere(read) + ListSortClause(read),
            BuildListWhere(filter) + ListSortClause(filter));
  EXPECT_EQ(read.Project, filter.Project);
  EXPECT_FALSE(read.AttachedFile);
  EXPECT_EQ(repository::GetParameter("Filter", "Count", repository::kAmountColumn).AsInt(), 7);
  EXPECT_EQ(ui_.status[StatusPanel::kLastLoaded], "Last loaded on 3/5/2005 14:07");
  EXPECT_TRUE(form_.placeholder);
}

TEST_F(EmailList, AnEndThatWasNotNarrowedGrowsWithTheDays) {
  SaveFilter(EveryMessage(), 0);
  SetNow(DateTime::FromDate(2020, 6, 18));
  EXPECT_EQ(ReadSavedFilter().DateTo, DateTime::FromDate(2020, 6, 18));
}

TEST_F(EmailList, StoredNumbersThatNameNoChoiceAreLeftOut) {
  for (const char* key : {"Direction", "SortBy", "SortOrder"}) {
    repository::SetParameter("Filter", key, repository::kAmountColumn, 77);
  }
  ListFilter read = ReadSavedFilter();
  EXPECT_EQ(read.Direction, ListDirection::kBoth);
  EXPECT_EQ(read.SortBy, ListSort::kDate);
  EXPECT_EQ(read.SortOrder, ListOrder::kDescending);
}

TEST_F(EmailList, TheBoxesOfferEachNameOnce) {
  AddListed({.subject = "1", .name = "Zoe", .files = {"b.txt", "a.txt"}});
  AddListed({.subject = "2", .name = "Ann", .files = {"a.txt"}});
  EXPECT_THAT(ContactNames(), ElementsAre("Ann", "Zoe"));
  EXPECT_THAT(AttachmentNames(), ElementsAre("a.txt", "b.txt"));
}

}  // namespace
}  // namespace tarnwick::board
