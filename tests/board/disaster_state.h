// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A repository and its settings written down, to be compared after a fault or a kill.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "database/recordset.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::board {

// Messages, contacts and settings, each whole under a name of its own.
using State = std::map<std::string, std::string>;

inline State ReadRepository(jet::Connection& connection) {
  State state;
  std::map<std::string, std::string> children;
  for (const char* table : {"ToRecipient", "ccRecipient", "Attachment", "FileRepository"}) {
    bool isFile = std::string(table) == "FileRepository";
    jet::Recordset rows;
    rows.Open(std::string("SELECT * FROM ") + table + " ORDER BY ID", connection);
    for (; !rows.Eof(); rows.MoveNext()) {
      std::string& text = children[rows.Field(isFile ? "FileID" : "EmailID").AsText()];
      for (int i = 0; i < rows.FieldCount(); ++i) {
        std::string name = rows.FieldName(i);
        if (name != "ID" && name != "EmailID" && name != "FileID") {
          text += table + rows.Field(i).AsText() + "\n";
        }
      }
    }
  }
  jet::Recordset emails;
  emails.Open("SELECT * FROM Email ORDER BY ID", connection);
  for (; !emails.Eof(); emails.MoveNext()) {
    std::string text;
    for (int i = 0; i < emails.FieldCount(); ++i) {
      std::string name = emails.FieldName(i);
      bool isNumber = name == "ID" || name == "FromTo" || name == "ProjectID";
      if (!isNumber) text += name + "=" + emails.Field(i).AsText() + "\n";
    }
    text += emails.Field("FromTo").AsInt() != 0 ? "correspondent\n" : "";
    text += emails.Field("ProjectID").AsInt() != 0 ? "project\n" : "";
    state["Message " + emails.Field("EntryID").AsText()] =
        text + children[emails.Field("ID").AsText()];
  }
  for (const char* query :
       {"SELECT Name FROM MeContact", "SELECT Address FROM ContactEmail",
        "SELECT ProjectName FROM tblProject", "SELECT Address FROM RejectSender"}) {
    jet::Recordset rows;
    for (rows.Open(query, connection); !rows.Eof(); rows.MoveNext()) {
      state[std::string(query) + " " + rows.Field(0).AsText()] = "";
    }
  }
  return state;
}

inline State ReadSavedFile(const std::string& file) {
  jet::Connection connection;
  connection.SetProperty(jet::kDataSourceProperty, file);
  connection.SetProperty(jet::kPasswordProperty, repository::DatabasePassword());
  connection.SetProperty(jet::kModeProperty, jet::kModeRead);
  connection.Open();
  return ReadRepository(connection);
}

inline State ReadOpenRepository() {
  State state = ReadRepository(repository::RepositoryDb());
  jet::Recordset rows;
  rows.Open("SELECT * FROM Parameter WHERE ParameterGroup <> 'Restore'", repository::ParameterDb());
  for (; !rows.Eof(); rows.MoveNext()) {
    state["Setting " + rows.Field(0).AsText() + " " + rows.Field(1).AsText()] =
        rows.Field(2).AsText() + "|" + rows.Field(3).AsText() + "|" + rows.Field(4).AsText();
  }
  return state;
}

// What is neither as before nor as after.
inline std::vector<std::string> Odd(const State& now, const State& before, const State& after) {
  std::vector<std::string> odd;
  std::set<std::string> keys;
  for (const State* state : {&now, &before, &after}) {
    for (const auto& [key, text] : *state) keys.insert(key);
  }
  auto find = [](const State& state, const std::string& key) {
    auto found = state.find(key);
    return found == state.end() ? nullptr : &found->second;
  };
  auto same = [](const std::string* a, const std::string* b) {
    return a == nullptr || b == nullptr ? a == b : *a == *b;
  };
  for (const std::string& key : keys) {
    const std::string* is = find(now, key);
    if (!same(is, find(before, key)) && !same(is, find(after, key))) odd.push_back(key);
  }
  return odd;
}

}  // namespace tarnwick::board
