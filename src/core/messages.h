// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Message boxes and the event log. Texts are UTF-8 and may hold CR LF. Nothing here throws.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/user_interface.h"

namespace tarnwick::core {

// How to answer Outlook when it asks whether a program may see its addresses. Shown before a load
// from Outlook's own objects, and above what went wrong when a repository can't be opened.
inline constexpr const char* kAccessAdvice =
    "You should take the following actions against message\r\n"
    "\"A program is trying to access e-mail addresses you have stored in Outlook. Do you want to "
    "allow this?\"\r\n"
    "    1. Click box Allow access for\r\n"
    "    2. Select 10 minutes (to the right of box Allow access for)\r\n"
    "    3. Click YES";

// For the last box of what a full disk has ended.
inline constexpr const char* kDiskIsFull =
    "The disk is full. What was taken in until then is kept. Make room and do it again: it goes on "
    "with what is missing.";

// Information icon, OK, title "Tarnwick".
void ShowMessage(const std::string& text);

// A message box that one load can bring up hundreds of times (kind tells which it is, such as
// "Cc limit"). From its second showing in a load it offers to be silent for the rest of it; the
// log keeps every one. Outside a load it is ShowMessage.
void ShowRepeatedMessage(std::string_view kind, const std::string& text);

// "Error: " + text: shown with the critical icon unless quiet, and always logged. Within a load,
// boxes of the same kind (by default the text itself) offer silence as above.
void ShowError(const std::string& text, bool quiet = false, std::string_view kind = {});

// Critical icon, Yes and No; true only for Yes. What the open repository has collected is committed
// before the question (SetBeforeQuestion).
bool AskYesNo(const std::string& text);
// The same before something irreversible. loss is a line that names what goes; it may be empty.
bool AskBeforeLoss(const std::string& text, const std::string& loss);

// The same question where it comes again and again: also "Yes to all" and "No to all", which the
// caller keeps to itself from then on.
RepeatedAnswer AskYesNoAll(const std::string& text);

// UserInterface::AskPassword.
std::optional<platform::Secret> AskPassword(const std::string& file, int attempt);

// While it lives, errors that are reported are logged and not shown: steps that fail one after the
// other for one reason, such as a full disk, end in the one box of whoever ran them.
class ErrorsHeld {
 public:
  ErrorsHeld();
  ~ErrorsHeld();
  ErrorsHeld(const ErrorsHeld&) = delete;
  ErrorsHeld& operator=(const ErrorsHeld&) = delete;

  // The text of the first of them, behind "Error: ", also of one that is only logged otherwise:
  // what failed first is the reason for the rest. "" without one.
  const std::string& First() const { return first_; }

 private:
  friend void ShowError(const std::string& text, bool quiet, std::string_view kind);
  ErrorsHeld* outer_;
  std::string first_;
};

// "Program can't recognize file format." + blank + fileName, as an error.
void ReportUnknownFormat(const std::string& fileName);

// One entry at the end of LogFile: the date line, the text, an empty line, each ended by CR LF. The
// text may have lines of its own, ended by CR LF; whatever comes from mail, a store or a file name
// goes in through OneLogLine, or it could look like an entry.
// An entry is with the system before the next statement runs, and so outlives the program; during a
// load the file stays open between two. A log that can't be written loses the entry.
void WriteLog(std::string_view text);
void CloseLog();  // at the end of a load
// The same when LogEvents is on.
void LogProgress(std::string_view text);

// A text of the mail itself, for an entry of the log: on one line, or "(not logged)" where the
// person wants no such words in clear (RunState::LogMailTexts).
std::string LoggedMailText(const std::string& text);

void SetStatus(int panel, const std::string& text);  // the StatusPanel's number
void YieldEvents();

// Run before every question, so that no answer is waited for with writes uncommitted.
void SetBeforeQuestion(void (*hook)());

}  // namespace tarnwick::core
