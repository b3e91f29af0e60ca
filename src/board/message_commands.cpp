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

std::string DeleteQuestion(const std::vector<SelectedMessage>& messages) {
  if (messages.size() == 1) {
    return "Are you realy want to delete the email with subject \r\n" + messages[0].subject;
  }
  return "Are you realy want to delete the " + std::to_string(messages.size()) + " selected emails";
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

bool DeleteMessages(const std::vector<SelectedMessage>& messages) {
  if (messages.empty()) {
    ShowNothingSelected();
    return false;
  }
  return core::Guarded("DeleteCurent", false, [&] {
    if (!core::AskYesNo(DeleteQuestion(messages))) return false;
    core::Steps steps(static_cast<int64_t>(messages.size()));
    jet::CommitGroup group(RepositoryDb());
    for (const SelectedMessage& message : messages) {
      RepositoryDb().Execute("DELETE * FROM Email WHERE ID=" + std::to_string(message.id));
      RepositoryDb().EndUnit();
      if (!steps.Next()) break;
    }
    group.End();
    // It may be set already: the options window asks for a full load by it.
    if (repository::HasNoEmail()) core::State().RepositoryIsEmpty = true;
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
    if (!core::AskYesNo("Are you realy want to mark all emails as unactive?")) return false;
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
