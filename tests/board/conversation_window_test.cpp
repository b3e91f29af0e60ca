// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers

#include <QAction>
#include <QLabel>
#include <QTest>

#include "board_window.h"
#include "intake/store_message.h"
#include "search/conversations.h"
#include "support/window_checks.h"

namespace tarnwick::board {
namespace {

using testing::ListedSubjects;

class ConversationWindow : public BoardWindow {
 protected:
  ~ConversationWindow() override { search::AllConversations().Forget(); }

  static void Store(int day, const std::string& subject, const std::string& headers,
                    const std::string& direction = "In") {
    intake::MailMessage message;
    message.MessageKey = message.Subject = subject;
    message.Direction = direction;
    message.FromName = "Ann";
    message.Body = "budget";
    message.SentTime = message.ReceivedTime = DateTime::FromDate(2004, 3, day);
    platform::WriteFile(core::State().TempMessageFile, headers + "\r\n\r\nbudget\r\n");
    intake::dbSaveMesage(core::State().TempMessageFile, message, "x", 1);
  }
  // The rows of the grid.
  Texts Shown() {
    Texts shown;
    const ListModel& model = window_->Grid().Model();
    for (int row = 0; row < model.rowCount(); ++row) shown.push_back(model.SubjectAt(row));
    return shown;
  }
  void WaitFor(const Texts& rows) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return Shown() == rows; }));
    EXPECT_EQ(Shown(), rows);
  }
  void Press(Qt::Key key) { QTest::keyClick(&window_->Grid(), key); }
};

TEST_F(ConversationWindow, LettersStandTogetherAndOpenByKey) {
  Store(1, "plan", "Message-ID: <1@x>");
  Store(2, "other", "Message-ID: <2@x>");
  Store(3, "answer", "References: <1@x>", "Out");
  Store(4, "late", "Message-ID: <4@x>");
  Store(5, "former", "References: <2@x>");
  repository::RepositoryDb().Execute("UPDATE Email SET Thread = Null WHERE Subject = 'former'");
  repository::RepositoryDb().Execute("UPDATE Email SET State = 'U' WHERE Subject = 'plan'");
  Start();
  window_->activateWindow();
  EXPECT_EQ(Shown(), (Texts{"former", "late", "answer", "other", "plan"}));
  Select(2);
  QTest::keyClick(window_.get(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_TRUE(Find<QAction>("mnViewConversations")->isChecked());
  WaitFor({"former", "late", "answer", "other"});
  EXPECT_THAT(ListedSubjects(), ElementsAre("former", "late", "answer", "plan", "other"));
  EXPECT_EQ(ui_.status[core::StatusPanel::kCounts], "5; 4 In; 1 Out") << "all of them";
  EXPECT_EQ(window_->Grid().Current().subject, "answer");
  EXPECT_THAT(Board().Conversations.listed[2].unread, 1) << "plan";
  Press(Qt::Key_Right);
  EXPECT_EQ(Shown(), (Texts{"former", "late", "answer", "plan", "other"}));
  Press(Qt::Key_Down);
  EXPECT_EQ(window_->Grid().Current().subject, "plan");
  Press(Qt::Key_Left);
  EXPECT_EQ(Shown().size(), 4U);
  EXPECT_EQ(window_->Grid().Current().subject, "answer");
  // By the triangle, and once more.
  for (size_t rows : {5, 4}) {
    QRect cell = window_->Grid().visualRect(window_->Grid().Model().index(2, GridColumn(kSubject)));
    QTest::mouseClick(window_->Grid().viewport(), Qt::LeftButton, {},
                      QPoint(cell.left() + 8, cell.center().y()));
    EXPECT_EQ(Shown().size(), rows);
  }

  // What a former version stored joins once its headers were looked at.
  auto* notice = Find<QLabel>("Notice");
  ASSERT_TRUE(notice->isVisible());
  emit notice->linkActivated("conversations");
  WaitFor({"former", "late", "answer"});
  EXPECT_THAT(ListedSubjects(), ElementsAre("former", "other", "late", "answer", "plan"));
  EXPECT_FALSE(notice->isVisible());

  // A search narrows the same list.
  Find<QLineEdit>("SearchBox")->setText("budget -former");
  QTest::keyClick(Find<QLineEdit>("SearchBox"), Qt::Key_Return);
  WaitFor({"late", "answer", "other"});
  EXPECT_EQ(ui_.status[core::StatusPanel::kCounts], "4; 3 In; 1 Out");
  testing::CheckControls(*window_);
}

TEST_F(ConversationWindow, ItIsRememberedAndFollowsWhatIsDeletedAndLoaded) {
  Store(1, "plan", "Message-ID: <1@x>");
  Store(2, "answer", "References: <1@x>");
  Store(3, "other", "");
  SaveConversationsShown(true);
  Start();
  WaitFor({"other", "answer"});
  Select(0);
  ui_.yesNo = {true};
  Press(Qt::Key_Delete);
  EXPECT_EQ(Shown(), Texts{"answer"});
  Store(4, "again", "In-Reply-To: <1@x>");
  ShowRefresh(window_->List());
  WaitFor({"again"});
  EXPECT_EQ(CountListed(), 3);
  Find<QAction>("mnViewConversations")->trigger();
  EXPECT_EQ(Shown(), (Texts{"again", "answer", "plan"}));
  EXPECT_FALSE(ReadConversationsShown());
}

}  // namespace
}  // namespace tarnwick::board
