// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Looking at a stored message, without a window: its file for the desktop's mail program, its text
// for the text window, and the command that fills bodies from their HTML. Errors are reported.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarnwick::board {

// Writes the message's file, byte for byte as it was received, to a scratch file and has the
// desktop open it. application is the mailer that the message came from and chooses the kind of
// file; a message of Outlook is written as Outlook keeps one, where a program opens such files.
// False when nothing was opened; the person knows why.
//
// hasNoProgram: set, instead of telling the person, where the desktop has none for such files.
bool ShowStoredMessage(int64_t emailId, const std::string& application,
                       bool* hasNoProgram = nullptr);

struct EmailText {
  std::string subject;
  std::string text;  // the body when it holds text, else the HTML as it stands
  int64_t id = 0;    // 0 for a text that is no stored message's
};

// nullopt when there is no message of this number (any more).
std::optional<EmailText> ReadEmailText(int64_t id);

// After a question: puts the text of every message's HTML into its body, as far as it has any. Can
// be stopped; what was done until then stays. The progress panel then tells how much that was. True
// when rows were changed.
bool MoveHtmlToBody();

}  // namespace tarnwick::board
