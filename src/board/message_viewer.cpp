// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/message_viewer.h"

#include <algorithm>

#include "core/documents.h"
#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/steps.h"
#include "database/recordset.h"
#include "intake/stored_units.h"
#include "platform/files.h"
#include "platform/html.h"
#include "platform/shell.h"
#include "repository/repository.h"
#include "takeout/msg_writer.h"
#include "takeout/stored_file.h"
#include "takeout/stored_message.h"

namespace tarnwick::board {

namespace {

using repository::RepositoryDb;

struct Document {
  std::string extension;
  std::string bytes;
};

// What the repository keeps is an Internet message whichever mailer it was taken from. One of
// Outlook is handed over as such where a program is there for it.
Document DocumentOf(int64_t emailId, const std::string& application, std::string stored) {
  constexpr const char* kOutlookFile = ".msg";
  if (application == "Outlook" && platform::HasProgramFor(kOutlookFile)) {
    auto message = takeout::ReadStoredMessage(emailId);
    if (message) return {kOutlookFile, takeout::MsgFileBytes(*message, stored)};
  }
  bool isLetter = application == "Outlook Express" || application == "Outlook";
  return {isLetter ? ".eml" : application == "Text" ? ".txt" : "", std::move(stored)};
}

struct Moved {
  int64_t seen = 0;
  int64_t total = 0;
  int64_t changed = 0;
  bool stopped = false;
};

// The stored HTML has been text since it was taken in: its charset, applied again, would spoil it.
bool MoveInRow(jet::Recordset& emails) {
  jet::Value html = emails.Field("HTMLBody");
  if (html.IsNull()) return false;
  std::string text = platform::HtmlToPlainText(html.AsText());
  if (text.empty() || text == emails.Field("Body").AsText()) return false;
  emails.SetField("Body", text);
  emails.Update();
  return true;
}

Moved MoveInEveryRow() {
  Moved moved;
  jet::Recordset emails;
  emails.Open("SELECT * From Email", RepositoryDb(), jet::CursorType::kKeyset,
              jet::LockType::kOptimistic);
  moved.total = emails.RecordCount();
  core::Steps steps(moved.total);
  intake::StoredUnits units;
  jet::CommitGroup group(RepositoryDb());
  for (; !emails.Eof(); emails.MoveNext()) {
    if (MoveInRow(emails)) {
      ++moved.changed;
      units.EndStored(0);
    } else {
      units.EndOther();
    }
    if (!steps.Next()) {
      moved.stopped = true;
      break;
    }
  }
  moved.seen = steps.Done();
  group.End();
  // What a full disk made the engine take back was not moved.
  moved.changed -= static_cast<int64_t>(units.TakeLost().size());
  return moved;
}

void Summarise(const Moved& moved) {
  std::string summary = std::to_string(moved.changed) + " bodies filled from HTML, " +
                        std::to_string(moved.seen) + " of " + std::to_string(moved.total) +
                        " messages looked at";
  if (moved.stopped) summary = "Stopped: " + summary;
  core::WriteLog("Move HTML to body: " + summary);
  core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), summary);
}

}  // namespace

bool ShowStoredMessage(int64_t emailId, const std::string& application, bool* hasNoProgram) {
  return core::Guarded("ShowStoredMessage", false, [&] {
    std::optional<std::string> bytes = takeout::ReadStoredFile(emailId);
    if (!bytes) {
      core::ShowMessage("There isn't nature email copy.");
      return false;
    }
    Document document = DocumentOf(emailId, application, std::move(*bytes));
    std::string path = core::NewDocumentPath(document.extension);
    platform::WriteFile(path, document.bytes);
    return core::OpenDocument(path, hasNoProgram);
  });
}

bool MoveHtmlToBody() {
  return core::Guarded("MoveHtmlToBody", false, [] {
    if (!core::AskBeforeLoss(
            "Do you want to move HTML to body?",
            "The text of the HTML replaces the body of every message that has any."))
      return false;
    Moved moved = MoveInEveryRow();
    Summarise(moved);
    return moved.changed > 0;
  });
}

}  // namespace tarnwick::board
