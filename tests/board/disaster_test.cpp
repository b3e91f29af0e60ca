// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Everything that writes, on a disk that fails and in a process that is killed, at one call after
// the other. Afterwards the repository opens, the engine finds it sound, and every message, contact
// and setting is as it was before or as an undisturbed run leaves it; a further run completes it.
// TARNWICK_TRIALS sets how many trials there are of each kind (bench/disasters.sh: many).
#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <random>

#include "board/email_list.h"
#include "board/list_query.h"
#include "board/load_command.h"
#include "board/message_commands.h"
#include "board/message_viewer.h"
#include "core/run_state.h"
#include "intake/sender_rules.h"
#include "maintenance/backup.h"
#include "maintenance/check.h"
#include "maintenance/export.h"
#include "maintenance/merge.h"
#include "maintenance/restore.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/jet/recordset.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"
#include "repository/schema.h"
#include "support/faults.h"
#include "support/faulty_disk.h"
#include "support/profile_builder.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::board {
namespace {

using maintenance::Result;
using repository::RepositoryDb;
using testing::DiskFault;
using testing::FaultyDisk;

// Messages, contacts and settings, each written down whole under a name of its own.
using State = std::map<std::string, std::string>;

struct Operation {
  const char* name;
  int questions;              // each answered with yes
  std::function<bool()> run;  // true: it says that it has done its work
};

class Disaster : public testing::ProgramFixture {
 protected:
  static void SetUpTestSuite() { FaultyDisk::Install(); }

  Disaster() {
    repository::DisconnectRepository();  // opened before the disk was there
    platform::ClockOverride clock;
    clock.now = DateTime::FromDate(2020, 6, 15).WithTime(12, 0, 0);
    clock.zoneBiasMinutes = -180;
    clock.logonName = "ann";
    clock.tickStep = 40;  // so that there is a commit every few messages
    platform::SetClockOverride(clock);
    EXPECT_TRUE(repository::OpenRepository(false));
    MakeFiles();
  }

  // An export to merge, a backup to restore, a profile to load, and a repository to begin with.
  void MakeFiles() {
    testing::StoreVariedMessages(20, 5);
    RepositoryDb().Execute(
        "DELETE * FROM Email WHERE Subject Like '%\"13\"%' OR Subject Like "
        "'%\"22\"%'");  // of empty files
    jet::Recordset list;
    list.Open("SELECT ID, ReceivedTime FROM Email", RepositoryDb());
    EXPECT_EQ(maintenance::ExportEmails(folder_.File("merge.twb"), list), Result::kDone);
    list.Close();
    EXPECT_EQ(maintenance::MakeBackup(folder_.File("restore.twb")), Result::kDone);
    EXPECT_TRUE(repository::ClearRepository());
    testing::StoreVariedMessages(4);
    testing::StoreVariedMessages(4, 104);
    testing::StoreRulesAndMarks();
    repository::SetParameter("Filter", "ann", repository::kTextColumn, std::string("before"));

    testing::MessageStoreBuilder inbox;
    testing::MessageStoreBuilder sent;
    for (int i = 0; i < 25; ++i) {
      testing::IndexedMessage message;
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
    testing::ProfileBuilder profile(folder_.File("profile/"));
    testing::ProfileBuilder::WriteStore(profile.AddIdentity("ann"),
                                        testing::StandardFolders(inbox.Bytes(), sent.Bytes()));
    profile.WriteHive();
    repository::SetProfileFolder(folder_.File("profile/"));
    repository::DisconnectRepository();
    for (const char* file : {repository::kRepositoryFile, repository::kParameterFile}) {
      kept_[file] = platform::ReadFile(folder_.File(file));
    }
    beforeNames_ = platform::ListFiles(folder_.Path());
  }

  std::vector<Operation> Operations() {
    auto selected = [] {
      return std::vector<SelectedMessage>{{1, "a"}, {2, "b"}, {3, "c"}, {6, "d"}};
    };
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
         }},
        {"merge", 0,
         [this] {
           return maintenance::twMakeMarge(
                      folder_.File("merge.twb"),
                      {maintenance::Duplicates::kSkip, maintenance::UnknownSenders::kAccept})
                      .result == Result::kDone;
         }},
        {"restore", 2,
         [this] {
           return maintenance::RestoreBackup(folder_.File("restore.twb")) == Result::kDone;
         }},
        {"backup", 0,
         [this] { return maintenance::MakeBackup(folder_.File("new.twb")) == Result::kDone; }},
        {"delete", 1, [selected] { return DeleteMessages(selected()); }},
        {"mark", 0, [selected] { return ToggleActive(selected()); }},
        {"move HTML", 1, [] { return MoveHtmlToBody(); }},
        {"settings", 0,
         [] {
           int64_t errors = core::State().ReportedErrors;
           repository::SetParameter("Filter", "ann", repository::kTextColumn, std::string("after"));
           repository::SetLastLoaded(DateTime::FromDate(2020, 6, 15));
           return core::State().ReportedErrors == errors;
         }},
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
    core::State().StopFlag = core::State().ImportCancelFlag = false;
    Again(operation);
  }

  void Again(const Operation& operation) {
    bool replaces = platform::FileExists(folder_.File("new.twb"));
    ui_.yesNo.assign(static_cast<size_t>(operation.questions) + (replaces ? 1 : 0), true);
    ui_.shown.clear();
  }

  static State ReadFile(const std::string& file) {
    jet::Connection connection;
    connection.SetProperty(jet::kDataSourceProperty, file);
    connection.SetProperty(jet::kPasswordProperty, repository::DatabasePassword());
    connection.SetProperty(jet::kModeProperty, jet::kModeRead);
    connection.Open();
    return ReadRepository(connection);
  }

  static State ReadRepository(jet::Connection& connection) {
    State state;
    std::map<std::string, std::string> children;
    for (const char* table : {"ToRecipient", "ccRecipient", "Attachment", "FileRepository"}) {
      bool isFile = std::string(table) == "FileRepository";
      jet::Recordset rows;
      rows.Open(std::string("SELECT * FROM ") + table + " ORDER BY ID", connection);
      for (; !rows.Eof(); rows.MoveNext()) {
        std::string& text = children[rows.Field(isFile ? "FileID" : "EmailID").AsText()];
        for (int i = 0; i < rows.FieldCount(); ++i) {
          std::string name = rows.FieldName(i);
          if (name != "ID" && name != "EmailID" && name != "FileID") {
            text += table + rows.Field(i).AsText() + "\n";
          }
        }
      }
    }
    jet::Recordset emails;
    emails.Open("SELECT * FROM Email ORDER BY ID", connection);
    for (; !emails.Eof(); emails.MoveNext()) {
      std::string text;
      for (int i = 0; i < emails.FieldCount(); ++i) {
        std::string name = emails.FieldName(i);
        bool isNumber = name == "ID" || name == "FromTo" || name == "ProjectID";
        if (!isNumber) text += name + "=" + emails.Field(i).AsText() + "\n";
      }
      text += emails.Field("FromTo").AsInt() != 0 ? "correspondent\n" : "";
      text += emails.Field("ProjectID").AsInt() != 0 ? "project\n" : "";
      state["Message " + emails.Field("EntryID").AsText()] =
          text + children[emails.Field("ID").AsText()];
    }
    for (const char* query :
         {"SELECT Name FROM MeContact", "SELECT Address FROM ContactEmail",
          "SELECT ProjectName FROM tblProject", "SELECT Address FROM RejectSender"}) {
      jet::Recordset rows;
      for (rows.Open(query, connection); !rows.Eof(); rows.MoveNext()) {
        state[std::string(query) + " " + rows.Field(0).AsText()] = "";
      }
    }
    return state;
  }

  static State Now() {
    State state = ReadRepository(RepositoryDb());
    jet::Recordset rows;
    rows.Open("SELECT * FROM Parameter WHERE ParameterGroup <> 'Restore'",
              repository::ParameterDb());
    for (; !rows.Eof(); rows.MoveNext()) {
      state["Setting " + rows.Field(0).AsText() + " " + rows.Field(1).AsText()] =
          rows.Field(2).AsText() + "|" + rows.Field(3).AsText() + "|" + rows.Field(4).AsText();
    }
    return state;
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
      if (kind == DiskFault::kFull) run.before = Now();
      int64_t began = disk.Calls();
      EXPECT_TRUE(operation.run()) << operation.name;
      run.after = Now();
      repository::DisconnectRepository();
      run.calls[kind] = disk.Calls() - began;
    }
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

  // What is neither as before nor as after.
  static std::vector<std::string> Odd(const State& now, const Undisturbed& run) {
    std::vector<std::string> odd;
    std::set<std::string> keys;
    for (const State* state : {&now, &run.before, &run.after}) {
      for (const auto& [key, text] : *state) keys.insert(key);
    }
    auto find = [](const State& state, const std::string& key) {
      auto found = state.find(key);
      return found == state.end() ? nullptr : &found->second;
    };
    auto same = [](const std::string* a, const std::string* b) {
      return a == nullptr || b == nullptr ? a == b : *a == *b;
    };
    for (const std::string& key : keys) {
      const std::string* is = find(now, key);
      if (!same(is, find(run.before, key)) && !same(is, find(run.after, key))) odd.push_back(key);
    }
    return odd;
  }

  // A restore that did not come to its end: all as before or as after, or the copy holds what was.
  void ExpectRestoredOrKept(const State& now, const Undisturbed& run) {
    if (Odd(now, run).empty() && (now == run.before || now == run.after)) return;
    std::string copy = folder_.File("Tarnwick_before_restore.twb");
    ASSERT_TRUE(platform::FileExists(copy));
    State kept = ReadFile(copy);
    for (const auto& [key, text] : run.before) {
      if (key.rfind("Setting ", 0) != 0) {
        EXPECT_EQ(kept[key], text) << key;
      }
    }
  }

  void ExpectBackupWholeOrNone(const State& before) {
    if (!platform::FileExists(folder_.File("new.twb"))) return;
    State saved = ReadFile(folder_.File("new.twb"));
    for (const auto& [key, text] : saved) EXPECT_EQ(before.at(key), text) << key;
  }

  // Runs the operation with a fault, and looks at what it leaves. True when the fault happened.
  bool Outlive(const Operation& operation, const Undisturbed& run,
               const std::function<bool(const std::function<void()>&)>& withFault) {
    Begin(operation);
    EXPECT_TRUE(repository::OpenRepository(false));
    bool done = false;
    bool isReported = false;
    bool happened = withFault([&] {
      done = operation.run();
      isReported = !ui_.Shown("box").empty() || !ui_.Shown("error").empty();
      repository::DisconnectRepository();
    });
    ui_.yesNo.clear();
    repository::DisconnectRepository();
    EXPECT_TRUE(repository::OpenRepository(false));
    EXPECT_EQ(RepositoryDb().IntegrityCheck(), "");
    if (happened) ++faults_;
    if (happened && done) ++withoutEffect_;
    State now = Now();
    if (done) {
      EXPECT_TRUE(now == run.after) << "said to be done";
    } else {
      EXPECT_TRUE(isReported) << "failed silently";
    }
    if (std::string(operation.name) == "restore") {
      ExpectRestoredOrKept(now, run);
    } else {
      for (const std::string& key : Odd(now, run)) {
        // A message that was being stored; the person was told.
        EXPECT_EQ(run.before.count(key), 0U) << key;
        EXPECT_EQ(run.after.count(key), 1U) << key;
        ++incomplete_;
      }
    }
    ExpectBackupWholeOrNone(run.before);
    repository::DisconnectRepository();
    return happened;
  }

  std::map<std::string, std::string> kept_;
  std::vector<std::string> beforeNames_;
  int64_t faults_ = 0;
  int64_t withoutEffect_ = 0;
  int64_t incomplete_ = 0;
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
      bool done = testing::RunInChild(
          [&] {
            if (!repository::OpenRepository(false)) throw 1;
            FaultyDisk disk(DiskFault::kKill, at);
            operation.run();
            repository::DisconnectRepository();
          },
          0);
      ++(done ? ended : kills);
      Again(operation);
      ASSERT_TRUE(repository::OpenRepository(false));
      EXPECT_TRUE(platform::ListFiles(core::State().EmailFileFolder).empty());
      maintenance::CheckReport report;
      EXPECT_EQ(maintenance::CheckRepository(report), Result::kDone);
      EXPECT_TRUE(report.IsSound());
      State now = Now();
      if (isRestore) {
        ExpectRestoredOrKept(now, run);
      } else {
        EXPECT_THAT(Odd(now, run), ::testing::IsEmpty());
      }
      ExpectBackupWholeOrNone(run.before);
      // The mark changes back what it finds changed.
      if (std::string(operation.name) != "mark") {
        Again(operation);
        bool again = operation.run();
        State completed = Now();
        // A deletion that was complete finds nothing more to delete.
        EXPECT_TRUE(again || now == run.after);
        EXPECT_TRUE(completed == run.after);
      }
      ui_.yesNo.clear();
      repository::DisconnectRepository();
    }
  }
  EXPECT_GT(kills, 20);
  std::printf("kills %lld, runs that ended before theirs %lld\n", static_cast<long long>(kills),
              static_cast<long long>(ended));
}

TEST_F(Disaster, AFailingDiskIsReportedAndLosesNothing) {
  for (const Operation& operation : Operations()) {
    SCOPED_TRACE(operation.name);
    Undisturbed run = Measure(operation);
    for (DiskFault kind :
         {DiskFault::kFull, DiskFault::kShortWrite, DiskFault::kRead, DiskFault::kSync}) {
      for (int64_t at : Places(run.calls[kind], Trials(3), 11)) {
        bool forever = at % 2 == 1;
        SCOPED_TRACE("fault " + std::to_string(static_cast<int>(kind)) + " at " +
                     std::to_string(at) + (forever ? " for good" : ""));
        Outlive(operation, run, [&](const std::function<void()>& body) {
          FaultyDisk disk(kind, at, forever);
          body();
          return disk.Happened();
        });
      }
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
  }
  EXPECT_GT(faults_, 60);
  std::printf("faults %lld, of them without effect %lld, messages left by half and reported %lld\n",
              static_cast<long long>(faults_), static_cast<long long>(withoutEffect_),
              static_cast<long long>(incomplete_));
}

}  // namespace
}  // namespace tarnwick::board
