// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The person at the desktop. Boxes work before there is a main window; status and progress then go
// nowhere. Unattended, boxes and questions go to standard error instead and a question is answered
// No: nothing may wait where nobody sits.
#pragma once

#include <QElapsedTimer>
#include <QPointer>

#include "board/main_board_window.h"
#include "core/user_interface.h"

namespace tarnwick::app {

class QtUserInterface : public core::UserInterface {
 public:
  void SetWindow(board::MainBoard* window) { window_ = window; }
  void SetUnattended(bool unattended) { unattended_ = unattended; }

  bool ShowBox(core::BoxIcon icon, const std::string& text, bool offerSilence) override;
  bool AskYesNo(const std::string& text) override;
  bool AskBeforeLoss(const std::string& text, const std::string& loss) override;
  core::RepeatedAnswer AskYesNoAll(const std::string& text) override;
  std::optional<platform::Secret> AskPassword(const std::string& file, int attempt) override;
  core::SenderAnswer AskAboutEmail(const core::AskedEmail& email) override;
  std::optional<std::string> ChooseFolder(const std::string& prompt) override;
  void SetStatus(core::StatusPanel panel, const std::string& text) override;
  void ShowProgress(int64_t done, int64_t total) override;
  void YieldEvents() override;

 private:
  QWidget* Parent() const;

  QPointer<board::MainBoard> window_;
  QElapsedTimer sinceYield_;
  bool yielding_ = false;
  bool unattended_ = false;
};

}  // namespace tarnwick::app
