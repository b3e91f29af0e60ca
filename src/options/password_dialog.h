// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The windows in which passwords are typed. What is typed lies in a text field of the toolkit's
// until the window goes; the windows hand it on as a Secret.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "platform/secret.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace tarnwick::options {

// Asks for the password of a protected file, with a box to have it remembered.
class PasswordDialog : public QDialog {
  Q_OBJECT

 public:
  // whyNotRemembered: asked when the box is ticked, "" where passwords can be remembered; {}: there
  // is no box.
  PasswordDialog(const QString& file, bool isTriedAgain,
                 std::function<std::string()> whyNotRemembered, QWidget* parent = nullptr);
  platform::Secret Password() const;
  bool IsToBeRemembered() const;

 private:
  void AddBox(std::function<std::string()> whyNot);

  QLineEdit* password_;
  QCheckBox* remember_ = nullptr;
};

// File > Protect: sets, changes or takes off the password of the open repository.
class ProtectDialog : public QDialog {
  Q_OBJECT

 public:
  // isOwn tells whether a password is the present one; {}: the repository has none of its own.
  explicit ProtectDialog(std::function<bool(const platform::Secret&)> isOwn,
                         QWidget* parent = nullptr);

  enum class Choice { kNone, kSet, kTakeOff };
  Choice Chosen() const { return choice_; }
  platform::Secret NewPassword() const;

 private:
  QLineEdit* AddField(const char* name, const QString& caption);
  void MakeButtons();
  void Follow();
  void Choose(Choice choice);

  std::function<bool(const platform::Secret&)> isOwn_;
  Choice choice_ = Choice::kNone;
  QLineEdit* present_ = nullptr;  // nullptr: there is none
  QLineEdit* password_ = nullptr;
  QLineEdit* again_ = nullptr;
  QProgressBar* meter_ = nullptr;
  QLabel* strength_ = nullptr;
  QLabel* fault_ = nullptr;
  QPushButton* set_ = nullptr;
};

}  // namespace tarnwick::options
