// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The one door from plain code to the person. Three implementations: windows (app/), the console
// (app/) and a scripted one in tests that fails on a question it does not expect. Rooms rarely call
// it: ShowMessage, ShowError, AskYesNo and the others in core/messages.h stand before it.
//
// Calls that ask are modal: they return when the person has answered. None throws.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/date_time.h"
#include "platform/secret.h"

namespace tarnwick::core {

enum class BoxIcon { kInformation, kCritical };

// What the person answers about a message from an unknown sender; the numbers are the run-wide
// answer's.
enum class SenderAnswer { kCancel = 0, kIgnore = 1, kAccept = 2, kReject = 3, kAcceptAll = 4 };

// What the ask dialog shows. Texts are UTF-8; from reads: name, two blanks, "<", address, ">".
struct AskedEmail {
  std::string subject;
  std::string from;
  std::string date;
  std::string body;
};

// Panels of the status bar.
enum class StatusPanel { kProgress = 1, kCounts = 2, kLastLoaded = 3, kFolder = 4 };

// The answer to a question that comes again and again in one run.
enum class RepeatedAnswer { kYes, kNo, kYesToAll, kNoToAll };

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  // A box titled "Tarnwick" with one OK button. With offerSilence it also carries "Do not show
  // again during this load"; the result tells whether that was chosen.
  virtual bool ShowBox(BoxIcon icon, const std::string& text, bool offerSilence) = 0;
  // A box titled "Tarnwick" with the critical icon and the buttons Yes and No.
  virtual bool AskYesNo(const std::string& text) = 0;
  // The same before something that can't be had back: loss names what goes, in a line added to the
  // question, and No is what a person who only presses Enter says.
  virtual bool AskBeforeLoss(const std::string& text, const std::string& loss) = 0;
  // The same with "Yes to all" and "No to all" beside them. Where that can't be offered the
  // question is asked each time.
  virtual RepeatedAnswer AskYesNoAll(const std::string& text) {
    return AskYesNo(text) ? RepeatedAnswer::kYes : RepeatedAnswer::kNo;
  }
  // The password of a protected database file; attempt counts from 1, and the one before was wrong.
  // nullopt: the person gives up, or there is none to ask.
  virtual std::optional<platform::Secret> AskPassword(const std::string& /*file*/,
                                                      int /*attempt*/) {
    return std::nullopt;
  }
  virtual SenderAnswer AskAboutEmail(const AskedEmail& email) = 0;
  // The system's folder browser; the answer ends with the separator. nullopt: cancelled.
  virtual std::optional<std::string> ChooseFolder(const std::string& prompt) = 0;

  virtual void SetStatus(StatusPanel panel, const std::string& text) = 0;
  // total 0: unknown. done == total ends the display.
  virtual void ShowProgress(int64_t done, int64_t total) = 0;
  // Lets pending window events run; called often, so it limits itself.
  virtual void YieldEvents() = 0;
};

}  // namespace tarnwick::core
