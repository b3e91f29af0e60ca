// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "cli/console_user_interface.h"

#include <iostream>
#include <map>

#include "cli/row_output.h"
#include "core/run_state.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/terminal.h"

namespace tarnwick::app {

namespace {

// Texts of messages reach a terminal here: control characters would command it.
std::string Printable(std::string text) {
  std::erase(text, '\r');
  return Harmless(text);
}

bool ReadAnswer(std::string& answer) {
  if (!std::getline(std::cin, answer)) return false;
  answer = platform::AsciiLower(answer);
  if (!answer.empty() && answer.back() == '\r') answer.pop_back();
  return true;
}

}  // namespace

ConsoleUserInterface::ConsoleUserInterface() : showsProgress_(platform::IsConsole(2)) {
  platform::CatchInterrupts();
}

bool ConsoleUserInterface::ShowBox(core::BoxIcon icon, const std::string& text, bool offerSilence) {
  ClearProgress();
  if (icon == core::BoxIcon::kCritical) errorShown_ = true;
  std::cerr << Printable(text) << std::endl;
  // Nothing waits for an OK here, so a box that keeps coming back says its piece once.
  return offerSilence;
}

bool ConsoleUserInterface::AskYesNo(const std::string& text) {
  ClearProgress();
  std::cerr << Printable(text) << " [y/n] " << std::flush;
  if (alwaysYes_) {
    std::cerr << "y" << std::endl;
    return true;
  }
  std::string answer;
  while (ReadAnswer(answer)) {
    if (answer == "y" || answer == "yes") return true;
    if (answer == "n" || answer == "no") return false;
    std::cerr << "Please answer y or n: " << std::flush;
  }
  std::cerr << std::endl;
  return false;
}

bool ConsoleUserInterface::AskBeforeLoss(const std::string& text, const std::string& loss) {
  return AskYesNo(loss.empty() ? text : text + "\r\n" + loss);
}

core::RepeatedAnswer ConsoleUserInterface::AskYesNoAll(const std::string& text) {
  using core::RepeatedAnswer;
  static const std::map<std::string, RepeatedAnswer> kAnswers = {
      {"y", RepeatedAnswer::kYes},      {"yes", RepeatedAnswer::kYes},
      {"n", RepeatedAnswer::kNo},       {"no", RepeatedAnswer::kNo},
      {"a", RepeatedAnswer::kYesToAll}, {"o", RepeatedAnswer::kNoToAll},
  };
  ClearProgress();
  std::cerr << Printable(text) << " [y/n, yes to (a)ll, n(o) to all] " << std::flush;
  if (alwaysYes_) {
    std::cerr << "a" << std::endl;
    return RepeatedAnswer::kYesToAll;
  }
  std::string answer;
  while (ReadAnswer(answer)) {
    auto found = kAnswers.find(answer);
    if (found != kAnswers.end()) return found->second;
    std::cerr << "Please answer y, n, a or o: " << std::flush;
  }
  std::cerr << std::endl;
  return RepeatedAnswer::kNoToAll;
}

std::optional<platform::Secret> ConsoleUserInterface::AskPassword(const std::string& file,
                                                                  int attempt) {
  ClearProgress();
  auto given = static_cast<size_t>(attempt) - 1;
  if (given < passwords_.size()) return platform::Secret(passwords_[given].Bytes());
  if (attempt > 1) std::cerr << "This is not the password. ";
  std::cerr << Printable(file) << " is protected with a password of its own." << std::endl;
  std::optional<platform::Secret> password = platform::ReadHidden("Password: ");
  if (!password) {
    std::cerr << "No password was given. Name a file that holds it with --password-file FILE."
              << std::endl;
  }
  return password;
}

core::SenderAnswer ConsoleUserInterface::AskAboutEmail(const core::AskedEmail& email) {
  using core::SenderAnswer;
  static const std::map<std::string, SenderAnswer> kAnswers = {
      {"a", SenderAnswer::kAccept}, {"l", SenderAnswer::kAcceptAll}, {"i", SenderAnswer::kIgnore},
      {"r", SenderAnswer::kReject}, {"c", SenderAnswer::kCancel},
  };
  ClearProgress();
  std::cerr << "Current Email\nSubject: " << Printable(email.subject)
            << "\nFrom: " << Printable(email.from) << "\nDate: " << Printable(email.date) << "\n\n"
            << Printable(std::string(platform::FirstChars(email.body, 1000))) << "\n\n";
  std::string answer;
  do {
    std::cerr << "(a)ccept, accept a(l)l, (i)gnore, (r)eject this sender, (c)ancel: " << std::flush;
    if (!ReadAnswer(answer)) {
      std::cerr << std::endl;
      return SenderAnswer::kCancel;
    }
  } while (kAnswers.count(answer) == 0);
  return kAnswers.at(answer);
}

std::optional<std::string> ConsoleUserInterface::ChooseFolder(const std::string& prompt) {
  ClearProgress();
  std::cerr << Printable(prompt) << " and name it with --profile DIR." << std::endl;
  return std::nullopt;
}

void ConsoleUserInterface::SetStatus(core::StatusPanel /*panel*/, const std::string& /*text*/) {}

void ConsoleUserInterface::ShowProgress(int64_t done, int64_t total) {
  if (!showsProgress_) return;
  int64_t now = platform::TickMilliseconds();
  if (now - lastProgress_ < 100) return;
  lastProgress_ = now;
  progressShown_ = true;
  std::cerr << '\r' << done;
  if (total > 0) std::cerr << " of " << total;
  std::cerr << ' ' << std::flush;
}

void ConsoleUserInterface::ClearProgress() {
  if (progressShown_) std::cerr << '\n';
  progressShown_ = false;
}

void ConsoleUserInterface::YieldEvents() {
  if (platform::WasInterrupted()) core::State().ImportCancelFlag = true;
}

}  // namespace tarnwick::app
