// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/ask_about_email_dialog.h"
#include "support/testing.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

namespace tarnwick::intake {
namespace {

using core::SenderAnswer;

const core::AskedEmail kEmail = {"Budget\r\n folded", "Ann Lee  <ann@example.org>",
                                 "1/5/2004 10:20:30", "Dear Bob,\n<b>no markup</b>"};

TEST(AskAboutEmail, ShowsTheMessage) {
  AskAboutEmail dialog(kEmail);
  EXPECT_EQ(dialog.windowTitle(), "Current Email");
  EXPECT_EQ(dialog.findChild<QLineEdit*>("Subject")->text(), "Budget   folded");
  EXPECT_EQ(dialog.findChild<QLineEdit*>("From")->text(), "Ann Lee  <ann@example.org>");
  EXPECT_EQ(dialog.findChild<QLineEdit*>("Date")->text(), "1/5/2004 10:20:30");
  EXPECT_EQ(dialog.findChild<QPlainTextEdit*>("Body")->toPlainText(),
            "Dear Bob,\n<b>no markup</b>");
}

TEST(AskAboutEmail, EachButtonGivesItsAnswer) {
  const struct {
    const char *button, *caption;
    SenderAnswer answer;
  } kRows[] = {
      {"AcceptFuture", "Accept", SenderAnswer::kAccept},
      {"AcceptAll", "Accept All", SenderAnswer::kAcceptAll},
      {"Ignore", "Ignore", SenderAnswer::kIgnore},
      {"Reject", "Reject this Sender", SenderAnswer::kReject},
      {"btCancel", "Cancel", SenderAnswer::kCancel},
  };
  for (const auto& row : kRows) {
    AskAboutEmail dialog(kEmail);
    auto* button = dialog.findChild<QPushButton*>(row.button);
    ASSERT_NE(button, nullptr) << row.button;
    EXPECT_EQ(button->text().remove('&').toStdString(), row.caption);
    dialog.show();
    button->click();
    EXPECT_FALSE(dialog.isVisible()) << row.button;
    EXPECT_EQ(dialog.Answer(), row.answer) << row.button;
  }
}

TEST(AskAboutEmail, ClosingWithoutAButtonIsCancel) {
  AskAboutEmail dialog(kEmail);
  dialog.show();
  dialog.reject();
  EXPECT_EQ(dialog.Answer(), SenderAnswer::kCancel);
}

}  // namespace
}  // namespace tarnwick::intake
