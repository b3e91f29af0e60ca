// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-hostile [KIND]: what malicious mail costs. Each kind that grows (those whose name holds
// KIND) is taken from its file to its rows, taken into the text index, searched, read and looked
// through for attachments, with 1 MB and with 16 MB of it, each in a process of its own; likewise
// each word of a grammar that is said again and again, with 1 MB and with 8 MB.
// Less what an ordinary letter costs, printed are: processor time (the median of three for 1 MB)
// and its ratio, which is 16 or 8 where time is in proportion; memory at its highest and the room
// taken on the disk (repository, log and scratch files, before and after it is closed) for each
// byte of the larger. Exits 1 when a ratio is more than half as high again.
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "board/email_list.h"
#include "board/list_query.h"
#include "core/run_state.h"
#include "core/startup.h"
#include "intake/header_parser.h"
#include "intake/store_message.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/repository.h"
#include "repository/schema.h"
#include "samples/hostile_mail.h"
#include "support/scripted_ui.h"
#include "support/temp_folder.h"
#include "takeout/attachments.h"
#include "takeout/stored_file.h"
#include "takeout/stored_message.h"

namespace tarnwick {
namespace {

using repository::RepositoryDb;

constexpr size_t kMegabyte = size_t{1} << 20;
// Before the message and behind it there are as many as a segment of the text index needs.
constexpr int kStored = 100;
constexpr int kBehind = 200;

struct Cost {
  double milliseconds = 0;
  double memory = 0;  // bytes
  double disk = 0;
};

double Milliseconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  auto of = [](const timeval& time) {
    return 1000.0 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1000.0;
  };
  return of(usage.ru_utime) + of(usage.ru_stime);
}

// The most memory since this was last asked.
double Memory() {
  double size = 0;
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) size = 1024 * std::atof(line.c_str() + 6);
  }
  if (FILE* file = std::fopen("/proc/self/clear_refs", "w")) {
    std::fputs("5", file);
    std::fclose(file);
  }
  return size;
}

double Disk(const std::string& folder) {
  double size = 0;
  for (const std::string& name : platform::ListFiles(folder)) {
    size += static_cast<double>(platform::FileSize(folder + name));
  }
  return size;
}

void StoreOthers() {
  jet::CommitGroup group(RepositoryDb());
  for (int i = 0; i < kStored; ++i) {
    intake::MailMessage message;
    message.Subject = "page";
    message.Body = "page " + std::to_string(i) + " of a long letter\r\n";
    message.MessageKey = message.Body;
    message.Direction = "In";
    message.ReceivedTime = DateTime::FromDate(2004, 2, 1).AddSeconds(i);
    platform::WriteFile(core::State().TempMessageFile, message.Body);
    intake::dbSaveMesage(core::State().TempMessageFile, message, "Outlook Express", 1, "Ann");
    RepositoryDb().EndUnit();
  }
  group.End();
}

// What a person does with a message.
void TakeAndRead(const std::string& file) {
  {
    jet::CommitGroup group(RepositoryDb());
    intake::dbxParseMessage(file, {"Inbox", "Local Folders", "Hostile"}, "", "key");
    RepositoryDb().EndUnit();
    for (int i = 0; i < kBehind; ++i) {
      RepositoryDb().Execute("INSERT INTO Email (Subject, Body) VALUES ('page', 'page')");
      RepositoryDb().EndUnit();
    }
    group.End();
  }
  board::Board().Filter = board::EveryMessage();
  board::Board().Filter.MailText = "hello world";
  board::OpenEmailList(board::BuildListWhere(board::Board().Filter));
  board::ResetBoard();
  const int64_t id = kStored + 1;
  if (!takeout::ReadStoredMessage(id)) return;  // refused
  takeout::MessageAttachments attachments(takeout::ReadStoredFile(id).value_or(""));
  for (size_t i = 0; i < attachments.List().size() && i < 10; ++i) attachments.Bytes(i);
}

// In a process of its own, on a copy of the repository.
Cost Measure(const std::string& folder, const std::string& raw) {
  std::string file = folder + "Tarnwick.twr";
  platform::CopyFile(folder + "before", file);
  platform::WriteFile(folder + "message", raw);
  int ends[2];
  if (pipe(ends) != 0) std::abort();
  pid_t child = fork();
  if (child == 0) {
    if (!repository::OpenRepository(false)) _exit(1);
    malloc_trim(0);  // what the parent had freed would serve for nothing
    Memory();
    Cost cost{Milliseconds(), Memory(), Disk(folder)};
    cost.milliseconds = -cost.milliseconds;
    TakeAndRead(folder + "message");
    double open = Disk(folder) + Disk(core::State().EmailFileFolder);
    repository::DisconnectRepository();
    cost.milliseconds += Milliseconds();
    cost.memory = Memory() - cost.memory;
    cost.disk = std::max(open, Disk(folder) + Disk(core::State().EmailFileFolder)) - cost.disk;
    _exit(write(ends[1], &cost, sizeof cost) == sizeof cost ? 0 : 1);
  }
  Cost cost;
  close(ends[1]);
  bool isRead = read(ends[0], &cost, sizeof cost) == sizeof cost;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (!isRead) throw Error(ErrorNumber::kPathAccess, "a measurement failed");
  return cost;
}

Cost Median(const std::string& folder, const std::string& raw, int runs) {
  std::vector<Cost> costs;
  for (int i = 0; i < runs; ++i) costs.push_back(Measure(folder, raw));
  std::sort(costs.begin(), costs.end(),
            [](const Cost& a, const Cost& b) { return a.milliseconds < b.milliseconds; });
  return costs[costs.size() / 2];
}

// Measures and prints a line a kind.
class Table {
 public:
  Table(std::string folder, const Cost& letter) : folder_(std::move(folder)), letter_(letter) {}

  template <typename MakeRaw>
  void Add(const samples::HostileKind& small, size_t times, MakeRaw makeRaw) {
    Cost one = Median(folder_, small.raw, 3);
    std::string raw = makeRaw(times * kMegabyte);
    Cost many = Measure(folder_, raw);
    auto size = static_cast<double>(raw.size());
    double figures[3] = {many.milliseconds / one.milliseconds,
                         (many.memory - letter_.memory) / size, (many.disk - letter_.disk) / size};
    std::printf("%-40s %9.1f %9.1f %7.1f %9.1f %9.2f\n", small.name.c_str(), one.milliseconds,
                many.milliseconds, figures[0], figures[1], figures[2]);
    std::fflush(stdout);
    isInProportion_ = isInProportion_ && figures[0] <= kHighest * static_cast<double>(times);
    for (int k = 0; k < 3; ++k) highest_[k] = std::max(highest_[k], figures[k]);
  }

  int Finish() const {
    std::printf("%-40s %9s %9s %7.1f %9.1f %9.2f\n", "highest", "", "", highest_[0], highest_[1],
                highest_[2]);
    return isInProportion_ ? 0 : 1;
  }

 private:
  static constexpr double kHighest = 1.5;  // of the ratio of the sizes

  std::string folder_;
  Cost letter_;
  double highest_[3] = {};
  bool isInProportion_ = true;
};

int Run(std::string_view wanted) {
  testing::TempFolder temp;
  testing::ScriptedUi ui;
  const std::string& folder = temp.Path();
  repository::CreateDatabaseFiles(folder);
  core::PrepareRun(folder);
  core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  core::State().LogEvents = false;
  if (!repository::OpenRepository(false)) return 1;
  StoreOthers();
  repository::DisconnectRepository();
  platform::CopyFile(folder + "Tarnwick.twr", folder + "before");

  Cost letter = Median(folder, "From: a@b.test\r\nSubject: s\r\n\r\ntext\r\n", 5);
  std::printf("%-40s %9s %9s %7s %9s %9s\n", "kind", "1 MB, ms", "more, ms", "ratio", "memory/n",
              "disk/n");
  std::printf("%-40s %9.1f\n", "an ordinary letter", letter.milliseconds);
  Table table(folder, letter);
  for (size_t i = 0; i < samples::HostileKinds(1).size(); ++i) {
    samples::HostileKind small = std::move(samples::HostileKinds(kMegabyte)[i]);
    if (!small.isSized || small.name.find(wanted) == std::string::npos) continue;
    table.Add(small, 16,
              [i](size_t size) { return std::move(samples::HostileKinds(size)[i].raw); });
  }
  for (size_t i = 0; i < samples::RepeatedWordCount(); ++i) {
    samples::HostileKind small = samples::RepeatedWord(i, kMegabyte);
    if (small.name.find(wanted) == std::string::npos) continue;
    table.Add(small, 8, [i](size_t size) { return samples::RepeatedWord(i, size).raw; });
  }
  return table.Finish();
}

}  // namespace
}  // namespace tarnwick

int main(int argc, char** argv) {
  if (argc > 2) {
    std::fprintf(stderr, "usage: tarnwick-hostile [KIND]\n");
    return 2;
  }
  try {
    return tarnwick::Run(argc == 2 ? argv[1] : "");
  } catch (const tarnwick::Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
