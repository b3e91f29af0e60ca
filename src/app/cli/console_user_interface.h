// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The person at a terminal, or the script that stands in for one. Boxes and questions go to
// standard error, so that standard output holds results only; answers are lines of standard input.
// At its end every question is answered with No or Cancel.
#pragma once

#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "core/user_interface.h"

namespace tarnwick::app {

class ConsoleUserInterface : public core::UserInterface {
 public:
  ConsoleUserInterface();

  // Answers every yes/no question with Yes.
  void SetAlwaysYes(bool always) { alwaysYes_ = always; }
  void AddPassword(platform::Secret password) { passwords_.push_back(std::move(password)); }
  // True when a box with the critical icon was shown.
  bool ErrorShown() const { return errorShown_; }

  bool ShowBox(core::BoxIcon icon, const std::string& text, bool offerSilence) override;
  bool AskYesNo(const std::string& text) override;
  bool AskBeforeLoss(const std::string& text, const std::string& loss) override;
  core::RepeatedAnswer AskYesNoAll(const std::string& text) override;
  // Those of AddPassword in their order, for every file anew; then it is asked at the terminal.
  std::optional<platform::Secret> AskPassword(const std::string& file, int attempt) override;
  core::SenderAnswer AskAboutEmail(const core::AskedEmail& email) override;
  std::optional<std::string> ChooseFolder(const std::string& prompt) override;
  void SetStatus(core::StatusPanel panel, const std::string& text) override;
  void ShowProgress(int64_t done, int64_t total) override;
  // Turns Ctrl-C into the stop command: the run ends at the next message, its work kept.
  void YieldEvents() override;

 private:
  void ClearProgress();

  std::vector<platform::Secret> passwords_;
  bool alwaysYes_ = false;
  bool errorShown_ = false;
  bool showsProgress_ = false;  // standard error is a terminal
  bool progressShown_ = false;
  int64_t lastProgress_ = 0;  // TickMilliseconds
};

}  // namespace tarnwick::app
