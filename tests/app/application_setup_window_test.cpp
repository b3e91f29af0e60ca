// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What holds for every window of the program, tried on all of them.
#include "application_setup.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QTextEdit>
#include <QTimer>
#include <QToolTip>

#include "board/board_rows.h"
#include "board/help_topics.h"
#include "board/main_board_window.h"
#include "contacts/contact_dialog.h"
#include "contacts/contacts_window.h"
#include "intake/ask_about_email_dialog.h"
#include "options/about_dialog.h"
#include "options/options_window.h"
#include "qt_user_interface.h"
#include "reading/email_text_window.h"
#include "support/program_fixture.h"
#include "takeout/save_messages_dialog.h"

namespace tarnwick::app {
namespace {

// A text that is markup to whatever guesses.
constexpr const char* kMarkup = "<img src=\"/dev/marked\"><b>x</b>";

bool IsMarked(const QString& text) {
  return text.contains("<b>x");
}

class Everywhere : public testing::ProgramFixture {
 protected:
  Everywhere() {
    SetUpApplication(*qApp);
    testing::AddListed({.subject = kMarkup, .name = kMarkup, .body = kMarkup, .files = {kMarkup}});
    contact_ = testing::ContactId(kMarkup);
    std::string id = std::to_string(contact_);
    repository::RepositoryDb().Execute(std::string("UPDATE MeContact SET Remark = '") + kMarkup +
                                       "' WHERE ID = " + id);
    repository::RepositoryDb().Execute("INSERT INTO ContactEmail (ContactID, Address) VALUES (" +
                                       id + ", '" + kMarkup + "')");
  }
  ~Everywhere() override {
    board::ResetBoard();
    QToolTip::hideText();
  }

  void CheckTip(const QString& tip, const std::string& of) {
    if (!IsMarked(tip)) return;
    ++marked_;
    QToolTip::showText({10, 10}, tip);
    const QLabel* shown = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* label = qobject_cast<QLabel*>(widget);
      if (label != nullptr && label->text() == tip && label->isVisible()) shown = label;
    }
    ASSERT_NE(shown, nullptr) << of;
    EXPECT_EQ(shown->textFormat(), Qt::PlainText) << of;
    QToolTip::hideText();
  }

  void CheckItems(const QAbstractItemView& view) {
    const QAbstractItemModel* model = view.model();
    for (int row = 0; model != nullptr && row < model->rowCount(); ++row) {
      for (int column = 0; column < model->columnCount(); ++column) {
        QModelIndex index = model->index(row, column);
        if (IsMarked(index.data().toString())) ++marked_;
        CheckTip(index.data(Qt::ToolTipRole).toString(), view.objectName().toStdString());
      }
    }
  }

  void CheckEveryWidget() {
    // A tip that is shown ends the one before.
    QList<QPointer<QWidget>> widgets;
    for (QWidget* widget : QApplication::allWidgets()) widgets << widget;
    for (const QPointer<QWidget>& widget : widgets) {
      if (widget == nullptr) continue;
      std::string name =
          std::string(widget->metaObject()->className()) + widget->objectName().toStdString();
      CheckTip(widget->toolTip(), name);
      for (QAction* action : widget->actions()) CheckTip(action->toolTip(), name);
      if (auto* label = qobject_cast<QLabel*>(widget.data())) {
        if (IsMarked(label->text())) ++marked_;
        bool isOwn = label->textFormat() == Qt::RichText && !IsMarked(label->text());
        EXPECT_TRUE(isOwn || label->textFormat() == Qt::PlainText) << name;
      } else if (auto* view = qobject_cast<QAbstractItemView*>(widget.data())) {
        CheckItems(*view);
      } else if (auto* text = qobject_cast<QTextEdit*>(widget.data())) {
        EXPECT_FALSE(IsMarked(text->toPlainText())) << name;
      }
    }
  }

  int64_t contact_ = 0;
  int marked_ = 0;  // texts from mail that were come across
};

TEST_F(Everywhere, TextsOfMailAreNeverMarkup) {
  board::MainBoard main;
  ASSERT_TRUE(main.Load());
  reading::frmEmailText text;
  contacts::frmContacts contacts;
  contacts::frmContact contact(contact_);
  options::frmOptions options([](const std::string&) {
    return options::ProfileSummary{{kMarkup}, 1, {kMarkup}, {}};
  });
  options::AboutDialog about;
  takeout::SaveMessagesDialog save(1, 1);
  intake::AskAboutEmail ask({.subject = kMarkup, .from = kMarkup, .date = {}, .body = kMarkup});
  for (QWidget* window :
       {static_cast<QWidget*>(&main), static_cast<QWidget*>(&contacts),
        static_cast<QWidget*>(&contact), static_cast<QWidget*>(&options),
        static_cast<QWidget*>(&about), static_cast<QWidget*>(&save), static_cast<QWidget*>(&ask)}) {
    window->show();
  }
  text.ShowText({kMarkup, kMarkup});
  main.Status().SetPanel(core::StatusPanel::kProgress, kMarkup);
  main.Status().SetPanel(core::StatusPanel::kFolder, kMarkup);
  QApplication::processEvents();
  CheckEveryWidget();
  EXPECT_GE(marked_, 9);

  // A box that the toolkit makes by itself.
  QTimer::singleShot(0, qApp, [this] {
    int before = marked_;
    CheckEveryWidget();
    EXPECT_GT(marked_, before);
    QApplication::activeModalWidget()->close();
  });
  QMessageBox::warning(nullptr, "Tarnwick", kMarkup);
}

TEST_F(Everywhere, NoWindowsCaptionIsAddedTo) {
  EXPECT_EQ(QGuiApplication::applicationDisplayName(), QCoreApplication::applicationName());
}

TEST(Handbook, LiesBesideTheProgramOfTheBuild) {
  EXPECT_FALSE(board::FindHelp(std::string(TARNWICK_BIN) + "/").empty());
}

}  // namespace
}  // namespace tarnwick::app
