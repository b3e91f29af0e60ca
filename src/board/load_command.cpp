// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/load_command.h"

#include "core/guard.h"
#include "core/messages.h"
#include "maintenance/unfinished_restore.h"
#include "oe/import.h"
#include "outlook/import.h"
#include "outlook/store_discovery.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

using core::State;

constexpr const char* kOutlookExpress = "OutlookExpress";
constexpr const char* kOutlook = "MSOutlook";

// Which mailers a load reads.
struct Mailers {
  bool outlookExpress = false;
  bool outlook = false;
};

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

bool HasOutlookStores(const std::string& folder) {
  return !outlook::FindStores(folder).empty();
}

bool ProfileKnown() {
  return oe::ProfileKnown() || HasOutlookStores(repository::GetProfileFolder());
}

// Where no profile is known yet the person chooses one.
bool EnsureProfile() {
  if (ProfileKnown()) return true;
  auto folder = State().Ui->ChooseFolder(
      "Select the folder of the old Windows user (with NTUSER.DAT) or a folder with *.dbx or *.pst "
      "files");
  if (!folder || folder->empty()) return false;
  bool hasRegistry = platform::DetectProfile(*folder) != platform::ProfileKind::kNone;
  if (!hasRegistry && !HasOutlookStores(*folder)) {
    core::ShowMessage("There is no NTUSER.DAT, user.reg, *.dbx or *.pst file in " + *folder);
    return false;
  }
  repository::SetProfileFolder(*folder);
  return true;
}

// Asks whether a mailer is to be read at a first load; a no is kept as the option.
bool AskForMailer(const std::string& name, const char* option, bool& flag) {
  if (core::AskYesNo("Would you like to load email from " + name + " to Repository?")) return true;
  repository::SetOption(option, false);
  flag = false;
  return false;
}

// Whether Outlook Express is to be read, asking where it has to.
bool WantsOutlookExpress(const LoadOptions& options) {
  if (options.everyMailer) return true;
  if (!State().RepositoryIsEmpty) return State().UseOutlookExpress;
  return AskForMailer("Outlook Express", kOutlookExpress, State().UseOutlookExpress);
}

// Whether Outlook is to be read. REQUIRES: the profile is known. A first load asks only where the
// profile holds a store of Outlook's.
bool WantsOutlook(const LoadOptions& options) {
  bool hasStores = outlook::olInitialize();
  if (options.everyMailer) return hasStores;
  if (!State().RepositoryIsEmpty) return State().UseMSOutlook;
  return hasStores && AskForMailer("Outlook", kOutlook, State().UseMSOutlook);
}

// Reads a mailer with its messages committed in groups; true when it could be read.
template <typename Body>
bool ReadInGroups(Body read) {
  jet::CommitGroup group(repository::RepositoryDb());
  int64_t lostBefore = repository::RepositoryDb().LostUnits();
  if (!read()) return false;
  group.End();
  // What the engine had to take back (a full disk) was counted as stored and is not.
  int64_t lost = repository::RepositoryDb().LostUnits() - lostBefore;
  core::LoadCounts& counts = State().Counts;
  lost = lost < counts.stored ? lost : counts.stored;
  counts.stored -= lost;
  counts.unreadable += lost;
  return true;
}

bool ReadOutlookExpress() {
  return ReadInGroups([] {
    if (!oe::oeInitialize()) return false;
    if (State().RepositoryIsEmpty) oe::CollectMeAddresses();
    oe::ImportOutlookExpress();
    return true;
  });
}

// A first load takes every store, as "Load from all folders" does.
bool ReadOutlook() {
  return ReadInGroups([] { return outlook::olImportOutlook(State().RepositoryIsEmpty); });
}

// A disk that was pulled out meanwhile: what its missing files hold was neither found nor counted.
bool ProfileStands() {
  return core::GuardedRun("LoadFromMailer", [] {
    if (ProfileKnown()) return;
    throw Error(
        ErrorNumber::kFileNotFound,
        "File not found: " + repository::GetProfileFolder() +
            "\r\nMessages may be missing. What was read is kept; a further load takes the rest.");
  });
}

// Reads them in turn; true when each could be read. Neither keeps the other from being read.
bool ReadMailers(const Mailers& mailers) {
  bool done = true;
  if (mailers.outlookExpress) done = ReadOutlookExpress();
  bool stopped = State().ImportCancelFlag || State().StopFlag;
  if (mailers.outlook && !stopped) done = ReadOutlook() && done;
  return ProfileStands() && done;
}

void KeepMailer(const char* option, bool& flag) {
  repository::SetOption(option, true);
  flag = true;
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
    result.failed = maintenance::RefuseUnfinished();
    if (result.failed) return;
    if (options.full) State().RepositoryIsEmpty = true;
    bool first = State().RepositoryIsEmpty;
    if (!first && !options.everyMailer && !State().UseOutlookExpress && !State().UseMSOutlook) {
      core::ShowMessage("There isn't selected a mailer. Please, use menu bar\r\nTools!Options");
      return;
    }
    Mailers mailers;
    mailers.outlookExpress = WantsOutlookExpress(options);
    bool mayReadOutlook = options.everyMailer || State().UseMSOutlook || (first && ProfileKnown());
    if (!mailers.outlookExpress && !mayReadOutlook) return;
    if (!EnsureProfile()) {
      result.failed = true;
      return;
    }
    mailers.outlook = WantsOutlook(options);
    // A folder of Outlook's stores alone has nothing for Outlook Express.
    if (mailers.outlook && !oe::ProfileKnown()) mailers.outlookExpress = false;
    if (!mailers.outlookExpress && !mailers.outlook) return;
    {
      LoadScope scope(options.senders);
      result.failed = true;  // until the mailers have been read
      result.ran = true;
      result.failed = !ReadMailers(mailers);
      result.stopped = State().ImportCancelFlag || State().StopFlag;
      result.counts = State().Counts;
    }
    if (first && !options.everyMailer) {
      if (mailers.outlookExpress) KeepMailer(kOutlookExpress, State().UseOutlookExpress);
      if (mailers.outlook) KeepMailer(kOutlook, State().UseMSOutlook);
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
    if (maintenance::RefuseUnfinished()) return;
    // Asked for by name, the file is wanted whoever wrote it.
    LoadScope scope(SenderPolicy::kAcceptAll);
    if (!platform::FileExists(path)) {
      throw Error(ErrorNumber::kFileNotFound, "File not found: " + path);
    }
    intake::SourceDescriptor source{"Text File", "", "Text"};
    // A full load that the options asked for stays asked for.
    bool wasEmpty = repository::HasNoEmail();
    intake::dbxParseMessage(path, source, "", "");
    if (wasEmpty) State().RepositoryIsEmpty = repository::HasNoEmail();
  });
  if (intake::LastOutcome() == intake::Outcome::kAlreadyStored) {
    core::ShowMessage("This email is in the repository.");
  }
  return intake::LastOutcome();
}

}  // namespace tarnwick::board
