// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The timeline's counts over a repository of 100,000 and of 1,000,000 messages, beside a bare scan
// of the index that they are made from. A count runs in steps; "longest" is the longest of them in
// milliseconds, which is what a person who types meanwhile may have to wait.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include "board/list_query.h"
#include "board/timeline_scope.h"
#include "core/startup.h"
#include "platform/locale.h"
#include "repository/repository.h"
#include "repository/schema.h"
#include "support/temp_folder.h"
#include "timeline/query.h"

namespace tarnwick {
namespace {

constexpr int kContacts = 3000;
constexpr int64_t kFirst = 900000000;  // July 1998
constexpr int64_t kYears = 10;

class Mailbox {
 public:
  explicit Mailbox(int64_t messages) {
    repository::CreateDatabaseFiles(folder_.Path());
    core::PrepareRun(folder_.Path());
    if (!repository::OpenRepository(false)) std::abort();
    jet::Connection& connection = repository::RepositoryDb();
    jet::CommitGroup group(connection);
    for (int i = 1; i <= kContacts; i++) {
      connection.Execute("INSERT INTO MeContact (Name) VALUES ('Person " + std::to_string(i) +
                         " of Somewhere')");
    }
    for (int64_t i = 1; i <= messages; i++) {
      AddMessage(connection, i, messages);
      connection.EndUnit();
    }
    group.End();
  }
  ~Mailbox() {
    board::ResetBoard();
    repository::DisconnectRepository();
  }

 private:
  void AddMessage(jet::Connection& connection, int64_t id, int64_t messages) {
    int64_t seconds = kFirst + id * (kYears * 365 * 86400 / messages) + Below(100000);
    std::string subject = "Re:";
    for (int64_t words = 3 + Below(4); words > 0; words--) {
      subject += " word" + std::to_string(Below(20000));
    }
    // A few write most of the mail.
    int64_t contact = 1 + Below(kContacts) * Below(kContacts) / kContacts;
    bool hasFiles = Below(10) == 0;
    connection.Execute(
        "INSERT INTO Email (EntryID, Application, Direction, ReceivedTime, Subject, FromTo, "
        "FilesNum, Active, Body) VALUES ('<" +
        std::to_string(id) + "@example.org>', 'Outlook Express', '" +
        (Below(4) == 0 ? "Out" : "In") + "', #" +
        platform::FormatDate(DateTime::FromSeconds(seconds), "mm\\/dd\\/yyyy hh:nn:ss") + "#, '" +
        subject + "', " + std::to_string(contact) + ", " + (hasFiles ? "2" : "0") + ", " +
        (Below(50) == 0 ? "'+'" : "Null") + ", '" + subject + " " + std::string(400, '.') + "')");
    for (int file = 0; hasFiles && file < 2; file++) {
      connection.Execute("INSERT INTO Attachment (EmailID, FileName) VALUES (" +
                         std::to_string(id) + ", 'file" + std::to_string(Below(500)) + ".doc')");
    }
  }
  int64_t Below(int64_t limit) { return static_cast<int64_t>(random_() % limit); }

  testing::TempFolder folder_;
  std::mt19937_64 random_{7};
};

// One repository is open at a time; benches of one size come after one another.
std::unique_ptr<Mailbox> mailbox;
void UseMailbox(int64_t messages) {
  static int64_t held = 0;
  if (held == messages) return;
  mailbox.reset();
  mailbox = std::make_unique<Mailbox>(messages);
  held = messages;
}

void BareScan(benchmark::State& state) {
  UseMailbox(state.range(0));
  for (auto _ : state) {
    jet::Recordset rows;
    rows.Open(
        "SELECT Sum(FilesNum) AS Files FROM Email WHERE ReceivedTime BETWEEN "
        "#01/01/1980 00:00:00# AND #12/31/2030 23:59:59#",
        repository::RepositoryDb());
    benchmark::DoNotOptimize(rows.Field(0).AsInt());
  }
}

// Runs a count to its end; the longest of its steps in milliseconds.
template <typename Reader>
double RunSteps(Reader& reader) {
  using Clock = std::chrono::steady_clock;
  double longest = 0;
  for (bool more = true; more;) {
    auto began = Clock::now();
    more = reader.Step();
    std::chrono::duration<double, std::milli> took = Clock::now() - began;
    longest = std::max(longest, took.count());
  }
  return longest;
}

void CountDays(benchmark::State& state, void (*change)(board::ListFilter&)) {
  UseMailbox(state.range(0));
  board::ListFilter filter = board::EveryMessage();
  change(filter);
  double longest = 0;
  int64_t counted = 0;
  for (auto _ : state) {
    timeline::TimelineReader reader;
    reader.Start(board::TimelineScope(filter));
    longest = std::max(longest, RunSteps(reader));
    counted = reader.Counts().Total().Total();
  }
  state.counters["counted"] = static_cast<double>(counted);
  state.counters["longest"] = longest;
}

void CountDaysAgain(benchmark::State& state) {
  UseMailbox(state.range(0));
  timeline::TimelineReader reader;
  reader.Start(board::TimelineScope(board::EveryMessage()));
  RunSteps(reader);
  for (auto _ : state) {
    reader.Start(board::TimelineScope(board::EveryMessage()));
    benchmark::DoNotOptimize(
        reader.Counts().Main(timeline::DayNumber(DateTime::FromDate(2020, 1, 1))));
  }
}

void TopCorrespondents(benchmark::State& state) {
  UseMailbox(state.range(0));
  double longest = 0;
  for (auto _ : state) {
    timeline::CorrespondentReader reader;
    reader.Start(board::TimelineScope(board::EveryMessage()));
    longest = std::max(longest, RunSteps(reader));
    benchmark::DoNotOptimize(reader.Top(20));
  }
  state.counters["longest"] = longest;
}

void RegisterFor(int64_t messages) {
  auto add = [messages](const char* name, auto&& body) {
    benchmark::RegisterBenchmark(name, body)->Arg(messages)->Unit(benchmark::kMillisecond);
  };
  add("BareScan", BareScan);
  using Filter = board::ListFilter;
  const std::pair<const char*, void (*)(Filter&)> kFilters[] = {
      {"CountDays", [](Filter&) {}},
      {"CountDaysIncoming", [](Filter& f) { f.Direction = board::ListDirection::kIn; }},
      {"CountDaysHot", [](Filter& f) { f.Active = true; }},
      {"CountDaysWithName", [](Filter& f) { f.FromTo = "son 12"; }},
      {"CountDaysWithSubject", [](Filter& f) { f.Subject = "word12"; }},
      {"CountDaysWithFile", [](Filter& f) { f.FileName = "file12"; }},
      {"CountDaysWithText", [](Filter& f) { f.MailText = "word12"; }}};
  for (const auto& [name, change] : kFilters) {
    add(name, [change = change](benchmark::State& state) { CountDays(state, change); });
  }
  add("CountDaysAgain", CountDaysAgain);
  add("TopCorrespondents", TopCorrespondents);
}

}  // namespace
}  // namespace tarnwick

int main(int argc, char** argv) {
  tarnwick::RegisterFor(100000);
  tarnwick::RegisterFor(1000000);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  tarnwick::mailbox.reset();
  benchmark::Shutdown();
}
