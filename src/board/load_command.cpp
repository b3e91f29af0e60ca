// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/load_command.h"

#include <algorithm>

#include "board/load_log.h"
#include "core/guard.h"
#include "core/messages.h"
#include "intake/stored_units.h"
#include "intake/text_reader.h"
#include "maintenance/unfinished_restore.h"
#include "outlook/import.h"
#include "outlook/msg_file.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"
#include "sources/import.h"
#include "sources/letter_files.h"

namespace tarnwick::board {

namespace {

using core::State;

using Chosen = std::vector<intake::Source*>;

// A load's flags and silenced boxes, for as long as it lasts.
class LoadScope {
 public:
  explicit LoadScope(SenderPolicy senders) {
    core::BeginLoadState();
    State().EndTellsOfFullDisk = true;
    if (senders == SenderPolicy::kAcceptAll) {
      State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
    }
    State().RefuseUnknownSenders = senders == SenderPolicy::kKnownOnly;
  }
  ~LoadScope() { core::EndLoadState(); }
  LoadScope(const LoadScope&) = delete;
  LoadScope& operator=(const LoadScope&) = delete;
};

bool IsProfile(const Sources& sources, const std::string& folder) {
  return std::any_of(sources.begin(), sources.end(),
                     [&](const auto& source) { return source->IsIn(folder); });
}

// "*.dbx or *.pst"
std::string FilesOf(const Sources& sources) {
  std::string text;
  for (const auto& source : sources) {
    if (!text.empty()) text += &source == &sources.back() ? " or " : ", ";
    text += source->Files();
  }
  return text;
}

// Where no profile is known yet the person chooses one.
bool EnsureProfile(const Sources& sources) {
  if (IsProfile(sources, repository::GetProfileFolder())) return true;
  auto folder = State().Ui->ChooseFolder(
      "Select the folder of the old Windows user (with NTUSER.DAT) or a folder with " +
      FilesOf(sources) + " files");
  if (!folder || folder->empty()) {
    core::ShowMessage("No folder was chosen: nothing is loaded.");
    return false;
  }
  if (!IsProfile(sources, *folder)) {
    core::ShowMessage("There is no NTUSER.DAT, user.reg, " + FilesOf(sources) + " file in " +
                      *folder);
    return false;
  }
  repository::SetProfileFolder(*folder);
  return true;
}

// Asks whether a mailer is to be read at a first load, and keeps a no as the option.
bool AskForMailer(const intake::Source& source) {
  if (core::AskYesNo("Would you like to load email from " + source.Name() + " to Repository?")) {
    return true;
  }
  repository::SetOption(source.Option(), false);
  return false;
}

// Those that are to be read. REQUIRES: the profile is known.
Chosen Choose(const Sources& sources, const LoadOptions& options) {
  bool asks = State().RepositoryIsEmpty && !options.everyMailer;
  const std::string profile = repository::GetProfileFolder();
  Chosen chosen;
  for (const auto& source : sources) {
    if (!options.everyMailer && !asks && !repository::GetOption(source->Option())) continue;
    if (!source->IsIn(profile) || (asks && !AskForMailer(*source))) continue;
    chosen.push_back(source.get());
  }
  return chosen;
}

bool AnyIsUsed(const Sources& sources) {
  return std::any_of(sources.begin(), sources.end(),
                     [](const auto& source) { return repository::GetOption(source->Option()); });
}

// A disk that was pulled out meanwhile: what its missing files hold was neither found nor counted.
bool ProfileStands(const Sources& sources) {
  return core::GuardedRun("LoadFromMailer", [&] {
    const std::string profile = repository::GetProfileFolder();
    if (IsProfile(sources, profile)) return;
    throw Error(
        ErrorNumber::kFileNotFound,
        "File not found: " + profile +
            "\r\nMessages may be missing. What was read is kept; a further load takes the rest.");
  });
}

// Has every source announce what it holds, then reads them; true when each could be read. None
// keeps another from being read.
bool ReadEach(const Chosen& chosen, bool whole) {
  bool done = true;
  Chosen announced;
  for (intake::Source* source : chosen) {
    bool isThere = source->Announce(whole);
    if (isThere) announced.push_back(source);
    done = done && isThere;
  }
  for (intake::Source* source : announced) {
    if (core::IsLoadStopped()) break;
    done = source->Read(whole) && done;
  }
  return done;
}

// The same with the messages committed in groups and accounted for; false also where the load could
// not go on.
bool ReadChosen(const Chosen& chosen) {
  // A repository without a message is read into as at a first load, whatever was asked.
  bool whole = State().RepositoryIsEmpty || repository::HasNoEmail();
  intake::LoadAccount& account = intake::Account();
  account.Open();
  bool done = core::Guarded("LoadFromMailer", false, [&] {
    jet::BulkScope bulk(repository::RepositoryDb());
    jet::CommitGroup group(repository::RepositoryDb());
    bool isRead = ReadEach(chosen, whole);
    group.End();
    return isRead;
  });
  account.Close();
  return done && !account.HasLost() && !State().DiskIsFull;
}

void KeepOptions(const Chosen& chosen) {
  for (const intake::Source* source : chosen) repository::SetOption(source->Option(), true);
}

// However the load ended, and whatever was answered.
void ClearFullLoad() {
  State().RepositoryIsEmpty = State().FullLoadAsked = false;
}

// The account of the load: at the end of the log, in front of the accounts of the last loads.
void Summarise(const LoadResult& result) {
  std::string summary = CountsSummary(result.counts);
  std::string text = result.stopped       ? "Load stopped: "
                     : State().DiskIsFull ? "Load ended by a full disk: "
                     : result.failed      ? "Load failed: "
                                          : "Load: ";
  text += summary + "\r\nFrom = " + repository::GetProfileFolder();
  std::string reasons = intake::Account().Text();
  if (!reasons.empty()) text += "\r\n" + reasons;
  core::WriteLog(text);
  KeepInLoadLog(text);
  core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), summary);
}

void RunLoad(const Sources& sources, const Chosen& chosen, const LoadOptions& options,
             LoadResult& result) {
  bool first = State().RepositoryIsEmpty;
  LoadScope scope(options.senders);
  ReserveLoadLog();
  result.ran = true;
  bool done = ReadChosen(chosen);
  result.failed = !ProfileStands(sources) || !done;
  result.stopped = State().ImportCancelFlag || State().StopFlag;
  result.counts = State().Counts;
  core::GuardedRun("LoadFromMailer", [&] {
    if (first && !options.everyMailer) KeepOptions(chosen);
    if (!result.failed) repository::SetLastLoaded(platform::Now());
  });
  Summarise(result);
}

// One message file, within a load's scope.
intake::Outcome TakeFile(const std::string& path, const intake::ReadingRules& rules,
                         intake::TextReader& texts) {
  using intake::Outcome;
  intake::Ending ending{Outcome::kUnreadable, {}};
  core::GuardedRun("mnLoadTextFile", [&] {
    if (!platform::FileExists(path)) {
      throw Error(ErrorNumber::kFileNotFound, "File not found: " + path);
    }
    intake::TakeInMessage(path, {"Text File", "", "Text"}, "",
                          {.key = "", .rules = rules, .facts = {}, .texts = &texts}, ending);
  });
  if (ending.outcome == Outcome::kAlreadyStored) {
    core::ShowMessage("This email is in the repository.");
  }
  return ending.outcome;
}

}  // namespace

void TellLoadEnd(bool hasNew) {
  if (State().DiskIsFull) {
    core::ShowMessage(core::kDiskIsFull);
  } else if (!hasNew) {
    core::ShowMessage("There isn't new message.");
  }
}

void StopLoad() {
  State().ImportCancelFlag = true;
}

LoadResult LoadFromMailer(const LoadOptions& options) {
  return LoadFromMailer(options,
                        EverySource(options.rules ? *options.rules : intake::StoredRules()));
}

LoadResult LoadFromMailer(const LoadOptions& options, const Sources& sources) {
  LoadResult result;
  core::GuardedRun("LoadFromMailer", [&] {
    result.failed = maintenance::RefuseUnfinished();
    if (result.failed) return;
    if (options.full) State().RepositoryIsEmpty = State().FullLoadAsked = true;
    if (!State().RepositoryIsEmpty && !options.everyMailer && !AnyIsUsed(sources)) {
      core::ShowMessage("There isn't selected a mailer. Please, use menu bar\r\nTools!Options");
      return;
    }
    result.failed = true;  // until the sources have been read
    if (!EnsureProfile(sources)) return;
    State().NewMessageFlag = State().DiskIsFull = false;
    Chosen chosen = Choose(sources, options);
    if (chosen.empty()) {
      result.failed = false;
    } else {
      RunLoad(sources, chosen, options, result);
    }
    ClearFullLoad();
    if (!options.isPart) TellLoadEnd(State().NewMessageFlag);
  });
  return result;
}

namespace {

// The letters of mailboxes, accounted for as those of a load are.
void TakeMailboxes(const std::vector<sources::Mailbox>& mailboxes, TakeResult& result) {
  auto source = sources::MakeSource(outlook::ReadsMsgFiles(), intake::StoredRules(), mailboxes);
  ReadChosen({source.get()});
  const core::LoadCounts& counts = State().Counts;
  result.stored += counts.stored;
  result.alreadyStored += counts.alreadyStored;
  result.unreadable += counts.unreadable + counts.refused + counts.ignored;
  result.notReached += counts.notReached;
  std::string text = "Taken: " + CountsSummary(counts);
  std::string reasons = intake::Account().Text();
  if (!reasons.empty()) text += "\r\n" + reasons;
  core::WriteLog(text);
  KeepInLoadLog(text);
}

// Message files, one after the other.
void TakeFiles(const std::vector<std::string>& paths, TakeResult& result) {
  std::vector<bool> taken(paths.size());
  intake::StoredUnits units;
  const intake::ReadingRules rules = intake::StoredRules();
  intake::TextReader texts;
  core::GuardedRun("mnLoadTextFile", [&] {
    jet::CommitGroup group(repository::RepositoryDb());
    for (size_t i = 0, ahead = 0; i < paths.size() && !core::IsLoadStopped(); ++i) {
      ahead = std::max(ahead, i);
      while (ahead < paths.size() && texts.ReadAhead(paths[ahead], rules, {})) ++ahead;
      intake::Outcome outcome = TakeFile(paths[i], rules, texts);
      taken[i] = outcome == intake::Outcome::kStored || outcome == intake::Outcome::kAlreadyStored;
      if (outcome == intake::Outcome::kStored) {
        ++result.stored;
        units.EndStored(static_cast<int64_t>(i));
        continue;
      }
      if (taken[i]) {
        ++result.alreadyStored;
      } else if (!State().DiskIsFull) {
        ++result.unreadable;
      }
      units.EndOther();
    }
    group.End();
  });
  for (int64_t i : units.TakeLost()) {
    taken[static_cast<size_t>(i)] = false;
    --result.stored;
  }
  result.notReached =
      static_cast<int64_t>(paths.size()) - result.stored - result.alreadyStored - result.unreadable;
  for (size_t i = 0; i < paths.size(); ++i) {
    if (!taken[i]) result.notTaken.push_back(paths[i]);
  }
}

// A message file is taken as one, whatever it begins with, unless it bears the name of another
// kind.
bool IsMessageFile(const std::string& path, const std::vector<sources::Mailbox>& mailboxes) {
  using sources::LetterFileKind;
  LetterFileKind kind = sources::KindOfLetterFile(platform::FileNameOf(path));
  return kind == LetterFileKind::kText || (mailboxes.empty() && !platform::FolderExists(path));
}

}  // namespace

TakeResult TakeTextFiles(const std::vector<std::string>& paths) {
  TakeResult result;
  if (maintenance::RefuseUnfinished()) {
    result.notReached = static_cast<int64_t>(paths.size());
    result.notTaken = paths;
    return result;
  }
  // Asked for by name, a file is wanted whoever wrote it.
  LoadScope scope(SenderPolicy::kAcceptAll);
  std::vector<std::string> files;
  std::vector<sources::Mailbox> mailboxes;
  for (const std::string& path : paths) {
    bool isFolder = platform::FolderExists(path);
    std::vector<sources::Mailbox> found =
        isFolder ? sources::FindMailboxes(path, [] { return !core::IsLoadStopped(); }).mailboxes
                 : sources::MailboxAt(path);
    if (IsMessageFile(path, found)) {
      files.push_back(path);
    } else if (found.empty()) {
      result.notTaken.push_back(path);
    }
    if (!IsMessageFile(path, found)) mailboxes.insert(mailboxes.end(), found.begin(), found.end());
  }
  TakeFiles(files, result);
  if (!mailboxes.empty() && !State().DiskIsFull) TakeMailboxes(mailboxes, result);
  // A full load that the options asked for stays asked for.
  repository::NoteWhetherEmpty();
  if (State().DiskIsFull) core::ShowMessage(core::kDiskIsFull);
  return result;
}

}  // namespace tarnwick::board
