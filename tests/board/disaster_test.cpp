// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Everything that writes, on a disk that fails and in a process that is killed, at one call after
// the other. Afterwards the repository opens, the engine finds it sound, and every message, contact
// and setting is as it was before or as an undisturbed run leaves it; a further run completes it.
// TARNWICK_TRIALS sets how many trials there are of each kind (bench/disasters.sh: many),
// TARNWICK_OPERATION of which operation alone.

#include <cstdio>
#include <random>

#include "board/email_list.h"
#include "board/list_query.h"
#include "board/load_command.h"
#include "board/message_commands.h"
#include "board/message_viewer.h"
#include "database/connection_impl.h"
#include "disaster_state.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "maintenance/backup.h"
#include "maintenance/check.h"
#include "maintenance/export.h"
#include "maintenance/merge.h"
#include "maintenance/protect.h"
#include "maintenance/restore.h"
#include "maintenance/unfinished_restore.h"
#include "repository/file_key.h"
#include "repository/keys.h"
#include "repository/schema.h"
#include "samples/profile_builder.h"
#include "support/faults.h"
#include "support/faulty_disk.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::board {
namespace {

using maintenance::Result;
using testing::DiskFault;
using testing::FaultyDisk;

constexpr char kOlder[] = "an older backup";
constexpr char kPassword[] = "a password of Ann's own";
constexpr char kNextPassword[] = "another one, a year later";

struct Operation {
  const char* name;
  int questions;              // each answered with yes
  std::function<bool()> run;  // true: it says that it has done its work
  const char* input = "";     // what it reads
  bool writesIndex = false;   // begins with a text index that waits for all rows
  bool isProtected = false;   // begins with a repository that has kPassword
};

// What came of the faults of one kind in one operation.
struct Tally {
  int64_t withoutEffect = 0;  // done all the same
  int64_t reported = 0;
  int64_t incomplete = 0;  // messages left by half and reported
};

class Disaster : public testing::ProgramFixture {
 protected:
  Disaster() {
    repository::SetKeyCostOverride({{.passes = 1, .memoryPower = 13}});
    testing::StartOnFaultyDisk();
    MakeFiles();
  }

  // An export to merge, a backup to restore, a profile to load, and a repository to begin with.
  void MakeFiles() {
    testing::StoreVariedMessages(20, 5);
    // Of empty files.
    Run("DELETE * FROM Email WHERE Subject Like '%\"13\"%' OR Subject Like '%\"22\"%'");
    testing::ExportAll(folder_.File("merge.twb"));
    EXPECT_EQ(maintenance::MakeBackup(folder_.File("restore.twb")), Result::kDone);
    EXPECT_TRUE(repository::ClearRepository());
    testing::StoreVariedMessages(4);
    testing::StoreVariedMessages(4, 104);
    StorePages();
    testing::StoreRulesAndMarks();
    repository::SetParameter("Filter", "ann", repository::kTextColumn, std::string("before"));
    jet::Recordset first;
    first.Open("SELECT TOP 4 ID FROM Email ORDER BY ID", RepositoryDb());
    for (; !first.Eof(); first.MoveNext()) selected_.push_back({first.Field(0).AsInt(), "a"});
    first.Close();

    samples::MessageStoreBuilder inbox;
    samples::MessageStoreBuilder sent;
    for (int i = 0; i < 25; ++i) {
      samples::IndexedMessage message;
      message.date = message.date.AddSeconds(i * 1000);
      message.messageId = "<load" + std::to_string(i) + "@example.org>";
      message.text = "From: ann" + std::to_string(i % 5) +
                     "@example.org\r\nTo: b@x.test, c@x.test" +
                     "\r\nCc: d@x.test\r\nSubject: letter " + std::to_string(i) +
                     "\r\nMessage-ID: " + message.messageId + "\r\n\r\nText\r\n" +
                     std::string(i % 6 == 3 ? 50'000 : 300, 'x') + "\r\n";
      message.blockSize = 4096;
      (i % 8 == 7 ? sent : inbox).AddMessage(message);
    }
    inbox.Finish();
    sent.Finish();
    samples::ProfileBuilder profile(folder_.File("profile/"));
    samples::ProfileBuilder::WriteStore(profile.AddIdentity("ann"),
                                        samples::StandardFolders(inbox.Bytes(), sent.Bytes()));
    profile.WriteHive();
    repository::SetProfileFolder(folder_.File("profile/"));
    repository::DisconnectRepository();
    for (const char* file : {repository::kRepositoryFile, repository::kParameterFile}) {
      kept_[file] = platform::ReadFile(folder_.File(file));
    }
    beforeNames_ = platform::ListFiles(folder_.Path());
    EXPECT_TRUE(repository::OpenRepository(false));
    RepositoryDb().GetImpl().session.Engine().Run(
        "DELETE FROM tw_search_part; UPDATE tw_search_state SET Done = 0");
    repository::DisconnectRepository();
    unindexed_ = platform::ReadFile(folder_.File(repository::kRepositoryFile));
    platform::WriteFile(folder_.File(repository::kRepositoryFile),
                        kept_[repository::kRepositoryFile]);
    EXPECT_TRUE(repository::OpenRepository(false));
    EXPECT_EQ(maintenance::ProtectRepository(platform::Secret(kPassword)), Result::kDone);
    repository::DisconnectRepository();
    protected_ = platform::ReadFile(folder_.File(repository::kRepositoryFile));
  }

  // As many as a segment of the text index needs.
  static void StorePages() {
    jet::CommitGroup group(RepositoryDb());
    for (int i = 0; i < 280; ++i) {
      intake::MailMessage message;
      message.MessageKey = "<page" + std::to_string(i) + "@example.org>";
      message.Subject = "page";
      message.Body = "page " + std::to_string(i) + " of a long letter\r\n";
      message.Direction = "In";
      message.SentTime = message.ReceivedTime = DateTime::FromDate(2004, 2, 1).AddSeconds(i);
      platform::WriteFile(core::State().TempMessageFile, message.Body);
      intake::dbSaveMesage(core::State().TempMessageFile, message, "Outlook Express", 1, "Ann");
      RepositoryDb().EndUnit();
    }
    group.End();
    platform::RemoveFile(core::State().TempMessageFile);
  }

  // All of them, or the one that TARNWICK_OPERATION names.
  std::vector<Operation> Operations() {
    std::vector<Operation> operations = EveryOperation();
    const char* only = std::getenv("TARNWICK_OPERATION");
    std::erase_if(operations, [only](const Operation& operation) {
      return only != nullptr && std::string(operation.name) != only;
    });
    return operations;
  }

  std::vector<Operation> EveryOperation() {
    return {
        {"load", 0,
         [] {
           LoadOptions options;
           options.everyMailer = true;
           options.senders = SenderPolicy::kAcceptAll;
           int64_t errors = core::State().ReportedErrors;
           LoadResult result = LoadFromMailer(options);
           return result.ran && !result.failed && core::State().ReportedErrors == errors &&
                  result.counts.stored + result.counts.alreadyStored == result.counts.found;
         },
         "profile", true},
        {"merge", 0,
         [this] {
           return maintenance::twMakeMarge(
                      folder_.File("merge.twb"),
                      {maintenance::Duplicates::kSkip, maintenance::UnknownSenders::kAccept})
                      .result == Result::kDone;
         },
         "merge.twb"},
        {"restore", 2,
         [this] {
           return maintenance::RestoreBackup(folder_.File("restore.twb")) == Result::kDone;
         },
         "restore.twb"},
        {"backup", 0,
         [this] { return maintenance::MakeBackup(folder_.File("new.twb")) == Result::kDone; }},
        {"export", 0,
         [this] {
           jet::Recordset list;
           list.Open("SELECT ID, ReceivedTime FROM Email", RepositoryDb());
           return maintenance::ExportEmails(folder_.File("new.twb"), list) == Result::kDone;
         }},
        {"search", 0,
         [] {
           Board().Filter = EveryMessage();
           Board().Filter.MailText = "page 27";
           bool isListed = OpenEmailList(BuildListWhere(Board().Filter));
           int64_t count = isListed ? Board().ListRecordset.RecordCount() : 0;
           ResetBoard();
           return isListed && count == 11;
         },
         "", true},
        {"delete", 1, [this] { return DeleteMessages(selected_); }},
        {"mark", 0, [this] { return ToggleActive(selected_); }},
        {"move HTML", 1, [] { return MoveHtmlToBody(); }},
        {"settings", 0,
         [] {
           int64_t errors = core::State().ReportedErrors;
           repository::SetParameter("Filter", "ann", repository::kTextColumn, std::string("after"));
           repository::SetLastLoaded(DateTime::FromDate(2020, 6, 15));
           return core::State().ReportedErrors == errors;
         }},
        {"protect", 0,
         [] {
           return maintenance::ProtectRepository(platform::Secret(kPassword)) == Result::kDone;
         }},
        {"change", 0,
         [] {
           return maintenance::ProtectRepository(platform::Secret(kNextPassword)) == Result::kDone;
         },
         "", false, true},
        {"unprotect", 1, [] { return maintenance::UnprotectRepository() == Result::kDone; }, "",
         false, true},
    };
  }

  // The beginning of every trial: the files as they were, the program just started.
  void Begin(const Operation& operation) {
    for (const std::string& name : platform::ListFiles(folder_.Path())) {
      if (std::find(beforeNames_.begin(), beforeNames_.end(), name) == beforeNames_.end()) {
        platform::RemoveFile(folder_.File(name));
      }
    }
    for (const auto& [name, bytes] : kept_) platform::WriteFile(folder_.File(name), bytes);
    if (std::string(operation.name) == "backup") WriteTemp("new.twb", kOlder);
    if (operation.writesIndex) {
      platform::WriteFile(folder_.File(repository::kRepositoryFile), unindexed_);
    }
    if (operation.isProtected) {
      platform::WriteFile(folder_.File(repository::kRepositoryFile), protected_);
    }
    core::State().StopFlag = core::State().ImportCancelFlag = false;
    repository::ForgetKeys();
    Again(operation);
  }

  void Again(const Operation& operation) {
    bool replaces = platform::FileExists(folder_.File("new.twb"));
    ui_.yesNo.assign(static_cast<size_t>(operation.questions) + (replaces ? 1 : 0), true);
    ui_.folders = {std::nullopt};  // asked where the setting can't be read
    ui_.passwords.clear();
    if (!repository::MarkOf(folder_.File(repository::kRepositoryFile)).empty()) {
      ui_.passwords = {kPassword, kNextPassword};
    }
    ui_.declinesOthers = true;  // what is asked where a store looks damaged
    ui_.shown.clear();
  }

  void ForgetAnswers() {
    ui_.yesNo.clear();
    ui_.passwords.clear();
    ui_.folders.clear();
  }

  // What the text index finds is what reading every text finds.
  static void ExpectExactSearch() {
    for (const char* text : {"page 27", "long letter", "Body of 2", "it''s", "xxxx"}) {
      std::string like = std::string(" Like '%") + text + "%'";
      State found[2];
      for (const char* column : {"Body", "(Body & '')"}) {
        jet::Recordset rows;
        rows.Open("SELECT EntryID FROM Email WHERE " + (column + like), RepositoryDb());
        for (; !rows.Eof(); rows.MoveNext()) found[column[0] == '('][rows.Field(0).AsText()] = "";
      }
      EXPECT_TRUE(found[0] == found[1]) << text;
    }
  }

  struct Undisturbed {
    State before;
    State after;
    std::map<DiskFault, int64_t> calls;
  };

  Undisturbed Measure(const Operation& operation) {
    Undisturbed run;
    for (DiskFault kind : {DiskFault::kFull, DiskFault::kRead, DiskFault::kSync}) {
      Begin(operation);
      FaultyDisk disk(kind, INT64_MAX);
      EXPECT_TRUE(repository::OpenRepository(false));
      if (kind == DiskFault::kFull) run.before = ReadOpenRepository();
      int64_t began = disk.Calls();
      EXPECT_TRUE(operation.run()) << operation.name;
      run.after = ReadOpenRepository();
      repository::DisconnectRepository();
      run.calls[kind] = disk.Calls() - began;
    }
    ForgetAnswers();
    bool changes =
        std::string("backup export search protect unprotect change").find(operation.name) ==
        std::string::npos;
    EXPECT_EQ(run.before != run.after, changes) << operation.name;
    run.calls[DiskFault::kShortWrite] = run.calls[DiskFault::kKill] = run.calls[DiskFault::kFull];
    return run;
  }

  // Calls to fail at: the first ones, then spread over the rest.
  static std::vector<int64_t> Places(int64_t calls, int64_t trials, uint32_t seed) {
    std::vector<int64_t> places;
    if (calls <= trials) {
      for (int64_t i = 0; i < calls; ++i) places.push_back(i);
      return places;
    }
    std::mt19937_64 random(seed);
    for (int64_t i = 0; i < trials; ++i) {
      int64_t begin = calls * i / trials;
      int64_t end = calls * (i + 1) / trials;
      places.push_back(begin + static_cast<int64_t>(random() % static_cast<uint64_t>(end - begin)));
    }
    return places;
  }

  static int64_t Trials(int64_t standard) {
    const char* text = std::getenv("TARNWICK_TRIALS");
    return text != nullptr ? std::atoll(text) : standard;
  }

  // A restore that did not come to its end: all as before or as after, or the copy holds what was.
  void ExpectRestoredOrKept(const State& now, const Undisturbed& run) {
    if (Odd(now, run.before, run.after).empty() && (now == run.before || now == run.after)) return;
    ASSERT_TRUE(platform::FileExists(copy_));
    State kept = ReadSavedFile(copy_);
    for (const auto& [key, text] : run.before) {
      if (key.rfind("Setting ", 0) != 0) {
        EXPECT_EQ(kept[key], text) << key;
      }
    }
  }

  // The older file is there until the whole new one is.
  void ExpectBackupWhole(const Operation& operation, const State& before, bool done) {
    bool isThere = platform::FileExists(folder_.File("new.twb"));
    EXPECT_TRUE(isThere || std::string(operation.name) != "backup");
    if (!isThere) return;
    if (!done && platform::ReadFile(folder_.File("new.twb")) == kOlder) return;
    State saved = ReadSavedFile(folder_.File("new.twb"));
    for (const auto& [key, text] : saved) EXPECT_EQ(before.at(key), text) << key;
  }

  // Runs the operation with a fault, and looks at what it leaves. True when the fault happened.
  bool Outlive(const Operation& operation, const Undisturbed& run,
               const std::function<bool(const std::function<void()>&)>& withFault) {
    Begin(operation);
    EXPECT_TRUE(repository::OpenRepository(false));
    size_t logged = Log().size();
    bool done = false;
    size_t told = 0;
    bool happened = withFault([&] {
      done = operation.run();
      told = ui_.Shown("box").size() + ui_.Shown("error").size();
      repository::DisconnectRepository();
    });
    ForgetAnswers();
    repository::DisconnectRepository();
    EXPECT_TRUE(repository::OpenRepository(false));
    EXPECT_EQ(RepositoryDb().IntegrityCheck(), "");
    if (happened) ++(done ? tally_.withoutEffect : tally_.reported);
    State now = ReadOpenRepository();
    ExpectExactSearch();
    EXPECT_THAT(platform::ListFiles(core::State().EmailFileFolder), IsEmpty());
    for (const std::string& name : platform::ListFiles(folder_.Path())) {
      EXPECT_EQ(name.find(".unfinished"), std::string::npos) << name;
    }
    if (done) {
      EXPECT_TRUE(now == run.after) << "said to be done";
    } else {
      EXPECT_GT(told, 0U) << "failed silently";
      EXPECT_THAT(Log().substr(logged), HasSubstr("rror"));
    }
    if (std::string(operation.name) == "restore") {
      EXPECT_EQ(told, 1U);
      ExpectRestoredOrKept(now, run);
    } else {
      for (const std::string& key : Odd(now, run.before, run.after)) {
        // A message that was being stored; the person was told.
        EXPECT_EQ(run.before.count(key), 0U) << key;
        EXPECT_EQ(run.after.count(key), 1U) << key;
        ++tally_.incomplete;
      }
    }
    ExpectBackupWhole(operation, run.before, done);
    repository::DisconnectRepository();
    return happened;
  }

  std::string copy_ = folder_.File("Tarnwick_before_restore.twb");
  std::map<std::string, std::string> kept_;
  std::string unindexed_;
  std::string protected_;
  std::vector<SelectedMessage> selected_;
  std::vector<std::string> beforeNames_;
  Tally tally_;
};

TEST_F(Disaster, KilledAtAnyWriteEverythingIsAsBeforeOrAsAfter) {
  int64_t kills = 0;
  int64_t ended = 0;
  for (const Operation& operation : Operations()) {
    SCOPED_TRACE(operation.name);
    Undisturbed run = Measure(operation);
    bool isRestore = std::string(operation.name) == "restore";
    for (int64_t at : Places(run.calls[DiskFault::kKill] + 4, Trials(5), 7)) {
      SCOPED_TRACE(at);
      Begin(operation);
      bool done = testing::RunInChild([&] {
        if (!repository::OpenRepository(false)) throw 1;
        FaultyDisk disk(DiskFault::kKill, at);
        operation.run();
        repository::DisconnectRepository();
      });
      ++(done ? ended : kills);
      Again(operation);
      ASSERT_TRUE(repository::OpenRepository(false));
      EXPECT_TRUE(platform::ListFiles(core::State().EmailFileFolder).empty());
      maintenance::CheckReport report;
      EXPECT_EQ(maintenance::CheckRepository(report), Result::kDone);
      // What a restore has filled in so far is given up for the copy.
      EXPECT_TRUE(report.IsSound() || (isRestore && platform::FileExists(copy_)));
      State now = ReadOpenRepository();
      ExpectExactSearch();
      if (isRestore) {
        ui_.shown.clear();
        maintenance::ReportUnfinishedRestore();
        EXPECT_EQ(ui_.Shown("box").empty(), maintenance::UnfinishedRestore().empty());
        EXPECT_THAT(platform::ListFiles(folder_.Path(), ".unfinished"), IsEmpty());
        ExpectRestoredOrKept(now, run);
      } else {
        EXPECT_THAT(Odd(now, run.before, run.after), IsEmpty());
      }
      ExpectBackupWhole(operation, run.before, done);
      // The mark changes back what it finds changed.
      if (std::string(operation.name) != "mark") {
        Again(operation);
        bool again = operation.run();
        State completed = ReadOpenRepository();
        // A deletion that was complete finds nothing more to delete.
        EXPECT_TRUE(again || now == run.after);
        EXPECT_TRUE(completed == run.after);
      }
      ForgetAnswers();
      repository::DisconnectRepository();
    }
  }
  EXPECT_GT(kills, 20);
  std::printf("kills %lld, runs that ended before theirs %lld\n", static_cast<long long>(kills),
              static_cast<long long>(ended));
}

TEST_F(Disaster, AFailingDiskIsReportedAndLosesNothing) {
  constexpr std::pair<DiskFault, const char*> kKinds[] = {{DiskFault::kFull, "no room"},
                                                          {DiskFault::kShortWrite, "short write"},
                                                          {DiskFault::kRead, "read error"},
                                                          {DiskFault::kSync, "no flush"}};
  int64_t faults = 0;
  auto report = [&](const Operation& operation, const char* kind) {
    std::printf("%-10s %-12s reported %5lld, done all the same %5lld, left by half %lld\n",
                operation.name, kind, static_cast<long long>(tally_.reported),
                static_cast<long long>(tally_.withoutEffect),
                static_cast<long long>(tally_.incomplete));
    faults += tally_.reported + tally_.withoutEffect;
    tally_ = {};
  };
  for (const Operation& operation : Operations()) {
    SCOPED_TRACE(operation.name);
    Undisturbed run = Measure(operation);
    for (const auto& [kind, name] : kKinds) {
      bool isOften = kind == DiskFault::kRead || operation.questions == 2;
      for (int64_t at : Places(run.calls[kind], Trials(3) * (isOften ? 4 : 1), 11)) {
        bool forever = at % 2 == 1;
        SCOPED_TRACE(name + std::string(" at ") + std::to_string(at) +
                     (forever ? " for good" : ""));
        Outlive(operation, run, [&, kind = kind](const std::function<void()>& body) {
          FaultyDisk disk(kind, at, forever);
          body();
          return disk.Happened();
        });
      }
      report(operation, name);
    }
    // Files outside the engine's care: scratch, copies, names.
    bool happened = true;
    for (int64_t step = 0; happened && step < 8 * Trials(3); ++step) {
      SCOPED_TRACE("file step " + std::to_string(step));
      happened = Outlive(operation, run, [&](const std::function<void()>& body) {
        testing::FailingFileStep fault(static_cast<int>(step));
        body();
        return fault.Happened();
      });
    }
    report(operation, "other files");
    // What is read is pulled out on the way.
    std::string input = folder_.File(operation.input);
    for (int64_t step = 0; *operation.input != '\0' && step < 4 * Trials(3); ++step) {
      SCOPED_TRACE("gone at file step " + std::to_string(step));
      Outlive(operation, run, [&](const std::function<void()>& body) {
        testing::FailingFileStep fault(
            static_cast<int>(step), [&] { std::rename(input.c_str(), (input + ".gone").c_str()); });
        body();
        std::rename((input + ".gone").c_str(), input.c_str());
        return fault.Happened();
      });
    }
    report(operation, "input gone");
  }
  EXPECT_GT(faults, 60);
}

}  // namespace
}  // namespace tarnwick::board
