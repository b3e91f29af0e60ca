// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The person, as a test has them: answers come from queues, everything shown is kept, and a
// question for which no answer was prepared fails the test.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/user_interface.h"

namespace tarnwick::testing {

class ScriptedUi : public core::UserInterface {
 public:
  ScriptedUi();
  ~ScriptedUi() override;  // fails when a prepared answer was never asked for; takes itself out

  // What was shown, in order: ("box" | "error" | "question" | "ask" | "password" | "folder", text).
  std::vector<std::pair<std::string, std::string>> shown;
  std::vector<std::string> losses;
  // Boxes may appear without being expected; set to false to fail on any.
  bool allowBoxes = true;
  // Set to true to have questions for which no answer was prepared answered with no.
  bool declinesOthers = false;

  std::deque<bool> yesNo;
  std::deque<core::RepeatedAnswer> yesNoAll;
  std::deque<core::SenderAnswer> senders;
  std::deque<std::optional<std::string>> folders;
  std::deque<std::string> passwords;  // "": given up
  bool silenceWhenOffered = false;
  int silenceOffers = 0;
  std::vector<core::AskedEmail> asked;

  std::map<core::StatusPanel, std::string> status;
  int64_t progressDone = 0;
  int64_t progressTotal = 0;
  int yields = 0;
  std::function<void()> onYield;  // to press stop in the middle, say

  // Texts of one kind of shown entry.
  std::vector<std::string> Shown(const std::string& kind) const;

  bool ShowBox(core::BoxIcon icon, const std::string& text, bool offerSilence) override;
  bool AskYesNo(const std::string& text) override;
  // Answered from yesNo; what would go is kept in losses.
  bool AskBeforeLoss(const std::string& text, const std::string& loss) override;
  core::RepeatedAnswer AskYesNoAll(const std::string& text) override;
  std::optional<platform::Secret> AskPassword(const std::string& file, int attempt) override;
  core::SenderAnswer AskAboutEmail(const core::AskedEmail& email) override;
  std::optional<std::string> ChooseFolder(const std::string& prompt) override;
  void SetStatus(core::StatusPanel panel, const std::string& text) override;
  void ShowProgress(int64_t done, int64_t total) override;
  void YieldEvents() override;
};

}  // namespace tarnwick::testing
