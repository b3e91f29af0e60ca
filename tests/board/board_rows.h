// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Messages put straight into the repository, for tests of the list.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "board/email_list.h"
#include "board/list_query.h"
#include "core/text.h"
#include "repository/repository.h"

namespace tarnwick::testing {

struct ListedEmail {
  std::string subject;
  std::string name = "Ann";
  std::string direction = "In";
  DateTime received = DateTime::FromDate(2004, 3, 7).WithTime(14, 7, 0);
  std::string body = {};
  std::vector<std::string> files = {};
  std::string importance = {};
  bool hot = false;
};

inline int64_t AddRow(jet::Recordset& table,
                      const std::vector<std::pair<const char*, jet::Value>>& fields,
                      const char* key) {
  table.AddNew();
  for (const auto& [name, value] : fields) table.SetField(name, value);
  table.Update();
  return table.Field(key).AsInt();
}

inline int64_t ContactId(const std::string& name) {
  jet::Recordset& contacts = repository::Repository().ContactRecordset;
  jet::Recordset found;
  found.Open("SELECT ID FROM MeContact WHERE Name='" + core::QuoteSql(name) + "'",
             repository::RepositoryDb());
  return found.Eof() ? AddRow(contacts, {{"Name", name}}, "ID") : found.Field(0).AsInt();
}

// Stores the message and returns its ID.
inline int64_t AddListed(const ListedEmail& email) {
  repository::OpenedRepository& repository = repository::Repository();
  int64_t id = AddRow(repository.EmailRecordset,
                      {{"Subject", email.subject},
                       {"FromTo", ContactId(email.name)},
                       {"Direction", email.direction},
                       {"ReceivedTime", email.received},
                       {"Body", email.body},
                       {"FilesNum", static_cast<int>(email.files.size())},
                       {"EmailImportance", email.importance},
                       {"Application", "Outlook Express"},
                       {"Active", email.hot ? jet::Value("+") : jet::Value()}},
                      "ID");
  for (const std::string& file : email.files) {
    AddRow(repository.AttachmentRecordset, {{"EmailID", id}, {"FileName", file}}, "ID");
  }
  return id;
}

// Stores many such messages in one commit and returns their IDs.
inline std::vector<int64_t> AddMany(int count, const ListedEmail& email) {
  std::vector<int64_t> ids(static_cast<size_t>(count));
  jet::CommitGroup group(repository::RepositoryDb());
  for (int64_t& id : ids) id = AddListed(email);
  group.End();
  return ids;
}

// Runs the current filter after change, without a window.
inline bool ListEvery() {
  board::Board().Filter = board::EveryMessage();
  return board::OpenEmailList(board::BuildListWhere(board::Board().Filter));
}

inline std::vector<std::string> ListedSubjects() {
  std::vector<std::string> subjects;
  jet::Recordset& list = board::Board().ListRecordset;
  for (int64_t i = 1; i <= board::CountListed(); ++i) {
    list.SetAbsolutePosition(i);
    subjects.push_back(list.Field(board::kSubject).AsText());
  }
  return subjects;
}

// A window that only remembers what it was given.
class RememberingForm : public board::ListForm {
 public:
  void SetDataSource(jet::Recordset& /*list*/, bool isPlaceholder) override {
    ++bindings;
    placeholder = isPlaceholder;
  }
  void ShowFilter(const board::ListFilter& shown) override { filter = shown; }
  void DescribeCounts(int64_t in, int64_t out) override { received = in, sent = out; }

  int bindings = 0;
  bool placeholder = false;
  board::ListFilter filter;
  int64_t received = 0;
  int64_t sent = 0;
};

}  // namespace tarnwick::testing

namespace tarnwick {
using testing::AddListed;
using testing::ListedEmail;
using testing::ListedSubjects;
using testing::ListEvery;
}  // namespace tarnwick
