// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/scripted_ui.h"

#include <gtest/gtest.h>

#include "core/run_state.h"

namespace tarnwick::testing {

namespace {

template <typename Answer>
Answer Take(std::deque<Answer>& answers, Answer otherwise, const std::string& question) {
  if (answers.empty()) {
    ADD_FAILURE() << "unexpected question: " << question;
    return otherwise;
  }
  Answer answer = answers.front();
  answers.pop_front();
  return answer;
}

}  // namespace

ScriptedUi::ScriptedUi() {
  core::State().Ui = this;
}

ScriptedUi::~ScriptedUi() {
  EXPECT_TRUE(yesNo.empty()) << "a yes/no question was expected and not asked";
  EXPECT_TRUE(yesNoAll.empty()) << "a repeated question was expected and not asked";
  EXPECT_TRUE(senders.empty()) << "a question about a sender was expected and not asked";
  EXPECT_TRUE(passwords.empty()) << "a password was expected and not asked for";
  EXPECT_TRUE(folders.empty()) << "a folder was to be chosen and was not asked for";
  if (core::State().Ui == this) core::State().Ui = nullptr;
}

std::vector<std::string> ScriptedUi::Shown(const std::string& kind) const {
  std::vector<std::string> texts;
  for (const auto& [shownKind, text] : shown) {
    if (shownKind == kind) texts.push_back(text);
  }
  return texts;
}

bool ScriptedUi::ShowBox(core::BoxIcon icon, const std::string& text, bool offerSilence) {
  EXPECT_TRUE(allowBoxes) << "unexpected box: " << text;
  shown.emplace_back(icon == core::BoxIcon::kCritical ? "error" : "box", text);
  if (offerSilence) ++silenceOffers;
  return offerSilence && silenceWhenOffered;
}

bool ScriptedUi::AskYesNo(const std::string& text) {
  shown.emplace_back("question", text);
  if (yesNo.empty() && declinesOthers) return false;
  return Take(yesNo, false, text);
}

bool ScriptedUi::AskBeforeLoss(const std::string& text, const std::string& loss) {
  losses.push_back(loss);
  return AskYesNo(text);
}

core::RepeatedAnswer ScriptedUi::AskYesNoAll(const std::string& text) {
  shown.emplace_back("question", text);
  return Take(yesNoAll, core::RepeatedAnswer::kNo, text);
}

std::optional<platform::Secret> ScriptedUi::AskPassword(const std::string& file, int /*attempt*/) {
  shown.emplace_back("password", file);
  std::string password = Take(passwords, std::string(), file);
  if (password.empty()) return std::nullopt;
  return platform::Secret(password);
}

core::SenderAnswer ScriptedUi::AskAboutEmail(const core::AskedEmail& email) {
  shown.emplace_back("ask", email.subject);
  asked.push_back(email);
  return Take(senders, core::SenderAnswer::kCancel, email.subject);
}

std::optional<std::string> ScriptedUi::ChooseFolder(const std::string& prompt) {
  shown.emplace_back("folder", prompt);
  return Take(folders, std::optional<std::string>(), prompt);
}

void ScriptedUi::SetStatus(core::StatusPanel panel, const std::string& text) {
  status[panel] = text;
}

void ScriptedUi::ShowProgress(int64_t done, int64_t total) {
  progressDone = done;
  progressTotal = total;
}

void ScriptedUi::YieldEvents() {
  ++yields;
  if (onYield) onYield();
}

}  // namespace tarnwick::testing
