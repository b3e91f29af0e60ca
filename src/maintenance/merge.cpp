// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/merge.h"

#include <algorithm>
#include <cstdio>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "intake/header_parser.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "intake/stored_units.h"
#include "maintenance/database_file.h"
#include "maintenance/export_reader.h"
#include "maintenance/restore.h"
#include "maintenance/run.h"
#include "maintenance/unfinished_restore.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "repository/keys.h"
#include "repository/repository.h"

namespace tarnwick::maintenance {

namespace {

using core::RepeatedAnswer;
using core::State;
using intake::Outcome;
using repository::RepositoryDb;

constexpr const char* kRoutine = "twMakeMarge";

class Merge {
 public:
  Merge(const std::string& file, const MergeOptions& options)
      : scratch_(State().EmailFileFolder + "mergeMessage.msg"),
        duplicates_(options.duplicates),
        run_(0),
        reader_(file) {
    if (options.senders == UnknownSenders::kAccept) {
      State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
    }
    State().RefuseUnknownSenders = options.senders == UnknownSenders::kRefuse;
    State().EndTellsOfFullDisk = true;
  }

  ~Merge() { platform::TryToRemove(scratch_); }
  Merge(const Merge&) = delete;
  Merge& operator=(const Merge&) = delete;

  MergeResult Work() {
    MergeResult merged;
    int64_t total = reader_.Count();
    run_.Begin(total);
    merged.result = Result::kFailed;
    core::GuardedRun(kRoutine, [&] {
      jet::CommitGroup group(RepositoryDb());
      Result result = TakeAll(merged);
      group.End();  // what can't be flushed is not done
      merged.result = result;
    });
    // What the engine had to take back (a full disk) was counted and is not there.
    merged.imported -= static_cast<int64_t>(units_.TakeLost().size());
    merged.diskIsFull = State().DiskIsFull;
    merged.notReached = std::max<int64_t>(0, total - merged.imported - merged.ignored);
    if (merged.result == Result::kDone && merged.notReached > 0) merged.result = Result::kFailed;
    return merged;
  }

 private:
  Result TakeAll(MergeResult& merged) {
    while (auto message = reader_.Next()) {
      if (!run_.Look()) return Result::kStopped;
      int64_t errorsBefore = State().ReportedErrors;
      Outcome outcome = Take(*message);
      switch (outcome) {
        case Outcome::kStored:
          ++merged.imported;
          units_.EndStored(0);
          break;
        case Outcome::kAlreadyStored:
        case Outcome::kRefused:
        case Outcome::kIgnored:
          ++merged.ignored;
          units_.EndOther();
          break;
        case Outcome::kStopped:
          return Result::kStopped;
        default:
          return Result::kFailed;  // reported by the storing step
      }
      // Stored, but not with all that belongs to it.
      if (State().ReportedErrors > errorsBefore) return Result::kFailed;
      run_.Advance(1);
    }
    return Result::kDone;
  }

  Outcome Take(ExportedMessage& exported) {
    intake::MailMessage& message = exported.message;
    if (intake::IsEmailExist(message.MessageKey) && !KeepsDuplicate(message)) {
      return Outcome::kAlreadyStored;
    }
    reader_.WriteFile(exported.id, scratch_);
    intake::Ending ending;
    intake::dbSaveMesage(scratch_, message, message.Application, 0, message.Identity, &ending);
    return ending.outcome;
  }

  bool KeepsDuplicate(const intake::MailMessage& message) {
    if (duplicates_ == Duplicates::kAsk) {
      RepeatedAnswer answer = core::AskYesNoAll(
          message.Subject + " " + platform::FormatDate(message.SentTime, "ddddd") +
          "\r\nThis message is exist. Do you want to continue?");
      if (answer == RepeatedAnswer::kYesToAll) duplicates_ = Duplicates::kKeep;
      if (answer == RepeatedAnswer::kNoToAll) duplicates_ = Duplicates::kSkip;
      if (answer == RepeatedAnswer::kYes) return true;
    }
    return duplicates_ == Duplicates::kKeep;
  }

  std::string scratch_;
  Duplicates duplicates_;
  Run run_;
  intake::StoredUnits units_;
  ExportReader reader_;
};

// False when the merge ends here; the person has been told why.
bool IsMergeable(const std::string& file) {
  if (!platform::FileExists(file)) {
    core::ShowMessage("There is not file " + file);
    return false;
  }
  RefuseProgramFile(file);
  RefuseOpenFile(file);
  if (!repository::Unlock(file)) return false;
  RefuseNewerFile(file);
  if (RefuseUnfinished()) return false;
  switch (IsItFullBackup(file)) {
    case 1:
      return true;
    case 0:
      // The word "full" is how people know this message.
      core::ShowError("You should use full backup file in this function.");
      return false;
    default:
      core::ShowError("Invalid file format.");
      return false;
  }
}

void ShowSummary(const MergeResult& merged) {
  bool done = merged.result == Result::kDone;
  std::string text = done ? "Import is done. " : "Import is stopped. ";
  text += "\r\n" + std::to_string(merged.ignored) + " email(s) is ignored.";
  text += "\r\n" + std::to_string(merged.imported) + " email(s) is imported.";
  if (!done) text += "\r\n" + std::to_string(merged.notReached) + " email(s) is not reached.";
  if (merged.diskIsFull) text += std::string("\r\n") + core::kDiskIsFull;
  core::LogProgress(text);
  core::ShowMessage(text);
}

}  // namespace

MergeResult twMakeMarge(const std::string& file, const MergeOptions& options) {
  MergeResult merged;
  core::GuardedRun(kRoutine, [&] {
    std::string path = platform::AbsolutePath(file);
    merged.result = Result::kDeclined;
    if (!IsMergeable(file)) return;
    merged.result = Result::kFailed;
    bool isProtected = !repository::MarkOf(path).empty();
    core::LogProgress("Merge of " + path +
                      (isProtected ? ", which has a password of its own" : ""));
    merged = Merge(path, options).Work();
    repository::NoteWhetherEmpty();
    ShowSummary(merged);
  });
  return merged;
}

}  // namespace tarnwick::maintenance
