// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/message_commands.h"

#include "board/list_query.h"
#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/steps.h"
#include "core/text.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

using repository::RepositoryDb;

// Between two such lots the window answers.
constexpr int kMarkedAtOnce = 500;
constexpr size_t kKeptAtOnce = 500;

std::string DeleteQuestion(const std::vector<SelectedMessage>& messages) {
  if (messages.size() == 1) {
    return "Are you realy want to delete the email with subject \r\n" + messages[0].subject;
  }
  return "Are you realy want to delete the " + std::to_string(messages.size()) + " selected emails";
}

std::string Counted(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// How much goes: for one message, with what it brought.
std::string WhatGoes(const std::vector<SelectedMessage>& messages, bool comesBack) {
  std::string goes = Counted(messages.size(), "message");
  if (messages.size() == 1) {
    jet::Recordset files;
    files.Open(
        "SELECT Count(*) AS Files FROM Attachment WHERE EmailID=" + std::to_string(messages[0].id),
        RepositoryDb());
    if (int64_t count = files.Field(0).AsInt(); count > 0) {
      goes += " with " + Counted(static_cast<size_t>(count), "attached file");
    }
  }
  goes += messages.size() == 1 ? " goes." : " go.";
  if (comesBack) goes += " Until the program is closed, Edit > Undo brings back what went.";
  return goes;
}

// False when the deletion ends here. What can't be kept goes only when the person says so; then
// kept becomes null.
bool KeepLot(const std::vector<SelectedMessage>& messages, size_t first,
             maintenance::DeletedMessages*& kept) {
  std::vector<int64_t> lot;
  for (size_t i = first; i < messages.size() && i < first + kKeptAtOnce; ++i) {
    lot.push_back(messages[i].id);
  }
  try {
    kept->Keep(lot);
    return true;
  } catch (const Error& error) {
    core::ReportCurrentException("KeepDeleted", core::Report::kLog);
    kept = nullptr;
    return core::AskBeforeLoss("The messages can't be kept for Undo: " + error.Description() +
                                   "\r\nDo you want to delete them for good?",
                               {});
  }
}

void OpenActive(jet::Recordset& row, int64_t id) {
  row.Open("SELECT Active FROM Email WHERE ID=" + std::to_string(id), RepositoryDb(),
           jet::CursorType::kKeyset, jet::LockType::kOptimistic);
}

bool IsHot(int64_t id) {
  jet::Recordset row;
  OpenActive(row, id);
  return !row.Eof() && row.Field("Active").AsText() == "+";
}

void SetHot(int64_t id, bool hot) {
  jet::Recordset row;
  OpenActive(row, id);
  if (row.Eof() || (row.Field("Active").AsText() == "+") == hot) return;
  row.SetField("Active", hot ? jet::Value("+") : jet::Value());
  row.Update();
}

// The listed messages that have a mark; the others have none to lose.
void OpenMarked(jet::Recordset& marked) {
  std::string where = Board().LastWhere;
  where += (where.empty() ? "WHERE" : " AND") + std::string(" Active Is Not Null");
  marked.Open(ListQueryText(where, ""), RepositoryDb(), jet::CursorType::kKeyset);
  if (!IsSearching()) return;
  BoardState& board = Board();
  marked.Hold(board.ListIsPlaceholder ? std::vector<int64_t>() : board.ListRecordset.Keys());
  marked.Requery();
}

}  // namespace

void ShowNothingSelected() {
  core::ShowMessage("There isn't selected row.");
}

bool DeleteMessages(const std::vector<SelectedMessage>& messages,
                    maintenance::DeletedMessages* kept) {
  if (messages.empty()) {
    ShowNothingSelected();
    return false;
  }
  return core::Guarded("DeleteCurent", false, [&] {
    if (!core::AskBeforeLoss(DeleteQuestion(messages), WhatGoes(messages, kept != nullptr))) {
      return false;
    }
    std::vector<int64_t> gone;
    core::Steps steps(static_cast<int64_t>(messages.size()));
    jet::CommitGroup group(RepositoryDb());
    bool goesOn = true;
    for (size_t i = 0; i < messages.size() && goesOn; ++i) {
      if (kept != nullptr && i % kKeptAtOnce == 0 && !KeepLot(messages, i, kept)) break;
      RepositoryDb().Execute("DELETE * FROM Email WHERE ID=" + std::to_string(messages[i].id));
      RepositoryDb().EndUnit();
      gone.push_back(messages[i].id);
      goesOn = steps.Next();
    }
    group.End();
    if (kept != nullptr) kept->EndStep(std::move(gone));
    // It may be set already: the options window asks for a full load by it.
    if (repository::HasNoEmail()) core::State().RepositoryIsEmpty = true;
    return true;
  });
}

bool UndoDelete(maintenance::DeletedMessages& kept) {
  if (!kept.CanTakeBack()) return false;
  return core::Guarded("UndoDelete", false, [&] {
    int64_t back = kept.TakeBack();
    repository::NoteWhetherEmpty();
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress),
                    Counted(static_cast<size_t>(back), "message") + " brought back.");
    return true;
  });
}

bool ToggleActive(const std::vector<SelectedMessage>& messages) {
  if (messages.empty()) {
    ShowNothingSelected();
    return false;
  }
  return core::Guarded("MarkActive", false, [&] {
    bool hot = false;
    for (const SelectedMessage& message : messages) {
      hot = !IsHot(message.id);
      if (hot) break;
    }
    core::Steps steps(static_cast<int64_t>(messages.size()));
    jet::CommitGroup group(RepositoryDb());
    for (const SelectedMessage& message : messages) {
      SetHot(message.id, hot);
      RepositoryDb().EndUnit();
      if (!steps.Next()) break;
    }
    group.End();
    return true;
  });
}

std::optional<std::vector<int64_t>> ListedIds() {
  using Ids = std::optional<std::vector<int64_t>>;
  return core::Guarded("ListedIds", Ids(), []() -> Ids {
    std::vector<int64_t> ids;
    if (!CompleteList()) return std::nullopt;
    BoardState& board = Board();
    if (board.ListIsPlaceholder) return ids;
    jet::Recordset& list = board.ListRecordset;
    int64_t total = list.RecordCount();
    core::Steps steps(total);
    for (int64_t position = 1; position <= total; ++position) {
      // By position: the window moves in the same recordset when it paints between two steps.
      list.SetAbsolutePosition(position);
      jet::Value id = list.Field(kId);
      // A row that has gone meanwhile has no ID any more.
      if (!id.IsNull()) ids.push_back(id.AsInt());
      if (!steps.Next()) return std::nullopt;
    }
    return ids;
  });
}

bool MarkAllNotHot() {
  return core::Guarded("MarkAllNotHot", false, [] {
    if (!core::AskBeforeLoss("Are you realy want to mark all emails as unactive?",
                             "Every listed message loses its hot mark.")) {
      return false;
    }
    if (!CompleteList()) return false;
    jet::Recordset marked;
    OpenMarked(marked);
    const int64_t total = marked.RecordCount();
    core::Steps steps(total);
    jet::CommitGroup group(RepositoryDb());
    int collected = 0;
    bool goesOn = true;
    for (int64_t position = 1; position <= total && goesOn; ++position) {
      if (collected == 0) RepositoryDb().Execute("DELETE FROM ObjectList");
      marked.SetAbsolutePosition(position);
      jet::Value id = marked.Field(kId);
      // A row that has gone meanwhile has no ID any more.
      if (!id.IsNull()) {
        RepositoryDb().Execute("INSERT INTO ObjectList VALUES (" + std::to_string(id.AsInt()) +
                               ")");
      }
      goesOn = steps.Next();
      if (++collected < kMarkedAtOnce && position < total && goesOn) continue;
      RepositoryDb().Execute(
          "UPDATE Email SET Active = Null WHERE ID In (SELECT ID FROM ObjectList)");
      RepositoryDb().EndUnit();
      collected = 0;
    }
    group.End();
    return total > 0;
  });
}

std::string RelatedSubject(std::string subject) {
  std::string rest = std::move(subject);
  std::string head = core::SplitAtSeparator(rest, ":", true);
  std::string_view tail = core::Trim(rest);
  return tail.empty() ? head : std::string(tail);
}

}  // namespace tarnwick::board
