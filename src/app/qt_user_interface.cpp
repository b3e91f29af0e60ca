// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "qt_user_interface.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QMessageBox>
#include <functional>
#include <iostream>

#include "intake/ask_about_email_dialog.h"
#include "options/password_dialog.h"
#include "platform/files.h"
#include "repository/file_place.h"
#include "repository/keyring.h"

namespace tarnwick::app {

namespace {

// Milliseconds between two turns of the events in a run of thousands of steps a second: short
// enough for the eye and a click, long enough that painting costs the run nothing.
constexpr qint64 kYieldPause = 30;

// Texts of messages reach a box here; as plain text they can't bring markup along.
void Prepare(QMessageBox& box, const std::string& text) {
  box.setWindowTitle("Tarnwick");
  box.setTextFormat(Qt::PlainText);
  box.setText(QString::fromStdString(text).replace("\r\n", "\n"));
}

}  // namespace

QWidget* QtUserInterface::Parent() const {
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  if (window_) return window_;
  return QApplication::activeWindow();
}

bool QtUserInterface::ShowBox(core::BoxIcon icon, const std::string& text, bool offerSilence) {
  if (unattended_) {
    std::cerr << text << std::endl;
    return offerSilence;
  }
  QMessageBox box(Parent());
  Prepare(box, text);
  box.setIcon(icon == core::BoxIcon::kCritical ? QMessageBox::Critical : QMessageBox::Information);
  box.setStandardButtons(QMessageBox::Ok);
  QCheckBox* silence = nullptr;
  if (offerSilence) {
    silence = new QCheckBox(QObject::tr("&Do not show again during this load"), &box);
    box.setCheckBox(silence);
  }
  box.exec();
  return silence != nullptr && silence->isChecked();
}

bool QtUserInterface::AskYesNo(const std::string& text) {
  if (unattended_) {
    std::cerr << text << std::endl;
    return false;
  }
  QMessageBox box(Parent());
  Prepare(box, text);
  box.setIcon(QMessageBox::Critical);
  box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
  box.setEscapeButton(QMessageBox::No);
  return box.exec() == QMessageBox::Yes;
}

bool QtUserInterface::AskBeforeLoss(const std::string& text, const std::string& loss) {
  if (unattended_) return AskYesNo(text);
  QMessageBox box(Parent());
  Prepare(box, text);
  box.setInformativeText(QString::fromStdString(loss));
  box.setIcon(QMessageBox::Critical);
  box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
  box.setDefaultButton(QMessageBox::No);
  box.setEscapeButton(QMessageBox::No);
  return box.exec() == QMessageBox::Yes;
}

core::RepeatedAnswer QtUserInterface::AskYesNoAll(const std::string& text) {
  using core::RepeatedAnswer;
  if (unattended_) return AskYesNo(text) ? RepeatedAnswer::kYes : RepeatedAnswer::kNo;
  QMessageBox box(Parent());
  Prepare(box, text);
  box.setIcon(QMessageBox::Critical);
  box.setStandardButtons(QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No |
                         QMessageBox::NoToAll);
  box.setEscapeButton(QMessageBox::No);
  switch (box.exec()) {
    case QMessageBox::Yes:
      return RepeatedAnswer::kYes;
    case QMessageBox::YesToAll:
      return RepeatedAnswer::kYesToAll;
    case QMessageBox::NoToAll:
      return RepeatedAnswer::kNoToAll;
    default:
      return RepeatedAnswer::kNo;
  }
}

std::optional<platform::Secret> QtUserInterface::AskPassword(const std::string& file, int attempt) {
  if (unattended_) return std::nullopt;
  repository::Keyring* keyring = repository::TheKeyring();
  std::function<std::string()> whyNot;
  if (keyring != nullptr) whyNot = [keyring] { return keyring->WhyNot(); };
  options::PasswordDialog dialog(QString::fromStdString(file), attempt > 1, whyNot, Parent());
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  if (keyring != nullptr) keyring->isWanted = dialog.IsToBeRemembered();
  return dialog.Password();
}

core::SenderAnswer QtUserInterface::AskAboutEmail(const core::AskedEmail& email) {
  if (unattended_) return core::SenderAnswer::kCancel;
  intake::AskAboutEmail dialog(email, Parent());
  dialog.exec();
  return dialog.Answer();
}

std::optional<std::string> QtUserInterface::ChooseFolder(const std::string& prompt) {
  if (unattended_) return std::nullopt;
  QString folder = QFileDialog::getExistingDirectory(
      Parent(), QString::fromStdString(prompt), QString::fromStdString(repository::LastFolder()));
  if (folder.isEmpty()) return std::nullopt;
  std::string chosen = platform::WithSeparator(folder.toStdString());
  repository::RememberFolderOf(chosen);
  return chosen;
}

void QtUserInterface::SetStatus(core::StatusPanel panel, const std::string& text) {
  if (window_) window_->Status().SetPanel(panel, QString::fromStdString(text));
}

void QtUserInterface::ShowProgress(int64_t done, int64_t total) {
  if (window_) window_->Status().ShowProgress(done, total);
}

void QtUserInterface::YieldEvents() {
  // What runs in the turn may come here again; the outer turn goes on in that case.
  if (yielding_) return;
  if (sinceYield_.isValid() && sinceYield_.elapsed() < kYieldPause) return;
  yielding_ = true;
  QCoreApplication::processEvents();
  yielding_ = false;
  sinceYield_.start();
}

}  // namespace tarnwick::app
