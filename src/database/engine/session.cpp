// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/session.h"

#include <cassert>
#include <utility>

#include "database/text/order.h"
#include "platform/clock.h"

namespace tarnwick::jet {

namespace {

constexpr int64_t kLongestCommitMilliseconds = 250;
constexpr int kNotADatabase = 26;

}  // namespace

Database& Session::Engine() {
  if (!database_) {
    throw Error(ErrorNumber::kObjectClosed, "Operation is not allowed when the object is closed.");
  }
  return *database_;
}

void Session::Open(const std::string& path, PasswordSource passwords, Use use) {
  if (database_) {
    throw Error(ErrorNumber::kObjectOpen, "Operation is not allowed when the object is open.");
  }
  database_ = std::make_unique<Database>(
      path, passwords(path).Bytes(),
      use.readOnly ? Database::Mode::kReadOnly : Database::Mode::kExisting);
  try {
    CheckReadable();
    Configure(use);
  } catch (...) {
    database_.reset();
    throw;
  }
  passwords_ = std::move(passwords);
  takenBack_.clear();
}

void Session::CheckReadable() {
  // The lock is taken with the first read and kept until the file is closed.
  database_->Run("PRAGMA locking_mode = EXCLUSIVE");
  database_->Number("SELECT count(*) FROM sqlite_schema");
  // The engine would take an empty file for a new database.
  if (database_->Number("PRAGMA page_count") == 0) {
    throw Error(kNotADatabase, "file is not a database");
  }
}

void Session::Configure(Use use) {
  keepsLog_ = use.journal == Journal::kLog;
  database_->Run(
      "PRAGMA cell_size_check = ON;"
      "PRAGMA cache_size = -16000;"
      "PRAGMA synchronous = FULL;");
  if (use.journal == Journal::kMemory) {
    database_->Run("PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY;");
  } else if (!database_->IsReadOnly() && use.journal == Journal::kRollback) {
    // One that was open in another way when the program was killed may have a log.
    database_->Run("PRAGMA journal_mode = DELETE");
  } else if (!database_->IsReadOnly()) {
    // The log exists while the file is open; at rest it is a single file that can be copied, and
    // read where nothing can be written.
    database_->Run("PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 1000;");
  }
  isInLog_ = keepsLog_;
  isBulk_ = false;
  if (!use.readOnly && database_->Number("PRAGMA application_id") != TextOrderVersion()) {
    database_->Run("BEGIN; REINDEX;");
    database_->Run(("PRAGMA application_id = " + std::to_string(TextOrderVersion())).c_str());
    database_->Run("COMMIT");
  }
}

std::optional<Error> Session::EndWriting() {
  assert(IsOpen());
  std::optional<Error> failure;
  try {
    if (collecting_) Commit();
  } catch (const Error& error) {
    failure = error;
  }
  depth_ = 0;
  refusal_.reset();
  return failure;
}

void Session::Close() {
  statements_.Clear();
  std::optional<Error> failure;
  try {
    if (!database_->IsReadOnly()) database_->Run("PRAGMA journal_mode = DELETE");
  } catch (const Error& error) {
    failure = error;
  }
  database_.reset();
  collecting_ = false;
  unsynced_ = false;
  if (failure) throw *failure;
}

std::shared_ptr<Statement> Session::Own(std::string_view sql) {
  if (std::shared_ptr<Statement> known = statements_.Find(sql)) return known;
  auto statement = std::make_shared<Statement>(Engine(), sql);
  statements_.Add(sql, statement);
  return statement;
}

int64_t Session::RunWrite(Statement& statement) {
  BeforeWrite();
  version_++;
  try {
    return database_->RunWrite(statement);
  } catch (const Error& error) {
    AfterFailure(error);
    throw;
  }
}

bool Session::StepRead(Statement& statement) {
  try {
    return statement.Step();
  } catch (const Error& error) {
    AfterFailure(error);
    throw;
  }
}

void Session::BeforeWrite() {
  if (isBulk_ && isInLog_) LeaveLog();
  if (depth_ == 0) return;
  if (refusal_) throw *refusal_;
  if (!collecting_) {
    Own("BEGIN")->Run();
    collecting_ = true;
    collectingSince_ = platform::TickMilliseconds();
    ++batch_;
  }
  unitWrote_ = true;
}

// The engine itself may have rolled the whole commit back.
void Session::AfterFailure(const Error& error) {
  if (!collecting_ || database_->InTransaction()) return;
  collecting_ = false;
  takenBack_.push_back(batch_);
  version_++;
  if (follower_ != nullptr) follower_->Forget();
  if (unitWrote_) refusal_ = error;
}

void Session::Commit() {
  try {
    Own("COMMIT")->Run();
  } catch (const Error& error) {
    if (database_->InTransaction()) Own("ROLLBACK")->Run();
    AfterFailure(error);
    throw;
  }
  collecting_ = false;
  unsynced_ = isInLog_;
  if (isInLog_) database_->BeginLogSync();
}

void Session::TakeBackGroup(const Error& reason) {
  if (!collecting_) return;
  if (database_->InTransaction()) Own("ROLLBACK")->Run();
  AfterFailure(reason);
}

void Session::BeginGroup() {
  Engine();
  if (depth_++ == 0) SetFlushing();
}

// Commits to the log in a group need no flush of their own: the log keeps them in order, and
// SyncLog at the group's end covers them all. The log grows larger, so that most of it has come to
// the disk by itself when it has to be waited for.
void Session::SetFlushing() {
  database_->Run(depth_ > 0 && isInLog_
                     ? "PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 2000;"
                     : "PRAGMA synchronous = FULL; PRAGMA wal_autocheckpoint = 1000;");
}

void Session::SetBulk(bool on) {
  assert(depth_ == 0);
  isBulk_ = on;
  // Otherwise the engine overwrites what is deleted, page by page.
  Engine().Run(on ? "PRAGMA secure_delete = OFF" : "PRAGMA secure_delete = ON");
  if (on || isInLog_ || !keepsLog_) return;
  database_->Run("PRAGMA journal_mode = WAL");
  isInLog_ = true;
}

// With the first write in bulk: what writes nothing leaves the file as it is. Where the log can't
// be left, as on a full disk, it is flushed as a journal would be.
void Session::LeaveLog() {
  if (database_->InTransaction()) return;
  isInLog_ = false;
  try {
    database_->Run("PRAGMA journal_mode = DELETE");
  } catch (const Error&) {
    // What is written next says so where it can't be written.
  }
  SetFlushing();
}

void Session::EndUnit() {
  if (depth_ == 0) return;
  refusal_.reset();
  unitWrote_ = false;
  bool due =
      collecting_ && platform::TickMilliseconds() - collectingSince_ >= kLongestCommitMilliseconds;
  bool followDue = collecting_ && follower_ != nullptr && follower_->IsFollowDue();
  if (follower_ != nullptr && (due || followDue)) follower_->Follow(false);
  if (due && collecting_) Commit();
}

void Session::FlushGroup() {
  if (depth_ == 0 || !database_) return;
  // A refusal lasts until the unit's end: the rest of a unit whose beginning is gone would hang on
  // a key that the next row is given.
  unitWrote_ = false;
  if (collecting_) Commit();
  if (unsynced_) database_->SyncLog();
  unsynced_ = false;
}

void Session::EndGroup() {
  if (depth_ == 0 || !database_) return;
  if (--depth_ > 0) return;
  depth_ = 1;
  std::optional<Error> failure;
  try {
    if (follower_ != nullptr) follower_->Follow(true);
    FlushGroup();
  } catch (const Error& error) {
    failure = error;
  }
  depth_ = 0;
  refusal_.reset();
  SetFlushing();
  if (failure) throw *failure;
}

OtherFile::OtherFile(Session& session, const std::string& path, bool isWritten)
    : session_(session) {
  // A file can't be attached within a commit.
  session.FlushGroup();
  Database& engine = session.Engine();
  engine.Attach(path, session.PasswordOf(path).Bytes(), kOtherSchema, isWritten);
  try {
    if (engine.Number("PRAGMA other.page_count") == 0) {
      throw Error(kNotADatabase, "file is not a database");
    }
    if (isWritten) BeginMaking();
  } catch (...) {
    engine.Detach(kOtherSchema);
    throw;
  }
}

// A file that is being made is of no use before all of it is there, and is flushed then. Its
// indexes are those of the template: of another text order, perhaps, and nearly empty.
void OtherFile::BeginMaking() {
  Database& engine = session_.Engine();
  engine.Run(
      "PRAGMA other.synchronous = OFF; PRAGMA other.journal_mode = MEMORY;"
      "PRAGMA other.cache_size = -16000;");
  if (engine.Number("PRAGMA other.application_id") == TextOrderVersion()) return;
  std::string sql;
  {
    Statement tables(engine, "SELECT quote(name) FROM other.sqlite_schema WHERE type = 'table'");
    while (tables.Step()) sql += "REINDEX other." + std::string(tables.Text(0)) + ";";
  }
  sql += "PRAGMA other.application_id = " + std::to_string(TextOrderVersion());
  engine.Run(sql.c_str());
}

OtherFile::~OtherFile() {
  try {
    session_.Engine().Detach(kOtherSchema);
  } catch (const Error&) {
    // Left attached; the next file of this kind will say so.
  }
}

}  // namespace tarnwick::jet
