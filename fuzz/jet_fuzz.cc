// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the translator of Jet SQL. The input is taken for a statement: it is refused by the
// dialect, or the engine understands what was made of it. And it is taken for a value: joined into
// statements as the program joins values, it is a literal there, and comes back as it was.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/text.h"
#include "database/connection_impl.h"
#include "database/recordset.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "repository/schema.h"
#include "support/temp_folder.h"

namespace {

using namespace tarnwick;

void Demand(bool holds) {
  if (!holds) std::abort();
}

jet::Connection& Database() {
  static const testing::TempFolder folder;
  static jet::Connection connection;
  if (!connection.IsOpen()) {
    std::string file = folder.File("jet.twr");
    jet::CreateDatabaseFile(file, "password", repository::RepositoryTables(), 1);
    connection.SetProperty(jet::kDataSourceProperty, file);
    connection.SetProperty(jet::kPasswordProperty, "password");
    connection.Open();
    connection.Execute("INSERT INTO EmailOne (Subject) VALUES ('x')");
    connection.Execute("INSERT INTO Email (Subject, ReceivedTime) VALUES ('x', #1/5/2004#)");
    connection.BeginGroup();  // nothing is flushed
  }
  return connection;
}

// Columns, tables and functions may be unknown, and types may not fit. What the engine can't read
// should have been refused before: these are its words, not the dialect's, which may quote them.
void CheckRefusal(const Error& error, const std::string& text) {
  for (const char* misread : {"\": syntax error", "unrecognized token: \"", "incomplete input"}) {
    if (text.find(misread) != std::string::npos) continue;
    Demand(error.Description().find(misread) == std::string::npos);
  }
}

void RunStatement(const std::string& text) {
  jet::Connection::Impl& engine = Database().GetImpl();
  try {
    std::shared_ptr<jet::Program> program = engine.Translate(text);
    if (program->file) return;
    if (!program->isRead) {
      // Understood is enough: no input shall make the next one slow.
      engine.Ready(program->write, engine.Lifted().literals).Reset();
      return;
    }
    jet::Recordset rows;
    rows.Open(text, Database(), jet::CursorType::kKeyset);
    for (int i = 0; i < 5 && !rows.Eof(); ++i, rows.MoveNext()) {
      for (int k = 0; k < rows.FieldCount(); ++k) rows.Field(k);
    }
  } catch (const Error& error) {
    CheckRefusal(error, text);
  }
}

std::string ShapeOf(const std::string& sql) {
  jet::LiftedSql lifted;
  jet::Lift(sql, lifted);
  return lifted.shape;
}

jet::Value First(const std::string& sql) {
  jet::Recordset rows;
  rows.Open(sql, Database());
  return rows.Eof() ? jet::Value() : rows.Field(0);
}

void StayLiteral(const std::string& value) {
  std::string quoted = "'" + core::QuoteSql(value) + "'";
  std::string update = "UPDATE EmailOne SET Subject = ";
  Demand(ShapeOf(update + quoted + " WHERE ID=1") == ShapeOf(update + "'x' WHERE ID=1"));
  Database().Execute(update + quoted + " WHERE ID=1");
  Demand(First("SELECT Subject FROM EmailOne").AsText() == value);
  Demand(First("SELECT " + quoted + " AS V FROM EmailOne").AsText() == value);
  Demand(First("SELECT Count(*) AS C FROM EmailOne WHERE Subject = " + quoted).AsInt() == 1);
  Demand(First("SELECT Count(*) AS C FROM EmailOne WHERE ID = 2 AND Subject = " + quoted).AsInt() ==
         0);

  std::string safe = core::SanitizeFilterText(value);
  Demand(safe.find_first_of("'\"") == std::string::npos);
  Demand(platform::CountChars(safe) <= 255);
  std::string filter = "SELECT Count(*) AS C FROM Email WHERE InStr(Subject, '";
  Demand(ShapeOf(filter + safe + "') > 0") == ShapeOf(filter + "x') > 0"));
  First(filter + safe + "') > 0");
  First("SELECT Count(*) AS C FROM Email WHERE Subject Like '%" + safe + "%'");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 20000) return 0;
  std::string text(reinterpret_cast<const char*>(data), size);
  RunStatement(text);
  StayLiteral(platform::EnsureUtf8(text));
  return 0;
}
