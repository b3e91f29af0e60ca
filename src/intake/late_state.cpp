// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/late_state.h"

#include "core/guard.h"
#include "core/text.h"
#include "database/recordset.h"
#include "intake/load_account.h"
#include "intake/store_message.h"
#include "repository/repository.h"

namespace tarnwick::intake {

bool LacksState(const std::string& key) {
  return core::Guarded(
      "LacksState", false,
      [&] {
        jet::Recordset row;
        row.Open("SELECT State FROM Email WHERE EntryID='" + core::QuoteSql(StoredKey(key)) + "'",
                 repository::RepositoryDb());
        return !row.Eof() && row.Field("State").AsText().empty();
      },
      core::Report::kLog);
}

void FillState(const std::string& key, const MessageState& state) {
  std::string text = StoredState(state);
  if (text.empty() || key.empty() || !LacksState(key)) return;
  core::GuardedRun(
      "FillState",
      [&] {
        repository::RepositoryDb().Execute("UPDATE Email SET State='" + core::QuoteSql(text) +
                                           "' WHERE EntryID='" + core::QuoteSql(StoredKey(key)) +
                                           "'");
        Account().CountLateState();
      },
      core::Report::kLog);
}

}  // namespace tarnwick::intake
