// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The window that shows a message from an unknown sender and asks what becomes of it. Closing it by
// its frame or with Escape is Cancel, which ends the load.
#pragma once

#include <QDialog>

#include "core/user_interface.h"

class QLineEdit;

namespace tarnwick::intake {

class AskAboutEmail : public QDialog {
  Q_OBJECT

 public:
  explicit AskAboutEmail(const core::AskedEmail& email, QWidget* parent = nullptr);

  // Valid once the window has closed.
  core::SenderAnswer Answer() const { return answer_; }

 private:
  QLineEdit* MakeLine(const char* name, const std::string& text);
  QWidget* MakeButtons();

  core::SenderAnswer answer_ = core::SenderAnswer::kCancel;
};

}  // namespace tarnwick::intake
