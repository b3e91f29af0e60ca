// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The dialog that saves messages and the strip and menu of attachments, without the main window.

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QUrl>

#include "support/program_fixture.h"
#include "support/window_checks.h"
#include "takeout/attachments_view.h"
#include "takeout/save_messages_dialog.h"

namespace tarnwick::takeout {
namespace {

class TakeoutWindow : public testing::ProgramFixture {
 protected:
  static std::shared_ptr<const MessageAttachments> TwoFiles() {
    return std::make_shared<MessageAttachments>(
        "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n"
        "Content-Type: application/pdf; name=\"a & b.pdf\"\r\n\r\n%PDF\r\n--b\r\n"
        "Content-Type: application/octet-stream; name=game.exe\r\n\r\nMZ\r\n--b--\r\n");
  }
};

TEST_F(TakeoutWindow, TheDialogAsksWhatItNeedsAndRemembersIt) {
  {
    SaveMessagesDialog dialog(3, 1200);
    testing::CheckControls(dialog);
    EXPECT_EQ(dialog.findChild<QRadioButton*>("SelectedMessages")->text(),
              "The 3 s&elected messages");
    EXPECT_TRUE(dialog.findChild<QRadioButton*>("ListedMessages")->text().contains("200"));
    EXPECT_TRUE(dialog.WantsSelected());
    auto* save = dialog.findChild<QPushButton*>("Save");
    dialog.findChild<QLineEdit*>("Folder")->setText("  ");
    EXPECT_FALSE(save->isEnabled());
    dialog.findChild<QLineEdit*>("Folder")->setText("~/mail out");
    EXPECT_TRUE(save->isEnabled());
    dialog.findChild<QRadioButton*>("FormatMaildir")->click();
    dialog.findChild<QCheckBox*>("Folders")->click();
    save->click();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
  }
  SaveMessagesDialog again(0, 1);
  EXPECT_FALSE(again.findChild<QRadioButton*>("SelectedMessages")->isEnabled());
  EXPECT_FALSE(again.WantsSelected());
  SaveOrder order = again.Order();
  EXPECT_EQ(order.format, SaveFormat::kMaildir);
  EXPECT_TRUE(order.folders);
  EXPECT_THAT(order.folder, HasSubstr("/mail out"));
  EXPECT_EQ(order.folder[0], '/');
}

TEST_F(TakeoutWindow, AttachmentsAreShownSavedAndDraggedOut) {
  QWidget parent;
  AttachmentsView view(&parent);
  testing::CheckControls(view);
  view.Show(nullptr);
  EXPECT_TRUE(view.isHidden());
  view.Show(TwoFiles());
  EXPECT_FALSE(view.isHidden());
  auto* list = view.findChild<QListWidget*>("Attachments");
  ASSERT_EQ(list->count(), 2);
  EXPECT_EQ(list->item(0)->text(), "a & b.pdf (4 bytes)");
  EXPECT_EQ(list->item(1)->text(), "game.exe (2 bytes), a program");

  std::unique_ptr<QMimeData> dragged(list->model()->mimeData({list->model()->index(0, 0)}));
  ASSERT_TRUE(dragged);
  ASSERT_EQ(dragged->urls().size(), 1);
  std::string scratch = dragged->urls()[0].toLocalFile().toStdString();
  EXPECT_EQ(scratch, core::State().EmailFileFolder + "a & b.pdf");
  EXPECT_EQ(platform::ReadFile(scratch), "%PDF");
  delete list->model()->mimeData({list->model()->index(0, 0)});
  EXPECT_EQ(platform::ListFiles(core::State().EmailFileFolder).size(), 1U) << "made once";

  std::string folder = folder_.File("saved/");
  ui_.folders = {folder};
  view.findChild<QPushButton*>("SaveAllAttachments")->click();
  EXPECT_THAT(platform::ListFiles(folder), ElementsAre("a & b.pdf", "game.exe"));
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("game.exe is a program")));
  EXPECT_THAT(ui_.status[core::StatusPanel::kProgress], HasSubstr("2 attachments are saved in"));
}

}  // namespace
}  // namespace tarnwick::takeout
