// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/email_list.h"

#include "board/list_query.h"
#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/user_interface.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

void SetPanel(core::StatusPanel panel, const std::string& text) {
  core::SetStatus(static_cast<int>(panel), text);
}

std::vector<std::string> FirstColumn(const char* query) {
  std::vector<std::string> texts;
  jet::Recordset rows;
  for (rows.Open(query, repository::RepositoryDb()); !rows.Eof(); rows.MoveNext()) {
    std::string text = rows.Field(0).AsText();
    if (!text.empty()) texts.push_back(std::move(text));
  }
  return texts;
}

}  // namespace

void BindEmailList(ListForm& form) {
  core::GuardedRun("BindEmailList", [&] {
    GroupList();
    form.SetDataSource(Board().ListRecordset, Board().ListIsPlaceholder);
    ShowCounts(form);
  });
}

void ShowCounts(ListForm& form) {
  core::GuardedRun("ShowCounts", [&] {
    int64_t total = CountListed();
    int64_t incoming = total == 0 ? 0 : CountIncoming();
    SetPanel(core::StatusPanel::kCounts,
             incoming < 0 ? std::to_string(total) : CountsText(total, incoming));
    int64_t received = total == 0 || incoming < 0 ? incoming : CountReceived();
    if (received >= 0) form.DescribeCounts(received, total - received);
  });
}

bool ShowRefresh(ListForm& form) {
  MarkListed(Board().Filter);
  bool isOpened = OpenEmailList(BuildListWhere(Board().Filter));
  if (!isOpened && core::State().ImportCancelFlag) return false;
  BindEmailList(form);
  return true;
}

bool RestoreFilterAndLoad(ListForm& form) {
  return core::Guarded("RestoreFilterAndLoad", false, [&] {
    BoardState& board = Board();
    board.Filter = ReadSavedFilter();
    form.ShowFilter(board.Filter);
    MarkListed(board.Filter);
    if (!OpenEmailList(BuildListWhere(board.Filter))) return false;
    BindEmailList(form);
    ShowLastLoaded();
    return true;
  });
}

void ShowLastLoaded() {
  std::string when = repository::GetLastLoaded();
  SetPanel(core::StatusPanel::kLastLoaded, when.empty() ? when : "Last loaded on " + when);
}

void ShowRepositoryFolder() {
  SetPanel(core::StatusPanel::kFolder,
           "Tarnwick folder " + repository::Repository().RepositoryFolder);
}

std::vector<std::string> ContactNames() {
  return core::Guarded("SetComboBoxAndHigh", std::vector<std::string>(), [] {
    return FirstColumn("SELECT DISTINCT Name From MeContact ORDER BY Name");
  });
}

std::vector<std::string> AttachmentNames() {
  return core::Guarded("SetComboBoxAndHigh", std::vector<std::string>(), [] {
    return FirstColumn("SELECT DISTINCT FileName From Attachment ORDER BY FileName");
  });
}

}  // namespace tarnwick::board
