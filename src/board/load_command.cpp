// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/load_command.h"

#include "core/guard.h"
#include "core/messages.h"
#include "oe/import.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

using core::State;

constexpr const char* kOutlookExpress = "OutlookExpress";

// A load's flags and silenced boxes, for as long as it lasts.
class LoadScope {
 public:
  explicit LoadScope(SenderPolicy senders) {
    core::BeginLoadState();
    if (senders == SenderPolicy::kAcceptAll) {
      State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
    }
    State().RefuseUnknownSenders = senders == SenderPolicy::kKnownOnly;
  }
  ~LoadScope() { core::EndLoadState(); }
  LoadScope(const LoadScope&) = delete;
  LoadScope& operator=(const LoadScope&) = delete;
};

// Where no profile is known yet the person chooses one.
bool EnsureProfile() {
  if (oe::ProfileKnown()) return true;
  auto folder = State().Ui->ChooseFolder(
      "Select the folder of the old Windows user (with NTUSER.DAT) or a folder with *.dbx files");
  if (!folder || folder->empty()) return false;
  if (platform::DetectProfile(*folder) == platform::ProfileKind::kNone) {
    core::ShowMessage("There is no NTUSER.DAT, user.reg or *.dbx file in " + *folder);
    return false;
  }
  repository::SetProfileFolder(*folder);
  return true;
}

// Whether Outlook Express is to be read, asking where the design asks.
bool WantsOutlookExpress(const LoadOptions& options) {
  if (options.everyMailer) return true;
  if (!State().RepositoryIsEmpty) return State().UseOutlookExpress;
  bool wanted = core::AskYesNo("Would you like to load email from Outlook Express to Repository?");
  if (!wanted) {
    repository::SetOption(kOutlookExpress, false);
    State().UseOutlookExpress = false;
  }
  return wanted;
}

// True when the stores could be read.
bool ReadOutlookExpress() {
  jet::CommitGroup group(repository::RepositoryDb());
  int64_t lostBefore = repository::RepositoryDb().LostUnits();
  if (!oe::oeInitialize()) return false;
  if (State().RepositoryIsEmpty) oe::CollectMeAddresses();
  oe::ImportOutlookExpress();
  group.End();
  // What the engine had to take back (a full disk) was counted as stored and is not.
  int64_t lost = repository::RepositoryDb().LostUnits() - lostBefore;
  core::LoadCounts& counts = State().Counts;
  lost = lost < counts.stored ? lost : counts.stored;
  counts.stored -= lost;
  counts.unreadable += lost;
  return true;
}

void Summarise(const LoadResult& result) {
  std::string summary = CountsSummary(result.counts);
  core::WriteLog((result.stopped ? "Load stopped: " : "Load: ") + summary);
  core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), summary);
}

}  // namespace

std::string CountsSummary(const core::LoadCounts& counts) {
  return "found " + std::to_string(counts.found) + ", stored " + std::to_string(counts.stored) +
         ", already stored " + std::to_string(counts.alreadyStored) + ", refused " +
         std::to_string(counts.refused) + ", ignored " + std::to_string(counts.ignored) +
         ", unreadable " + std::to_string(counts.unreadable) + ", not reached " +
         std::to_string(counts.notReached);
}

void StopLoad() {
  State().ImportCancelFlag = true;
}

LoadResult LoadFromMailer(const LoadOptions& options) {
  LoadResult result;
  core::GuardedRun("LoadFromMailer", [&] {
    if (options.full) State().RepositoryIsEmpty = true;
    bool first = State().RepositoryIsEmpty;
    if (!first && !options.everyMailer && !State().UseOutlookExpress && !State().UseMSOutlook) {
      core::ShowMessage("There isn't selected a mailer. Please, use menu bar\r\nTools!Options");
      return;
    }
    if (!WantsOutlookExpress(options)) return;
    if (!EnsureProfile()) {
      result.failed = true;
      return;
    }
    {
      LoadScope scope(options.senders);
      result.failed = true;  // until the mailer has been read
      result.ran = true;
      result.failed = !ReadOutlookExpress();
      result.stopped = State().ImportCancelFlag || State().StopFlag;
      result.counts = State().Counts;
    }
    if (first && !options.everyMailer) {
      repository::SetOption(kOutlookExpress, true);
      State().UseOutlookExpress = true;
    }
    if (!result.failed) repository::SetLastLoaded(platform::Now());
    State().RepositoryIsEmpty = repository::HasNoEmail();
    if (!State().NewMessageFlag && !result.failed) core::ShowMessage("There isn't new message.");
    Summarise(result);
  });
  return result;
}

intake::Outcome TakeTextFile(const std::string& path) {
  intake::SetLastOutcome(intake::Outcome::kUnreadable);
  core::GuardedRun("mnLoadTextFile", [&] {
    // Asked for by name, the file is wanted whoever wrote it.
    LoadScope scope(SenderPolicy::kAcceptAll);
    if (!platform::FileExists(path)) {
      throw Error(ErrorNumber::kFileNotFound, "File not found: " + path);
    }
    intake::SourceDescriptor source{"Text File", "", "Text"};
    intake::dbxParseMessage(path, source, "", "");
    State().RepositoryIsEmpty = repository::HasNoEmail();
  });
  if (intake::LastOutcome() == intake::Outcome::kAlreadyStored) {
    core::ShowMessage("This email is in the repository.");
  }
  return intake::LastOutcome();
}

}  // namespace tarnwick::board
