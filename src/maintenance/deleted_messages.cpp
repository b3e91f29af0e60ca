// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/deleted_messages.h"

#include <algorithm>
#include <span>
#include <utility>

#include "core/run_state.h"
#include "core/text.h"
#include "database/recordset.h"
#include "maintenance/database_file.h"
#include "platform/files.h"
#include "repository/repository.h"

namespace tarnwick::maintenance {

namespace {

using repository::RepositoryDb;

// A statement names so many messages at once.
constexpr size_t kAtOnce = 200;

// Calls take with "(1, 2, 3)" for lot after lot of the numbers.
template <typename Take>
void ByLots(std::span<const int64_t> ids, const Take& take) {
  for (size_t first = 0; first < ids.size(); first += kAtOnce) {
    std::string list;
    for (int64_t id : ids.subspan(first, std::min(kAtOnce, ids.size() - first))) {
      list += (list.empty() ? "(" : ", ") + std::to_string(id);
    }
    take(list + ")");
  }
}

// Those of the kept messages that have not been loaded again.
std::vector<int64_t> NotThereAgain(const std::string& inFile, const std::vector<int64_t>& ids) {
  std::vector<int64_t> missing;
  ByLots(ids, [&](const std::string& list) {
    jet::Recordset kept;
    kept.Open("SELECT ID, EntryID FROM Email" + inFile + " WHERE ID IN " + list, RepositoryDb());
    for (; !kept.Eof(); kept.MoveNext()) {
      std::string key = kept.Field("EntryID").AsText();
      std::string id = kept.Field("ID").AsText();
      std::string same = "ID=" + id;
      if (!key.empty()) same += " OR EntryID='" + core::QuoteSql(key) + "'";
      jet::Recordset there;
      there.Open("SELECT TOP 1 ID FROM Email WHERE " + same, RepositoryDb());
      if (there.Eof()) missing.push_back(kept.Field("ID").AsInt());
    }
  });
  return missing;
}

}  // namespace

std::string DeletedMessages::File() {
  return core::State().EmailFileFolder + "Deleted.twr";
}

void DeletedMessages::Keep(const std::vector<int64_t>& ids) {
  if (!made_ || !platform::FileExists(File())) {
    steps_.clear();  // what lay in a file that has gone
    platform::RemoveFile(File());
    NewDatabaseFile(File()).Finish();
    made_ = true;
  }
  RepositoryDb().FlushGroup();
  const std::string inFile = " IN '" + core::QuoteSql(File()) + "'";
  ByLots(ids, [&](const std::string& list) {
    RepositoryDb().Execute("INSERT INTO Email" + inFile + "\r\nSELECT * FROM Email WHERE ID IN " +
                           list);
  });
}

void DeletedMessages::EndStep(std::vector<int64_t> deleted) {
  if (!deleted.empty()) steps_.push_back(std::move(deleted));
}

// So that the same messages can be deleted once more.
void DeletedMessages::Drop(const std::vector<int64_t>& ids) {
  jet::Connection file;
  OpenFile(file, File(), {});
  ByLots(ids,
         [&](const std::string& list) { file.Execute("DELETE * FROM Email WHERE ID IN " + list); });
  file.Close();
}

int64_t DeletedMessages::TakeBack() {
  if (steps_.empty()) return 0;
  const std::string inFile = " IN '" + core::QuoteSql(File()) + "'";
  std::vector<int64_t> missing = NotThereAgain(inFile, steps_.back());
  ByLots(missing, [&](const std::string& list) {
    RepositoryDb().Execute("INSERT INTO Email SELECT * FROM Email" + inFile + " WHERE ID IN " +
                           list);
  });
  Drop(steps_.back());
  steps_.pop_back();
  return static_cast<int64_t>(missing.size());
}

}  // namespace tarnwick::maintenance
