// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/password_dialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "options/password_strength.h"

namespace tarnwick::options {

namespace {

platform::Secret TextOf(const QLineEdit* field) {
  QByteArray bytes = field->text().toUtf8();
  platform::Secret secret(std::string_view(bytes.constData(), static_cast<size_t>(bytes.size())));
  bytes.fill('\0');
  return secret;
}

QLineEdit* MakeField(const char* name, QString caption, QWidget* parent) {
  auto* field = new QLineEdit(parent);
  field->setObjectName(name);
  field->setAccessibleName(caption.remove('&').remove(':'));
  field->setEchoMode(QLineEdit::Password);
  field->setMinimumWidth(field->fontMetrics().averageCharWidth() * 56);
  return field;
}

QLabel* MakeText(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

}  // namespace

PasswordDialog::PasswordDialog(const QString& file, bool isTriedAgain,
                               std::function<std::string()> whyNotRemembered, QWidget* parent)
    : QDialog(parent), password_(MakeField("Password", tr("Password"), this)) {
  setObjectName("PasswordDialog");
  setWindowTitle(tr("Password"));
  QString text = tr("This file is protected with a password of its own:\n%1").arg(file);
  if (isTriedAgain) text = tr("This was not the password.") + '\n' + text;
  auto* label = new QLabel(tr("&Password:"), this);
  label->setBuddy(password_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setObjectName("cmdOK");
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addWidget(MakeText(text, this));
  column->addWidget(label);
  column->addWidget(password_);
  if (whyNotRemembered) AddBox(std::move(whyNotRemembered));
  column->addWidget(buttons);
  password_->setFocus();
}

void PasswordDialog::AddBox(std::function<std::string()> whyNot) {
  remember_ = new QCheckBox(tr("&Remember in this desktop's keyring"), this);
  remember_->setObjectName("Remember");
  remember_->setToolTip(
      tr("Whoever can use this desktop can then read the mail without the password"));
  QLabel* reason = MakeText({}, this);
  reason->setObjectName("WhyNotRemembered");
  reason->hide();
  connect(remember_, &QCheckBox::clicked, this,
          [this, reason, whyNot = std::move(whyNot)](bool on) {
            // Enter ends the dialog: some desktops have it press a box that has the focus.
            password_->setFocus();
            std::string why = on ? whyNot() : std::string();
            if (why.empty()) return;
            remember_->setChecked(false);
            remember_->setEnabled(false);
            reason->setText(tr("It can't be remembered: %1").arg(QString::fromStdString(why)));
            reason->show();
            layout()->activate();
            resize(width(), std::max(height(), layout()->totalHeightForWidth(width())));
          });
  layout()->addWidget(remember_);
  layout()->addWidget(reason);
}

bool PasswordDialog::IsToBeRemembered() const {
  return remember_ != nullptr && remember_->isChecked();
}

platform::Secret PasswordDialog::Password() const {
  return TextOf(password_);
}

ProtectDialog::ProtectDialog(std::function<bool(const platform::Secret&)> isOwn, QWidget* parent)
    : QDialog(parent), isOwn_(std::move(isOwn)) {
  setObjectName("ProtectDialog");
  setWindowTitle(tr("Protect"));
  auto* column = new QVBoxLayout(this);
  column->addWidget(MakeText(
      isOwn_ ? tr("This repository is protected with a password of your own.")
             : tr("The file is encrypted with the program's own password, which everybody has who "
                  "has the program. A password of your own keeps it from them."),
      this));
  if (isOwn_) present_ = AddField("PresentPassword", tr("&Present password:"));
  password_ = AddField("NewPassword", tr("&New password:"));
  again_ = AddField("NewPasswordAgain", tr("The &same once more:"));
  meter_ = new QProgressBar(this);
  meter_->setObjectName("Strength");
  meter_->setTextVisible(false);
  // Thin, so that nobody takes it for a third box.
  meter_->setFixedHeight(fontMetrics().height() / 2);
  meter_->setAccessibleName(tr("Strength of the password"));
  strength_ = MakeText({}, this);
  strength_->setObjectName("StrengthText");
  fault_ = MakeText({}, this);
  fault_->setObjectName("Fault");
  QLabel* warning = MakeText(
      tr("Nobody can undo a forgotten password: without it the repository and its backups can't be "
         "opened, by you or by anybody else. Write it down and keep it in a safe place.\n\n"
         "Backups and exports made before keep the password they were made with."),
      this);
  for (QWidget* widget : {static_cast<QWidget*>(meter_), static_cast<QWidget*>(strength_),
                          static_cast<QWidget*>(warning), static_cast<QWidget*>(fault_)}) {
    column->addWidget(widget);
  }
  MakeButtons();
  Follow();
}

QLineEdit* ProtectDialog::AddField(const char* name, const QString& caption) {
  QLineEdit* field = MakeField(name, caption, this);
  auto* label = new QLabel(caption, this);
  label->setBuddy(field);
  layout()->addWidget(label);
  layout()->addWidget(field);
  connect(field, &QLineEdit::textChanged, this, &ProtectDialog::Follow);
  return field;
}

void ProtectDialog::MakeButtons() {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
  set_ = buttons->addButton(isOwn_ ? tr("&Change password") : tr("Set &password"),
                            QDialogButtonBox::AcceptRole);
  set_->setObjectName("SetPassword");
  set_->setDefault(true);
  connect(set_, &QPushButton::clicked, this, [this] { Choose(Choice::kSet); });
  if (isOwn_) {
    auto* takeOff = buttons->addButton(tr("&Take password off"), QDialogButtonBox::ActionRole);
    takeOff->setObjectName("TakeOff");
    takeOff->setAutoDefault(false);
    connect(takeOff, &QPushButton::clicked, this, [this] { Choose(Choice::kTakeOff); });
  }
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout()->addWidget(buttons);
}

void ProtectDialog::Follow() {
  if (set_ == nullptr) return;  // not made yet
  platform::Secret password = TextOf(password_);
  PasswordStrength strength = EstimateStrength(password.Bytes());
  meter_->setValue(strength.percent);
  strength_->setText(QString::fromStdString(strength.text));
  fault_->setText(!again_->text().isEmpty() && again_->text() != password_->text()
                      ? tr("These are two different passwords.")
                      : QString());
  set_->setEnabled(!password.IsEmpty() && again_->text() == password_->text());
}

void ProtectDialog::Choose(Choice choice) {
  if (isOwn_ && !isOwn_(TextOf(present_))) {
    fault_->setText(tr("This is not the present password."));
    present_->setFocus();
    present_->selectAll();
    return;
  }
  choice_ = choice;
  accept();
}

platform::Secret ProtectDialog::NewPassword() const {
  return TextOf(password_);
}

}  // namespace tarnwick::options
