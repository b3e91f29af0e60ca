// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-scale HOME [RUNS] [--write]: times what a person waits for in a repository made by
// tarnwick-make-repository, through the routines behind the window. Printed are medians of RUNS
// (default 5): milliseconds by the clock, milliseconds of processor time, and the ratio to the
// least that a list needs of the bare engine, one scan of the index that the list is narrowed by.
// --conversations times nothing but these. --write also times what goes over many messages, which
// changes the repository: seconds, and for how long at most the person saw nothing move.
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "board/email_list.h"
#include "board/list_query.h"
#include "board/message_commands.h"
#include "contacts/contact_book.h"
#include "core/startup.h"
#include "database/connection_impl.h"
#include "maintenance/backup.h"
#include "maintenance/export.h"
#include "maintenance/merge.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "repository/app_folder.h"
#include "repository/repository.h"
#include "search/mail_map.h"
#include "support/scripted_ui.h"

namespace tarnwick {
namespace {

constexpr int kScreenRows = 40;

struct Time {
  double wall;
  double processor;
};

class Bench {
 public:
  explicit Bench(int runs) : runs_(runs) {}

  // before is run before each and not timed.
  void Measure(
      const std::string& what, const std::function<void()>& body,
      const std::function<void()>& before = [] {}) {
    Report(what, Median(body, before, runs_));
  }
  void Once(const std::string& what, const std::function<void()>& body) {
    auto nothing = [] {};
    Report(what, Median(body, nothing, 1));
  }

 private:
  static Time Run(const std::function<void()>& body) {
    auto began = std::chrono::steady_clock::now();
    std::clock_t used = std::clock();
    body();
    std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - began;
    return {wall.count(), 1000.0 * static_cast<double>(std::clock() - used) / CLOCKS_PER_SEC};
  }

  static Time Median(const std::function<void()>& body, const std::function<void()>& before,
                     int runs) {
    std::vector<double> walls;
    std::vector<double> processors;
    for (int i = 0; i < runs; ++i) {
      before();
      Time time = Run(body);
      walls.push_back(time.wall);
      processors.push_back(time.processor);
    }
    auto middle = [](std::vector<double>& values) {
      std::sort(values.begin(), values.end());
      return values[values.size() / 2];
    };
    return {middle(walls), middle(processors)};
  }

  void Report(const std::string& what, Time time) {
    if (yardstick_ == 0) {
      yardstick_ = time.processor;
      std::printf("| what | ms | ms of processor | ratio to the scan |\n|---|---:|---:|---:|\n");
    }
    std::printf("| %s | %.1f | %.1f | %.2f |\n", what.c_str(), time.wall, time.processor,
                time.processor / yardstick_);
    std::fflush(stdout);
  }

  int runs_;
  double yardstick_ = 0;
};

jet::Database& Engine() {
  return repository::RepositoryDb().GetImpl().session.Engine();
}

void ScanIndex() {
  jet::Statement scan(Engine(),
                      "SELECT _rowid_, ReceivedTime FROM Email INDEXED BY EmailList "
                      "WHERE ReceivedTime BETWEEN 0 AND 4000000000 ORDER BY ReceivedTime");
  int64_t sum = 0;
  while (scan.Step()) sum += scan.Int(0);
  if (sum < 0) std::abort();
}

void ReadScreen(int64_t first) {
  jet::Recordset& list = board::Board().ListRecordset;
  int64_t last = std::min(first + kScreenRows - 1, list.RecordCount());
  for (int64_t position = first; position <= last; ++position) {
    list.SetAbsolutePosition(position);
    for (int field = 0; field < list.FieldCount(); ++field) list.Field(field).AsText();
  }
}

// What a change of the filter or the order costs until the first screen is full.
void List(const std::function<void(board::ListFilter&)>& change) {
  board::BoardState& state = board::Board();
  state.Filter = board::EveryMessage();
  change(state.Filter);
  if (!board::OpenEmailList(board::BuildListWhere(state.Filter))) std::abort();
  board::CountListed();
  ReadScreen(1);
}

// Nothing is remembered of what was asked last.
void Anew() {
  board::ResetBoard();
  repository::RepositoryDb().Execute("DELETE FROM ObjectList");
}

void OpenHome(const std::string& home) {
  std::string folder = platform::WithSeparator(home);
  repository::SeedAppFolder(folder, platform::FolderOf(platform::ProgramPath()));
  core::PrepareRun(folder);
  if (!repository::OpenRepository(false)) std::exit(1);
  repository::ReadOptions();
}

long PeakKilobytes() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

void TimeLists(Bench& bench) {
  using board::ListFilter;
  const struct {
    const char* what;
    std::function<void(ListFilter&)> change;
  } kLists[] = {
      {"list by date", [](ListFilter&) {}},
      {"list by date, oldest first",
       [](ListFilter& filter) { filter.SortOrder = board::ListOrder::kAscending; }},
      {"list of a month",
       [](ListFilter& filter) {
         filter.DateFrom = DateTime::FromDate(1999, 3, 1);
         filter.DateTo = DateTime::FromDate(1999, 3, 31);
       }},
      {"list of what came in",
       [](ListFilter& filter) { filter.Direction = board::ListDirection::kIn; }},
      {"list of hot messages", [](ListFilter& filter) { filter.Active = true; }},
      {"list of those with attachments", [](ListFilter& filter) { filter.AttachedFile = true; }},
      {"list by direction",
       [](ListFilter& filter) { filter.SortBy = board::ListSort::kDirection; }},
      {"list by correspondent",
       [](ListFilter& filter) { filter.SortBy = board::ListSort::kFromTo; }},
      {"list by subject", [](ListFilter& filter) { filter.SortBy = board::ListSort::kSubject; }},
      {"part of a correspondent's name", [](ListFilter& filter) { filter.FromTo = "tan"; }},
      {"part of a subject", [](ListFilter& filter) { filter.Subject = "netel"; }},
      {"two letters of a subject", [](ListFilter& filter) { filter.Subject = "ov"; }},
      {"part of a file's name", [](ListFilter& filter) { filter.FileName = "tan"; }},
  };
  for (const auto& list : kLists) {
    int64_t incoming = 0;
    bench.Measure(
        list.what, [&] { List(list.change); }, Anew);
    bench.Measure("- its counts", [&] { incoming = board::CountIncoming(); });
    std::printf("<!-- %s -->\n", board::CountsText(board::CountListed(), incoming).c_str());
  }
}

// A few words that stand together in the text of one message, and are rare for that.
std::string RareText(int64_t id) {
  jet::Recordset message;
  message.Open("SELECT Body FROM Email WHERE ID=" + std::to_string(id), repository::RepositoryDb());
  std::string body = message.Eof() ? "" : message.Field(0).AsText();
  // Within the first line.
  return body.size() < 60 ? "nothing" : body.substr(10, 40);
}

void TimeSearches(Bench& bench) {
  std::string rare = RareText(board::CountListed() / 2);
  const struct {
    const char* what;
    std::string text;
  } kSearches[] = {{"forty letters of a text", rare},
                   {"six letters of a text", rare.substr(0, 6)},
                   {"a text that none holds", "zqxwvkjq"}};
  for (const auto& search : kSearches) {
    auto narrow = [&](board::ListFilter& filter) { filter.MailText = search.text; };
    bench.Measure(
        search.what, [&] { List(narrow); }, Anew);
    std::printf("<!-- %lld -->\n", static_cast<long long>(board::CountListed()));
  }
}

// Words of texts here and there, the one that most of them hold first.
std::vector<std::string> WordsByCommonness() {
  constexpr int64_t kTexts = 1000;
  std::map<std::string, int> texts;
  List([](board::ListFilter&) {});
  jet::Recordset& list = board::Board().ListRecordset;
  int64_t apart = std::max<int64_t>(1, list.RecordCount() / kTexts);
  for (int64_t position = 1; position <= list.RecordCount(); position += apart) {
    list.SetAbsolutePosition(position);
    jet::Recordset message;
    message.Open("SELECT Body FROM Email WHERE ID=" + list.Field(board::kId).AsText(),
                 repository::RepositoryDb());
    std::istringstream body(message.Eof() ? "" : message.Field(0).AsText());
    std::set<std::string> words;
    for (std::string word; body >> word;) words.insert(platform::AsciiLower(word));
    for (const std::string& word : words) ++texts[word];
  }
  std::vector<std::pair<int, std::string>> order;
  for (const auto& [word, count] : texts) {
    if (word.size() > 3 && word.back() != '.') order.emplace_back(-count, word);
  }
  std::sort(order.begin(), order.end());
  std::vector<std::string> words;
  words.reserve(order.size());
  for (auto& [count, word] : order) words.push_back(std::move(word));
  return words;
}

struct Found {
  // Milliseconds of processor time until the first rows are there, a screen of them is, and all
  // are.
  double rows = 0;
  double screen = 0;
  double end = 0;
  double longestStep = 0;
  double screenByClock = 0;
  int64_t count = 0;

  void Worsen(const Found& other) {
    for (double Found::*time :
         {&Found::rows, &Found::screen, &Found::end, &Found::longestStep, &Found::screenByClock}) {
      this->*time = std::max(this->*time, other.*time);
    }
    count = other.count;
  }
};

// As the search box does it: what is there at once, then a step and a look around, time and again.
Found Find(const std::string& text, bool toEnd) {
  auto now = [] { return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC; };
  auto clock = std::chrono::steady_clock::now();
  double began = now();
  Found found;
  auto look = [&] {
    int64_t count = board::CountListed();
    if (count > 0 && found.rows == 0) {
      ReadScreen(1);
      found.rows = now() - began;
    }
    if (found.screen != 0 || (count < kScreenRows && board::IsListGrowing())) return;
    found.screen = now() - began;
    std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - clock;
    found.screenByClock = taken.count();
  };
  board::BoardState& state = board::Board();
  state.Filter = board::EveryMessage();
  state.Found.text = text;
  if (!board::OpenEmailList(board::BuildListWhere(state.Filter))) std::abort();
  for (look(); board::IsListGrowing() && (toEnd || found.screen == 0); look()) {
    double step = now();
    board::GrowList(12);
    found.longestStep = std::max(found.longestStep, now() - step);
  }
  found.end = now() - began;
  found.count = board::CountListed();
  state.Found.text.clear();
  return found;
}

// From one that most messages hold to one that none does.
std::vector<std::string> SearchTexts(const std::vector<std::string>& words) {
  auto word = [&](size_t place) { return words[std::min(place, words.size() - 1)]; };
  std::string rare = RareText(board::CountListed() / 2);
  return {words.front(),
          word(30),
          word(300),
          word(3000),
          words.back(),
          rare.substr(0, 6),
          '"' + rare + '"',
          "person17@example17.org",
          "@example3.org",
          "zqxwvkjq",
          "to:person7 " + word(300) + " -" + word(30)};
}

void TimeFinding(Bench& bench) {
  bench.Once("map of the mail read", [] {
    while (!search::Map().Read(1000)) {
    }
  });
  std::printf(
      "\n| searched for | found | first rows, ms of processor | first screen | by the clock | end "
      "| longest step |\n|---|---:|---:|---:|---:|---:|---:|\n");
  auto report = [](const std::string& what, const Found& found) {
    std::printf("| %s | %lld | %.0f | %.0f | %.0f | %.0f | %.0f |\n", what.c_str(),
                static_cast<long long>(found.count), found.rows, found.screen, found.screenByClock,
                found.end, found.longestStep);
    std::fflush(stdout);
  };
  std::vector<std::string> words = WordsByCommonness();
  for (const std::string& text : SearchTexts(words)) report(text, Find(text, true));
  // As a person types it: the next letter comes when the first screen is there.
  std::string word = RareText(board::CountListed() / 3).substr(0, 10);
  Found worst;
  for (size_t letters = 1; letters <= word.size(); ++letters) {
    worst.Worsen(Find(word.substr(0, letters), false));
  }
  report(word + ", typed letter by letter: the slowest", worst);
  std::printf("\n");
  bench.Measure("folders counted", [] { search::Map().Folders(); });
}

void TimeConversations(Bench& bench) {
  bench.Once("conversations read", [] {
    while (!board::PrepareConversations(1000)) {
    }
  });
  board::Board().Conversations.isOn = true;
  bench.Measure(
      "list grouped by conversations", [] { board::GroupList(); },
      [] { List([](board::ListFilter&) {}); });
  std::printf("<!-- %zu -->\n", board::Board().Conversations.listed.size());
  board::Board().Conversations = {};
}

std::vector<board::SelectedMessage> Listed(int64_t first, int64_t count) {
  List([](board::ListFilter&) {});
  jet::Recordset& list = board::Board().ListRecordset;
  std::vector<board::SelectedMessage> messages;
  for (int64_t position = first; position < first + count; ++position) {
    list.SetAbsolutePosition(position);
    messages.push_back({list.Field(board::kId).AsInt(), {}, {}});
  }
  return messages;
}

// A person who waits: for how long at most did nothing move?
class WaitingUi : public testing::ScriptedUi {
 public:
  void ShowProgress(int64_t, int64_t) override { Stir(); }
  void YieldEvents() override { Stir(); }
  void Stir() {
    auto now = std::chrono::steady_clock::now();
    longest_ = std::max(longest_, std::chrono::duration<double, std::milli>(now - last_).count());
    last_ = now;
  }
  // What the longest silence was since the last call.
  double Longest() {
    Stir();
    last_ = std::chrono::steady_clock::now();
    return std::exchange(longest_, 0);
  }

 private:
  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
  double longest_ = 0;
};

void TimeChanges(WaitingUi& ui, const std::string& home) {
  std::printf("\n| what | s | longest silence, ms |\n|---|---:|---:|\n");
  auto once = [&](const char* what, const std::function<void()>& body, bool asks = false) {
    if (asks) ui.yesNo.push_back(true);
    ui.Longest();
    auto began = std::chrono::steady_clock::now();
    body();
    std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    std::printf("| %s | %.2f | %.0f |\n", what, took.count(), ui.Longest());
    std::fflush(stdout);
  };
  auto anew = [] {
    board::RequeryEmailList();
    board::CountListed();
    board::CountIncoming();
    ReadScreen(1);
  };
  int64_t middle = board::CountListed() / 2;
  std::vector<board::SelectedMessage> one = Listed(middle, 1);
  once("one message marked", [&] { board::ToggleActive(one), anew(); });
  once(
      "one message deleted", [&] { board::DeleteMessages(one), anew(); }, true);
  std::vector<board::SelectedMessage> many = Listed(middle / 2, std::min<int64_t>(10000, middle));
  once("10,000 messages marked", [&] { board::ToggleActive(many), anew(); });
  once(
      "10,000 messages deleted", [&] { board::DeleteMessages(many), anew(); }, true);
  once("related messages shown", [&] {
    List([](board::ListFilter& filter) { filter.Subject = "netel"; });
    board::CountIncoming();
  });
  std::string file = platform::WithSeparator(home) + "scale.twb";
  List([](board::ListFilter& filter) { filter.Active = true; });
  int64_t hot = board::CountListed();
  once("hot messages exported",
       [&] { maintenance::ExportEmails(file, board::Board().ListRecordset); });
  ui.yesNo.clear();
  maintenance::MergeOptions options{maintenance::Duplicates::kKeep,
                                    maintenance::UnknownSenders::kAccept};
  once("the same merged", [&] { maintenance::twMakeMarge(file, options); });
  std::printf("<!-- %lld -->\n", static_cast<long long>(hot));
  platform::RemoveFile(file);
  List([](board::ListFilter&) {});
  once(
      "every message marked not hot", [&] { board::MarkAllNotHot(), anew(); }, true);
  once("backup", [&] { maintenance::MakeBackup(file); });
  platform::RemoveFile(file);
  once("every message exported",
       [&] { maintenance::ExportEmails(file, board::Board().ListRecordset); });
  platform::RemoveFile(file);
}

void TimeEverything(Bench& bench, const std::string& home) {
  auto everything = [] { List([](board::ListFilter&) {}); };
  bench.Measure(
      "repository opened", [&] { OpenHome(home); },
      [] {
        board::ResetBoard();
        repository::DisconnectRepository();
      });
  bench.Measure("first list after that", everything, [&] {
    board::ResetBoard();
    repository::DisconnectRepository();
    OpenHome(home);
  });
  bench.Once("- its counts", [] { board::CountIncoming(); });
  TimeLists(bench);
  everything();
  TimeSearches(bench);
  everything();
  std::mt19937_64 random(3);
  bench.Measure("jump to any row", [&] {
    auto count = static_cast<uint64_t>(board::CountListed());
    ReadScreen(static_cast<int64_t>(1 + random() % count));
  });
  bench.Measure("names for the box of correspondents", [] { board::ContactNames(); });
  bench.Measure("names for the box of files", [] { board::AttachmentNames(); });
  bench.Measure("contact book opened", [] {
    jet::Recordset book;
    contacts::OpenContactList(book, "");
    book.RecordCount();
    for (int i = 0; i < kScreenRows && !book.Eof(); ++i, book.MoveNext()) book.Field(0).AsText();
  });
  bench.Measure("part of a contact's name", [] {
    jet::Recordset book;
    contacts::OpenContactList(book, "tan");
    book.RecordCount();
    for (int i = 0; i < kScreenRows && !book.Eof(); ++i, book.MoveNext()) book.Field(0).AsText();
  });
  everything();
  TimeFinding(bench);
}

struct Wanted {
  bool onlyConversations = false;
  bool write = false;
};

int Run(const std::string& home, int runs, Wanted wanted) {
  WaitingUi ui;
  Bench bench(runs);
  OpenHome(home);
  bench.Measure("scan of the list's index", ScanIndex);
  if (!wanted.onlyConversations) TimeEverything(bench, home);
  List([](board::ListFilter&) {});
  TimeConversations(bench);
  List([](board::ListFilter&) {});
  if (wanted.write) TimeChanges(ui, home);
  std::printf("\n%lld messages; peak memory %ld kB; repository %llu kB\n",
              static_cast<long long>(board::CountListed()), PeakKilobytes(),
              static_cast<unsigned long long>(
                  platform::FileSize(platform::WithSeparator(home) + "Tarnwick.twr") / 1024));
  board::ResetBoard();
  repository::DisconnectRepository();
  return 0;
}

}  // namespace
}  // namespace tarnwick

int main(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  auto takes = [&](const char* option) { return std::erase(words, option) > 0; };
  tarnwick::Wanted wanted = {takes("--conversations"), takes("--write")};
  if (words.empty() || words.size() > 2) {
    std::cerr << "usage: tarnwick-scale HOME [RUNS] [--conversations] [--write]" << std::endl;
    return 2;
  }
  try {
    return tarnwick::Run(words[0], words.size() == 2 ? std::atoi(words[1].c_str()) : 5, wanted);
  } catch (const tarnwick::Error& error) {
    std::cerr << error.Number() << " " << error.Description() << std::endl;
    return 1;
  }
}
