// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A stored message's file for the desktop's mail program, and the command that fills bodies from
// their HTML. Errors are reported.
#pragma once

#include <cstdint>
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

// After a question: puts the text of every message's HTML into its body, as far as it has any. Can
// be stopped; what was done until then stays. The progress panel then tells how much that was. True
// when rows were changed.
bool MoveHtmlToBody();

}  // namespace tarnwick::board
