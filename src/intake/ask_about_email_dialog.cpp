// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/ask_about_email_dialog.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnwick::intake {

namespace {

// Enough to know a letter by; a body of megabytes would keep the person waiting for the question.
constexpr qsizetype kShownBody = 100000;

}  // namespace

AskAboutEmail::AskAboutEmail(const core::AskedEmail& email, QWidget* parent) : QDialog(parent) {
  setObjectName("AskAboutEmail");
  setWindowTitle(tr("Current Email"));

  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  form->addRow(tr("S&ubject"), MakeLine("Subject", email.subject));
  form->addRow(tr("&From"), MakeLine("From", email.from));
  form->addRow(tr("Da&te"), MakeLine("Date", email.date));
  auto* body = new QPlainTextEdit(this);
  body->setObjectName("Body");
  body->setAccessibleName(tr("Body"));
  body->setReadOnly(true);
  body->setTabChangesFocus(true);
  QString text = QString::fromStdString(email.body);
  if (text.size() > kShownBody) text = text.left(kShownBody) + QStringLiteral("\n...");
  body->setPlainText(text);
  auto* bodyLabel = new QLabel(tr("&Body"), this);
  bodyLabel->setBuddy(body);
  bodyLabel->setAlignment(Qt::AlignTop);
  form->addRow(bodyLabel, body);

  auto* why = new QLabel(
      tr("This sender is not among the contacts. \"Accept All\" stores this and every later "
         "message of the load without asking again."),
      this);
  why->setWordWrap(true);
  auto* column = new QVBoxLayout(this);
  column->addWidget(why);
  column->addLayout(form, 1);
  column->addWidget(MakeButtons());
  resize(680, 460);
}

QLineEdit* AskAboutEmail::MakeLine(const char* name, const std::string& text) {
  QString oneLine = QString::fromStdString(text);
  for (QChar& c : oneLine) {
    if (c < ' ') c = ' ';
  }
  auto* line = new QLineEdit(oneLine, this);
  line->setObjectName(name);
  line->setAccessibleName(tr(name));
  line->setReadOnly(true);
  line->setCursorPosition(0);
  return line;
}

QWidget* AskAboutEmail::MakeButtons() {
  using core::SenderAnswer;
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  const struct {
    const char* name;
    QString caption;
    SenderAnswer answer;
    QString tip;
  } buttons[] = {
      {"AcceptFuture", tr("&Accept"), SenderAnswer::kAccept, tr("Stores this message")},
      {"AcceptAll", tr("Accept A&ll"), SenderAnswer::kAcceptAll,
       tr("Stores this and every later message of this load")},
      {"Ignore", tr("&Ignore"), SenderAnswer::kIgnore,
       tr("Leaves this message out, now and in later loads")},
      {"Reject", tr("&Reject this Sender"), SenderAnswer::kReject,
       tr("Leaves out every message of this sender, now and in later loads")},
      {"btCancel", tr("&Cancel"), SenderAnswer::kCancel, tr("Ends the load")},
  };
  for (const auto& entry : buttons) {
    auto* button = new QPushButton(entry.caption, row);
    button->setObjectName(entry.name);
    button->setToolTip(entry.tip);
    if (entry.answer == SenderAnswer::kCancel) layout->addStretch(1);
    layout->addWidget(button);
    connect(button, &QPushButton::clicked, this, [this, answer = entry.answer] {
      answer_ = answer;
      accept();
    });
    if (entry.answer == SenderAnswer::kAccept) {
      button->setDefault(true);
      button->setFocus();
    }
  }
  return row;
}

}  // namespace tarnwick::intake
