// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/unfinished.h"

#include <cassert>

#include "core/text.h"
#include "database/recordset.h"
#include "repository/repository.h"

namespace tarnwick::intake {

using repository::RepositoryDb;

int64_t UnfinishedWithKey(const std::string& storedKey) {
  if (storedKey.empty() || !repository::Repository().MayHoldUnfinished) return 0;
  jet::Recordset rows;
  rows.Open("SELECT ID FROM Email WHERE EntryID='" + core::QuoteSql(storedKey) +
                "' AND ID In (SELECT EmailID FROM Unfinished)",
            RepositoryDb());
  return rows.Eof() ? 0 : rows.Field("ID").AsInt();
}

void EnterUnfinished(int64_t id) {
  assert(RepositoryDb().InGroup());
  try {
    RepositoryDb().Execute("INSERT INTO Unfinished (EmailID) VALUES (" + std::to_string(id) + ")");
  } catch (const Error& error) {
    RepositoryDb().TakeBackGroup(error);
    throw;
  }
}

void LeaveUnfinished(int64_t id) {
  RepositoryDb().Execute("DELETE FROM Unfinished WHERE EmailID=" + std::to_string(id));
}

void RemoveChildRows(int64_t id) {
  const std::string key = std::to_string(id);
  for (const char* table : {"Attachment", "ToRecipient", "ccRecipient"}) {
    RepositoryDb().Execute(std::string("DELETE * FROM ") + table + " WHERE EmailID=" + key);
  }
  RepositoryDb().Execute("DELETE * FROM FileRepository WHERE FileID=" + key);
}

}  // namespace tarnwick::intake
