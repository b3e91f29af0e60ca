// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A repository and its settings written down, to be compared after a fault or a kill.
#pragma once

#include <map>
#include <set>
#include <string>

#include "database/recordset.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"
#include "support/repository_content.h"

namespace tarnwick::board {

// Messages, contacts and settings, each whole under a name of its own.
using State = std::map<std::string, std::string>;

inline State ReadRepository(jet::Connection& connection) {
  State state;
  for (const auto& [key, text] : testing::AllMessages(connection, true)) {
    state["Message " + key] = text;
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
inline std::set<std::string> Odd(const State& now, const State& before, const State& after) {
  std::set<std::string> odd;
  for (const State* state : {&now, &before, &after}) {
    for (const auto& [key, text] : *state) {
      auto in = [&key = key](const State& other) {
        auto found = other.find(key);
        return found == other.end() ? std::string("none") : found->second;
      };
      if (in(now) != in(before) && in(now) != in(after)) odd.insert(key);
    }
  }
  return odd;
}

}  // namespace tarnwick::board
