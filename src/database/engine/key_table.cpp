// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/key_table.h"

#include <utility>

namespace tarnwick::jet {

namespace {

constexpr size_t kKeysBetweenLooks = 4096;

}  // namespace

KeyTable::KeyTable(Session& session, KeyList keys, int64_t number)
    : session_(session), keys_(std::move(keys)), name_("tw_keys_" + std::to_string(number)) {}

KeyTable::~KeyTable() {
  if (!session_.IsOpen()) return;
  try {
    session_.Engine().Run(("DROP TABLE IF EXISTS temp." + name_).c_str());
  } catch (const Error&) {
    // It stays until the connection is closed.
  }
}

std::string KeyTable::AsText() const {
  std::string text;
  for (size_t i = 0; i < keys_.Size(); i++) {
    if (i > 0) text += ',';
    text += std::to_string(keys_[i]);
  }
  return text;
}

void KeyTable::Fill() {
  Database& engine = session_.Engine();
  {
    std::shared_ptr<Statement> there =
        session_.Own("SELECT count(*) FROM sqlite_temp_schema WHERE name = ?1");
    StatementUse use(*there);
    there->BindText(1, name_);
    if (session_.StepRead(*there) && there->Int(0) == 1) return;
  }
  // What is stopped within a transaction would take all of it back.
  Database::Unwatched unwatched(engine);
  int64_t last = engine.LastRowId();
  engine.Run("SAVEPOINT tw_keys");
  try {
    engine.Run(("CREATE TABLE temp." + name_ + " (ID INTEGER PRIMARY KEY)").c_str());
    Statement add(engine, "INSERT OR IGNORE INTO temp." + name_ + " VALUES (?1)");
    for (size_t i = 0; i < keys_.Size(); i++) {
      if (i % kKeysBetweenLooks == 0 && engine.AsksToStop()) {
        throw Error(kStopped, "interrupted");
      }
      add.Bind(1, keys_[i]);
      add.Run();
    }
    engine.Run("RELEASE tw_keys");
  } catch (const Error& error) {
    if (engine.InTransaction()) engine.Run("ROLLBACK TO tw_keys; RELEASE tw_keys");
    engine.SetLastRowId(last);
    session_.AfterFailure(error);
    throw;
  }
  engine.SetLastRowId(last);
}

}  // namespace tarnwick::jet
