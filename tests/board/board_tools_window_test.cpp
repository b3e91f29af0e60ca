// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The main window's commands that look at a message or open another window.

#include <QCheckBox>
#include <QComboBox>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTest>
#include <QWindow>

#include "board_window.h"
#include "contacts/contacts_window.h"
#include "options/about_dialog.h"
#include "options/options_window.h"
#include "platform/shell.h"
#include "reading/email_text_window.h"
#include "reading/letter_view.h"
#include "reading/letter_window.h"
#include "support/window_checks.h"
#include "takeout/save_messages_dialog.h"

namespace tarnwick::board {
namespace {

class BoardTools : public BoardWindow {
 protected:
  BoardTools() {
    platform::SetShellHook([this](const std::string& path) {
      opened_.push_back(path.substr(path.rfind('/') + 1));
      return platform::ShellResult::kOpened;
    });
  }
  ~BoardTools() override { platform::SetShellHook({}); }

  // A message with a stored file, later than the ones before.
  int64_t AddWithFile(const std::string& subject, const std::string& body) {
    int64_t id = AddListed(
        {.subject = subject, .received = DateTime::FromDate(2004, 1, ++day_), .body = body});
    testing::AddRow(repository::Repository().FileRecordset, {{"FileID", id}, {"FileBody", body}},
                    "ID");
    return id;
  }
  reading::frmEmailText* TextWindow() { return window_->findChild<reading::frmEmailText*>(); }
  QString ShownText() {
    return TextWindow()->findChild<QPlainTextEdit*>("EmailText")->toPlainText();
  }
  QCheckBox* Box() { return Find<QCheckBox>("cbShowEmailText"); }

  // Triggers a command that opens a modal window, works in it and closes it.
  template <typename Dialog>
  void InDialog(QAction* command, const std::function<void(Dialog&)>& steps = {}) {
    bool seen = false;
    QTimer::singleShot(0, qApp, [&] {
      auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      seen = true;
      if (steps) steps(*dialog);
      dialog->close();
    });
    command->trigger();
    EXPECT_TRUE(seen);
  }

  int day_ = 0;
  std::vector<std::string> opened_;
};

TEST_F(BoardTools, MenusHoldTheCommandsWithMnemonicsOfTheirOwn) {
  Start();
  const std::pair<const char*, const char*> kMenus[] = {
      {"mnuFile",
       "mnOpenRepository mnRecentRepositories mnCreateRepository mnuFileSaveAs mnuFileOpen "
       "mnuBackupSelected mnuMerge mnCheck mnProtect mnLock mnLoadTextFile mnFindMail "
       "mnSaveMessages mnuFileExit"},
      {"mnuTools", "mnuContacts mnuOptions mnFindLost mnLastLoad mnMarkAllNotHot mnMoveHtmlToBody"},
      {"mnuHelp", "mnReadMe mnuHelpAbout"}};
  for (const auto& [menu, commands] : kMenus) {
    QStringList names;
    QStringList keys;
    for (QAction* action : Find<QMenu>(menu)->actions()) {
      if (action->isSeparator()) continue;
      names << action->objectName();
      keys << QKeySequence::mnemonic(action->text()).toString();
    }
    EXPECT_EQ(names.join(' ').toStdString(), commands);
    EXPECT_EQ(keys.removeDuplicates(), 0) << menu;
  }
}

TEST_F(BoardTools, ButtonEnterAndDoubleClickShowTheSelectedEmail) {
  AddWithFile("a", "From: a");
  Start();
  EmailGridView& grid = window_->Grid();
  Select(0);
  QTest::mouseClick(Find<QPushButton>("ShowEmail"), Qt::LeftButton);
  EXPECT_EQ(opened_.size(), 1U);
  grid.setFocus();
  QTest::keyClick(&grid, Qt::Key_Return);
  EXPECT_EQ(opened_.size(), 2U);
  QPoint place = grid.visualRect(grid.model()->index(0, 2)).center();
  QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, place);
  QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, place);
  EXPECT_EQ(opened_.size(), 3U);
  EXPECT_THAT(opened_, Each("Temp43200.eml"));
}

TEST_F(BoardTools, TheTextWindowFollowsTheSelectionWhileTheBoxIsOn) {
  AddWithFile("first", "text of the first");
  AddWithFile("second", "text of the second");
  Start();
  Select(0);
  EXPECT_EQ(TextWindow(), nullptr);
  Box()->click();
  ASSERT_NE(TextWindow(), nullptr);
  EXPECT_EQ(TextWindow()->windowTitle(), "second");
  EXPECT_EQ(ShownText(), "text of the second");
  Select(1);
  EXPECT_EQ(TextWindow()->windowTitle(), "first");
  testing::CheckControls(*TextWindow());

  TextWindow()->resize(456, 345);
  QTest::keyClick(TextWindow(), Qt::Key_Escape);
  EXPECT_FALSE(Box()->isChecked()) << "closed by the person";
  Select(0);
  EXPECT_FALSE(TextWindow()->isVisible());
  Box()->click();
  EXPECT_TRUE(TextWindow()->isVisible());

  EXPECT_TRUE(window_->close());
  EXPECT_FALSE(TextWindow()->isVisible());
  EXPECT_TRUE(repository::GetOption("ShowEmailText")) << "the program's end is no such close";
  Start();
  EXPECT_TRUE(Box()->isChecked());
  Select(0);
  EXPECT_EQ(TextWindow()->size(), QSize(456, 345));
}

TEST_F(BoardTools, ALineWithoutEndIsBrokenAndAHugeTextCut) {
  reading::frmEmailText window;
  window.ShowText({"huge", std::string(3000000, 'x')});
  auto* text = window.findChild<QPlainTextEdit*>("EmailText");
  EXPECT_GT(text->document()->blockCount(), 100);
  EXPECT_LT(text->document()->characterCount(), 2100000);
  EXPECT_TRUE(text->toPlainText().endsWith("Show Email shows the whole message."));
  for (const char* subject : {"Two  blanks [*] and [*][*] marks", "<b>bold</b>"}) {
    window.ShowText({subject, "text"});
    EXPECT_EQ(window.windowHandle()->title().toStdString(), subject);
  }
  window.ShowText({"folded\r\n\tline", "short\r\n"});
  EXPECT_EQ(window.windowHandle()->title(), "folded line");
  EXPECT_EQ(text->toPlainText(), "short\n");
}

TEST_F(BoardTools, SelectedMessagesAreSavedAndAttachmentsOffered) {
  AddWithFile("roof", "Subject: roof\r\n\r\nText");
  AddWithFile("plan", "Content-Type: application/pdf; name=\"a & b.pdf\"\r\n\r\n%PDF");
  Start();
  Select(0);
  QString out = QString::fromStdString(folder_.File("out"));
  InDialog<takeout::SaveMessagesDialog>(window_->Actions().saveMessages,
                                        [&](takeout::SaveMessagesDialog& dialog) {
                                          dialog.findChild<QLineEdit*>("Folder")->setText(out);
                                          dialog.findChild<QPushButton*>("Save")->click();
                                        });
  EXPECT_THAT(platform::ListFiles(folder_.File("out")), ElementsAre("2004-01-02 0000 plan.eml"));
  EXPECT_EQ(ui_.status[core::StatusPanel::kProgress],
            "selected 1, saved 1, no stored file 0, failed 0, not reached 0");
  EXPECT_EQ(ui_.Shown("box").back(), "1 message is saved in " + folder_.File("out"));
  window_->Grid().selectAll();
  EXPECT_EQ(window_->Grid().SelectedCount(), 2);
  window_->Takeout().Save({{}, takeout::SaveFormat::kMbox, false, folder_.File("out")}, true);
  EXPECT_EQ(platform::ReadFile(folder_.File("out/Tarnwick.mbox")).substr(0, 19),
            "From MAILER-DAEMON ");
  EXPECT_TRUE(window_->Actions().attachments->isEnabled());

  QMenu* menu = window_->Actions().attachments->menu();
  Select(0);
  emit menu->aboutToShow();
  ASSERT_EQ(menu->actions().size(), 3);
  EXPECT_EQ(menu->actions()[0]->text(), "a && b.pdf (4 bytes)");
  Select(1);
  emit menu->aboutToShow();
  ASSERT_EQ(menu->actions().size(), 1);
  EXPECT_FALSE(menu->actions()[0]->isEnabled());
  Box()->click();
  Select(0);
  EXPECT_EQ(TextWindow()->findChild<QListWidget*>("Attachments")->count(), 1);
}

TEST_F(BoardTools, MovedHtmlIsShownAtOnce) {
  int64_t id = AddListed({.subject = "html"});
  jet::Recordset row;
  row.Open("SELECT * FROM Email WHERE ID=" + std::to_string(id), repository::RepositoryDb(),
           jet::CursorType::kKeyset, jet::LockType::kOptimistic);
  row.SetField("HTMLBody", "<body><b>bold</b></body>");
  row.Update();
  Start();
  Select(0);
  Box()->click();
  EXPECT_EQ(ShownText(), "<body><b>bold</b></body>") << "never rendered";
  ui_.yesNo = {true};
  window_->Actions().moveHtml->trigger();
  QApplication::processEvents();
  EXPECT_EQ(ShownText(), "bold");
  EXPECT_EQ(window_->Grid().Current().id, id);
}

TEST_F(BoardTools, AContactDeletedLeavesTheListAndTheComboBox) {
  AddListed({.subject = "hers", .name = "Ann"});
  AddListed({.subject = "his", .name = "Bob"});
  Start();
  auto* names = Enter("cmbFromTo");
  EXPECT_EQ(names->count(), 2);
  ui_.yesNo = {true};
  InDialog<contacts::frmContacts>(window_->Actions().contacts, [](contacts::frmContacts& dialog) {
    dialog.Grid().SelectRow(0);
    dialog.findChild<QPushButton*>("ctDelete")->click();
  });
  EXPECT_THAT(ListedSubjects(), ElementsAre("his"));
  EXPECT_EQ(names->count(), 1);
}

TEST_F(BoardTools, OptionsAboutAndHelpOpen) {
  Start();
  InDialog<options::frmOptions>(window_->Actions().options, [](options::frmOptions& dialog) {
    dialog.findChild<QCheckBox*>("OutlookExpress")->click();
  });
  EXPECT_TRUE(core::State().UseOutlookExpress);
  AddListed({.subject = "deleted"});
  AddListed({.subject = "left"});
  window_->Actions().showAll->trigger();
  InDialog<options::frmOptions>(window_->Actions().options, [](options::frmOptions& dialog) {
    dialog.findChild<QCheckBox*>("LoadAllFolders")->click();
  });
  Select(0);
  ui_.yesNo = {true};
  window_->Actions().deleteSelected->trigger();
  EXPECT_EQ(CountRows("Email"), 1);
  window_->Maintenance().Work(MaintenanceActions::Command::kBackup,
                              QString::fromStdString(folder_.File("saved.twb")));
  EXPECT_TRUE(core::State().RepositoryIsEmpty) << "the full load is still asked for";
  ui_.shown.clear();
  InDialog<options::AboutDialog>(window_->Actions().about);
  // The help of the build lies beside its programs; what is opened depends on what was built.
  window_->Actions().helpTopics->trigger();
  EXPECT_EQ(opened_.size() + ui_.Shown("box").size(), 1U);
}

TEST_F(BoardTools, ThePaneShowsTheSelectedLetterAndStaysWhereItWasPut) {
  AddWithFile("first", "text of the first");
  AddWithFile("second", "text of the second");
  Start();
  reading::LetterView& letter = window_->Letter();
  ASSERT_TRUE(letter.isVisible()) << "a new home has it";
  auto shown = [&] {
    QApplication::processEvents();
    return letter.Text().toPlainText().toStdString();
  };
  EXPECT_EQ(shown(), "");
  Select(0);
  EXPECT_EQ(shown(), "text of the second");
  Filter("Subject", "first");
  EXPECT_EQ(shown(), "") << "the letter is not listed any more";
  Select(0);
  EXPECT_EQ(shown(), "text of the first");
  EXPECT_EQ(letter.Head().extraSelections().size(), 1);
  ui_.yesNo = {true};
  Click("DeleteCurent");
  EXPECT_EQ(shown(), "");
  for (QAction* BoardActions::*place : {&BoardActions::paneBeside, &BoardActions::paneOff}) {
    (window_->Actions().*place)->trigger();
    EXPECT_TRUE(window_->close());
    Start();
    EXPECT_TRUE((window_->Actions().*place)->isChecked());
  }
  EXPECT_FALSE(window_->Letter().isVisible());
}

TEST_F(BoardTools, WithoutAMailProgramTheLetterOpensInAWindowOfItsOwn) {
  platform::SetShellHook([](const std::string&) { return platform::ShellResult::kNoHandler; });
  AddWithFile("a", "text of it");
  Start();
  Select(0);
  Click("ShowEmail");
  auto* own = window_->findChild<reading::LetterWindow*>();
  ASSERT_NE(own, nullptr);
  EXPECT_TRUE(own->isVisible());
  EXPECT_EQ(own->findChild<reading::LetterView*>()->Text().toPlainText(), "text of it");
  EXPECT_TRUE(ui_.Shown("box").empty());
  testing::CheckControls(*own);
}

TEST_F(BoardTools, TheListStaysWhileABackupRuns) {
  AddWithFile("a", "text of it");
  Start();
  int rows = 0;
  ui_.onYield = [&] { rows = window_->Grid().Model().rowCount(); };
  window_->Maintenance().Work(MaintenanceActions::Command::kBackup,
                              QString::fromStdString(folder_.File("all.twb")));
  EXPECT_EQ(rows, 1);
}

}  // namespace
}  // namespace tarnwick::board
