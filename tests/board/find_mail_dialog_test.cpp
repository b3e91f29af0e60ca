// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The window that finds mail, by itself and behind the main window's menu and drops.
#include <QCheckBox>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QTimer>
#include <QTreeWidget>
#include <QUrl>

#include "board/find_mail_dialog.h"
#include "board_window.h"
#include "support/window_checks.h"

namespace tarnwick::board {
namespace {

class FindMail : public BoardWindow {
 protected:
  FindMail() : disk_(folder_.File("disk/")) {
    Write("pop/Inbox", "From - Tue Mar  5 13:07:00 2002\n" + LetterOf("one") +
                           "From - Tue Mar  5 13:07:00 2002\n" + LetterOf("two"));
    Write("pop/broken.pst", "no store");
    platform::SetEnvironmentText("TARNWICK_READER", TARNWICK_READER);
  }
  void Write(const std::string& path, const std::string& text) {
    platform::MakeFolder(platform::FolderOf(disk_ + path));
    platform::WriteFile(disk_ + path, text);
  }
  static std::string LetterOf(const std::string& subject) {
    return "From: Bob <bob@example.org>\nSubject: " + subject +
           "\nDate: Tue, 5 Mar 2002 13:07:00 +0000\n\ntext\n\n";
  }
  // Presses a button of the dialog that comes next, once it has looked.
  static void PressInDialog(const char* button) {
    QTimer::singleShot(10, [button] {
      auto* dialog = qobject_cast<FindMailDialog*>(QApplication::activeModalWidget());
      auto* list = dialog == nullptr ? nullptr : dialog->findChild<QTreeWidget*>("Found");
      if (list == nullptr || list->topLevelItemCount() == 0) {
        PressInDialog(button);
      } else {
        dialog->findChild<QPushButton*>(button)->click();
      }
    });
  }
  void Drop(const std::vector<std::string>& paths) {
    QMimeData data;
    QList<QUrl> urls;
    for (const std::string& path : paths) urls += QUrl::fromLocalFile(QString::fromStdString(path));
    data.setUrls(urls);
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window_.get(), &enter);
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window_.get(), &drop);
    EXPECT_TRUE(drop.isAccepted());
    QApplication::processEvents();
  }

  std::string disk_;
};

TEST_F(FindMail, ListsWhatIsThereAndTicksWhatIsNew) {
  FindMailDialog dialog;
  testing::CheckControls(dialog);
  auto* load = dialog.findChild<QPushButton*>("Load");
  EXPECT_FALSE(load->isEnabled());
  EXPECT_FALSE(dialog.findChild<QPushButton*>("Look")->isEnabled());
  dialog.LookAt({QString::fromStdString(disk_)});
  auto* list = dialog.findChild<QTreeWidget*>("Found");
  ASSERT_EQ(list->topLevelItemCount(), 2);
  EXPECT_EQ(list->topLevelItem(0)->checkState(0), Qt::Unchecked) << "nothing to be had";
  EXPECT_EQ(list->topLevelItem(1)->text(1), "pop");
  EXPECT_EQ(list->topLevelItem(1)->text(2), "2");
  EXPECT_EQ(list->topLevelItem(1)->checkState(0), Qt::Checked);
  ASSERT_EQ(dialog.Ticked().size(), 1U);
  EXPECT_TRUE(load->isEnabled());
  // What can't be opened may still hold lost messages.
  dialog.findChild<QCheckBox*>("LostToo")->setChecked(true);
  EXPECT_EQ(dialog.Ticked().size(), 2U);
  dialog.LookAt({QString::fromStdString(disk_)});
  EXPECT_EQ(dialog.Ticked().size(), 2U);
  dialog.findChild<QCheckBox*>("LostToo")->setChecked(false);
  EXPECT_EQ(dialog.Ticked().size(), 1U);
  list->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
  EXPECT_FALSE(load->isEnabled());

  // It can be stopped, and a place that is not there is told.
  ui_.onYield = [&] { dialog.reject(); };
  dialog.LookAt({QString::fromStdString(disk_)});
  EXPECT_EQ(list->topLevelItemCount(), 0);
  EXPECT_TRUE(dialog.findChild<QLabel*>("Note")->text().contains("stopped"));
  ui_.onYield = {};
  dialog.LookAt({"/nothing/here"});
  EXPECT_EQ(ui_.Shown("error").size(), 1U);
  EXPECT_EQ(dialog.findChild<QLabel*>("Note")->text(), "No mail was found.");
}

TEST_F(FindMail, AFolderDroppedIsLookedAtAndLoadedAndALetterTakenAtOnce) {
  Start();
  ui_.senders = {core::SenderAnswer::kAcceptAll};
  PressInDialog("Load");
  Drop({disk_});
  EXPECT_EQ(CountRows("Email"), 2);
  EXPECT_EQ(window_->Grid().model()->rowCount(), 2);

  Write("letter.eml", LetterOf("three"));
  Drop({disk_ + "letter.eml"});
  EXPECT_EQ(CountRows("Email"), 3);

  PressInDialog("Cancel");
  Drop({disk_ + "pop", disk_ + "letter.eml"});
  EXPECT_EQ(CountRows("Email"), 3);
}

}  // namespace
}  // namespace tarnwick::board
