// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/list_model.h"

#include <QAbstractItemModelTester>
#include <QFont>
#include <QPixmap>

#include "board_rows.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

class ListModelTest : public testing::ProgramFixture {
 protected:
  ~ListModelTest() override { ResetBoard(); }

  void Bind() { model_.Bind(Board().ListRecordset, Board().ListIsPlaceholder); }
  QString Cell(int row, int column, int role = Qt::DisplayRole) {
    return model_.index(row, column).data(role).toString();
  }

  ListModel model_;
  std::unique_ptr<QAbstractItemModelTester> tester_ = std::make_unique<QAbstractItemModelTester>(
      &model_, QAbstractItemModelTester::FailureReportingMode::Fatal);
};

TEST_F(ListModelTest, ShowsWhatTheListHolds) {
  EXPECT_EQ(model_.rowCount(), 0);
  QStringList headers;
  for (int column = 0; column < model_.columnCount(); ++column) {
    headers << model_.headerData(column, Qt::Horizontal).toString();
  }
  EXPECT_EQ(headers.join('|').toStdString(),
            "|Date|Subject|From/To|Direction|Hot|ID|EmailImportance|Application|ReceivedTime");
  int64_t id = AddListed({.subject = "folded\r\n subject",
                          .name = "Анна",
                          .direction = "Out",
                          .importance = "high",
                          .hot = true});
  AddListed({.subject = "plain", .received = DateTime::FromDate(2003, 1, 1)});
  ASSERT_TRUE(ListEvery());
  Bind();
  ASSERT_EQ(model_.rowCount(), 2);
  const std::pair<int, const char*> kCells[] = {{0, "!"},
                                                {1, "3/7/2004 14:07"},
                                                {2, "folded subject"},  // one line
                                                {3, "Анна"},
                                                {4, "Out"},
                                                {5, "+"},
                                                {8, "Outlook Express"}};
  for (const auto& [column, text] : kCells) EXPECT_EQ(Cell(0, column), text) << column;
  EXPECT_EQ(Cell(0, 0, Qt::AccessibleTextRole), "High importance");
  EXPECT_EQ(model_.SubjectAt(0), "folded\r\n subject") << "as it is stored";
  EXPECT_EQ(Cell(0, 6).toLongLong(), id);
  EXPECT_FALSE(Cell(0, 9).isEmpty());
  EXPECT_EQ(model_.IdAt(0), id);
  EXPECT_TRUE(model_.index(0, 2).data(Qt::FontRole).value<QFont>().bold());
  EXPECT_EQ(Cell(1, 0), "");
  EXPECT_FALSE(model_.index(1, 2).data(Qt::FontRole).isValid());
}

TEST_F(ListModelTest, TellsWhatWasNotReadAndWhatWasDone) {
  const struct {
    std::string state;
    QString told;
    int signs;
  } cases[] = {{"", "s", 0},
               {"S", "s", 0},
               {"U", "s, not read", 0},
               {"SRPF", "s, replied to, forwarded, flagged", 3},
               {"UPD", "s, not read, forwarded, draft", 1}};
  std::vector<int64_t> ids;
  for (const auto& test : cases) {
    ids.push_back(AddListed({.subject = "s"}));
    Run("UPDATE Email SET State='" + test.state + "' WHERE ID=" + std::to_string(ids.back()));
  }
  ASSERT_TRUE(ListEvery());
  Bind();
  for (size_t i = 0; i < ids.size(); ++i) {
    QModelIndex subject = model_.index(model_.RowOf(ids[i]), 2);
    EXPECT_EQ(subject.data(Qt::AccessibleTextRole).toString(), cases[i].told);
    EXPECT_EQ(subject.data(Qt::ToolTipRole).toString(), cases[i].told);
    EXPECT_EQ(subject.data().toString(), "s");
    EXPECT_EQ(subject.data(Qt::FontRole).isValid(), cases[i].told.contains("not read"));
    auto signs = subject.data(Qt::DecorationRole).value<QPixmap>();
    EXPECT_EQ(signs.deviceIndependentSize().width(), 12 * cases[i].signs) << i;
  }
}

TEST_F(ListModelTest, ConversationsOpenAndClose) {
  std::vector<int64_t> ids;
  for (int i = 0; i < 6; ++i) {
    ids.push_back(AddListed(
        {.subject = std::to_string(i), .received = DateTime::FromDate(2004, 1, 1).AddSeconds(-i)}));
  }
  ASSERT_TRUE(ListEvery());
  // 0 | 1 2 3 | 4 5
  const std::vector<ListedConversation> kListed = {{0, 0}, {1, 2}, {4, 0}};
  auto bind = [&] { model_.Bind(Board().ListRecordset, false, kListed); };
  auto isBold = [&](int row) {
    QVariant font = model_.data(model_.index(row, GridColumn(kSubject)), Qt::FontRole);
    return font.isValid() && font.value<QFont>().bold();
  };
  auto shown = [&] {
    std::string text;
    for (int row = 0; row < model_.rowCount(); ++row) text += model_.SubjectAt(row);
    return text;
  };
  bind();
  EXPECT_EQ(shown(), "014");
  EXPECT_EQ(Cell(1, 2, Qt::AccessibleTextRole),
            "1, conversation of 3 messages, closed, 2 not read");
  EXPECT_TRUE(isBold(1)) << "for letters that nobody sees";
  EXPECT_FALSE(isBold(2));
  EXPECT_EQ(model_.RowOf(ids[3]), 1) << "within what is closed";
  model_.SetOpen(2, true);
  model_.SetOpen(1, true);
  model_.SetOpen(0, true);
  model_.SetOpen(3, true);
  EXPECT_EQ(shown(), "012345");
  EXPECT_EQ(Cell(1, 2, Qt::AccessibleTextRole), "1, conversation of 3 messages, open, 2 not read");
  EXPECT_FALSE(isBold(1)) << "read itself";
  EXPECT_EQ(Cell(3, 2, Qt::AccessibleTextRole), "3, of the conversation above");
  EXPECT_EQ(Cell(0, 2, Qt::AccessibleTextRole), "0");
  EXPECT_EQ(model_.FirstOf(3), 1);
  EXPECT_EQ(model_.IdAt(5), ids[5]);
  model_.SetOpen(1, false);
  EXPECT_EQ(shown(), "0145");
  EXPECT_EQ(model_.RowOf(ids[5]), 3);
  EXPECT_EQ(model_.IdOnlyAt(3), ids[5]);
  bind();
  EXPECT_EQ(shown(), "0145") << "what is open stays so";
  model_.Bind(Board().ListRecordset, false, {{0, 0}, {9, 0}});
  EXPECT_EQ(model_.rowCount(), 6) << "of another list";
}

TEST_F(ListModelTest, ThePlaceholderRowIsNoMessage) {
  ASSERT_TRUE(ListEvery());
  Bind();
  EXPECT_EQ(model_.rowCount(), 1);
  EXPECT_TRUE(model_.IsPlaceholder());
  EXPECT_TRUE(Cell(0, 1).startsWith("6/15/2020"));
  EXPECT_EQ(Cell(0, 9), "");
  EXPECT_EQ(model_.IdAt(0), 0);
}

TEST_F(ListModelTest, RowsThatHaveGoneAndAClosedListReadAsEmptyWithoutABox) {
  tester_.reset();  // it looks at rows by itself
  int64_t id = AddListed({.subject = "gone"});
  ASSERT_TRUE(ListEvery());
  Bind();
  Run("DELETE * FROM Email WHERE ID=" + std::to_string(id));
  EXPECT_EQ(Cell(0, 2), "");
  EXPECT_EQ(model_.IdAt(0), 0);
  AddListed({.subject = "one"});
  ASSERT_TRUE(ListEvery());
  Bind();
  Board().ListRecordset.Close();
  ui_.allowBoxes = false;
  EXPECT_EQ(Cell(0, 2), "");
  Bind();
  EXPECT_EQ(model_.rowCount(), 0);
}

TEST_F(ListModelTest, RowsReadFarApartAreTheRightOnes) {
  constexpr int kRows = 3000;
  jet::CommitGroup group(repository::RepositoryDb());
  for (int i = 0; i < kRows; ++i) {
    AddListed(
        {.subject = std::to_string(i), .received = DateTime::FromDate(2004, 1, 1).AddSeconds(i)});
  }
  group.End();
  ASSERT_TRUE(ListEvery());
  Bind();
  ASSERT_EQ(model_.rowCount(), kRows);
  // Up and down, past the size of the cache.
  for (int row = 0; row < kRows; row += 7) {
    ASSERT_EQ(Cell(row, 2).toInt(), kRows - 1 - row);
    ASSERT_EQ(Cell(kRows - 1 - row, 2).toInt(), row);
  }
}

}  // namespace
}  // namespace tarnwick::board
