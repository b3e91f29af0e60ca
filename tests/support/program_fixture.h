// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A program that has started on an empty repository in a folder of the test's own, with a scripted
// person, a fixed clock (15 June 2020 12:00:00), zone (local = UTC + 3), user ("ann") and locale
// (en_US).
#pragma once

#include "core/run_state.h"
#include "database/recordset.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"
#include "support/scripted_ui.h"
#include "support/testing.h"

namespace tarnwick {
using repository::RepositoryDb;
}

namespace tarnwick::testing {

class ProgramFixture : public ::testing::Test {
 protected:
  ProgramFixture();
  ~ProgramFixture() override;

  // First field of the first row of a query on the repository; Null without a row.
  static jet::Value Query(const std::string& sql);
  // All of a query: the fields of a row joined by "|", the rows by line breaks; "Null" for Null.
  static std::string Rows(const std::string& sql);
  static int64_t Run(const std::string& sql) { return repository::RepositoryDb().Execute(sql); }
  static int64_t CountRows(const std::string& table);
  // The event log so far.
  static std::string Log();
  // Closed first: a file that is open is not everywhere gone at once.
  static void RemoveLog();
  // Writes text to a file in the test's folder and gives its path.
  std::string WriteTemp(const std::string& name, const std::string& text);

  TempFolder folder_;
  ScriptedUi ui_;
};

}  // namespace tarnwick::testing
