// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// An open file with the statements of the database's own making, and the commits of a group
// (connection.h says what a group is). Internal to the database.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/engine/engine.h"
#include "database/engine/text_cache.h"
#include "platform/error.h"

namespace tarnwick::jet {

// What is kept beside the tables and written along with them, before the commits of a group.
class Follower {
 public:
  virtual ~Follower() = default;
  virtual bool IsFollowDue() const = 0;  // before a commit is
  // atEnd: of the group. Throws only where writes of others were lost, too.
  virtual void Follow(bool atEnd) = 0;
  // A transaction was rolled back.
  virtual void Forget() = 0;
};

class Session {
 public:
  // What makes a unit of writes whole: a log; a rollback journal, with each commit flushed; or
  // nothing that outlives the process, for a file that is of no use before all of it is there.
  enum class Journal { kLog, kRollback, kMemory };
  struct Use {
    bool readOnly = false;
    Journal journal = Journal::kLog;
  };
  // passwords is asked for the file's own, and later for those of others.
  void Open(const std::string& path, PasswordSource passwords, Use use);
  // Closing takes two steps. EndWriting commits what a group has collected, and gives the failure
  // of that; before Close all statements must be gone but those of Own. Whatever Close throws, the
  // file is closed. REQUIRES: IsOpen().
  std::optional<Error> EndWriting();
  void Close();
  bool IsOpen() const { return database_ != nullptr; }
  platform::Secret PasswordOf(const std::string& file) const { return passwords_(file); }

  Database& Engine();  // throws Error 3704 while closed
  // Counts up with everything written; what was read under another number may be out of date.
  uint64_t Version() const { return version_; }
  void CountVersion() { version_++; }

  // A statement of the database's own making, in engine SQL.
  std::shared_ptr<Statement> Own(std::string_view sql);
  // One step of a statement that reads.
  bool StepRead(Statement& statement);
  // Runs a bound statement that changes something; gives the rows it changed.
  int64_t RunWrite(Statement& statement);
  void AfterFailure(const Error& error);

  void BeginGroup();
  void EndUnit();
  void FlushGroup();
  void EndGroup();
  void TakeBackGroup(const Error& reason);
  // Connection::SetBulk. REQUIRES: !InGroup().
  void SetBulk(bool on);
  bool InGroup() const { return depth_ > 0; }
  bool HoldsWrites() const { return collecting_; }  // of a group, not committed yet
  int64_t Batch() const { return collecting_ ? batch_ : 0; }
  const std::vector<int64_t>& TakenBack() const { return takenBack_; }  // batches, ascending

  void SetFollower(Follower* follower) { follower_ = follower; }  // nullptr: none

 private:
  void CheckReadable();
  void Configure(Use use);
  void BeforeWrite();
  void LeaveLog();
  void SetFlushing();
  void Commit();

  std::unique_ptr<Database> database_;
  bool keepsLog_ = true;  // but in bulk
  bool isInLog_ = true;   // writes go through it now
  bool isBulk_ = false;
  PasswordSource passwords_;
  TextCache<Statement> statements_{100};
  Follower* follower_ = nullptr;
  uint64_t version_ = 1;

  // The group: how deep it is nested, whether a commit is collecting, since when, what it holds.
  int depth_ = 0;
  bool collecting_ = false;
  bool unsynced_ = false;
  int64_t collectingSince_ = 0;
  int64_t batch_ = 0;
  std::vector<int64_t> takenBack_;
  bool unitWrote_ = false;
  // A unit whose beginning was rolled back by the engine gets no end: its other writes fail alike.
  std::optional<Error> refusal_;
};

// Another file for the time of a scope. Statements on it must be gone at its end. One that is not
// written to is read as it lies.
inline constexpr char kOtherSchema[] = "other";
class OtherFile {
 public:
  OtherFile(Session& session, const std::string& path, bool isWritten);
  ~OtherFile();
  OtherFile(const OtherFile&) = delete;
  OtherFile& operator=(const OtherFile&) = delete;

 private:
  void BeginMaking();

  Session& session_;
};

}  // namespace tarnwick::jet
