// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/found_list.h"

#include <algorithm>

#include "board/list_query.h"
#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/user_interface.h"
#include "platform/clock.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

using platform::TickMilliseconds;

// Until then nobody has noticed that the list was not there.
constexpr int64_t kAtOnceMilliseconds = 70;
constexpr size_t kScreen = 60;
constexpr int64_t kStepMilliseconds = 12;
constexpr size_t kMostTaken = 100000;

// The messages that are looked at: all but the texts of the filter, which are tested along with the
// terms, and what of the query the list's index tells.
std::string LookedAtWhere(const search::Query& query) {
  ListFilter filter = Board().Filter;
  filter.Subject.clear();
  filter.MailText.clear();
  if (query.from) filter.DateFrom = std::max(filter.DateFrom, *query.from);
  if (query.to) filter.DateTo = std::min(filter.DateTo, *query.to);
  filter.AttachedFile = filter.AttachedFile || query.hasFile.value_or(false);
  std::string where = BuildListWhere(filter);
  if (query.hasFile && !*query.hasFile) where += " AND FilesNum = 0";
  return where;
}

void AddTexts(const ListFilter& filter, search::Request& request) {
  auto add = [&](const char* column, const std::string& text, const std::string& condition) {
    if (text.empty()) return;
    request.condition += (request.condition.empty() ? "" : " AND ") + condition;
    std::string sought = SoughtWord(text);
    // What stands for any character is no text that is held.
    if (sought.find_first_of("%_") == std::string::npos) request.held.push_back({column, sought});
  };
  if (!filter.Subject.empty()) add("Subject", filter.Subject, SubjectCondition(filter));
  if (!filter.MailText.empty()) add("Body", filter.MailText, MailTextCondition(filter));
}

std::vector<int64_t> KeysOf(const std::string& where, const std::string& sort) {
  jet::Recordset rows;
  OpenListOn(rows, ListQueryText(where, sort));
  return rows.Keys();
}

}  // namespace

bool IsSearching() {
  const FoundState& found = Board().Found;
  return found.folder || !search::ParseQuery(found.text).IsEmpty();
}

bool IsListGrowing() {
  const FoundState& found = Board().Found;
  return found.run != nullptr && !found.run->IsDone();
}

void BeginSearch(jet::Recordset& list) {
  FoundState& found = Board().Found;
  int64_t end = TickMilliseconds() + kAtOnceMilliseconds;
  search::Request request{search::ParseQuery(found.text), found.folder};
  AddTexts(Board().Filter, request);
  std::vector<int64_t> messages =
      KeysOf(LookedAtWhere(request.query), ListSortClause(Board().Filter));
  auto run = std::make_shared<search::Run>(std::move(request), std::move(messages));
  while (run->Found() < kScreen && TickMilliseconds() < end && run->Step(kStepMilliseconds)) {
  }
  list.Hold(run->TakeHits());
  found.run = std::move(run);
  found.ForgetCounts();
}

Growth GrowList(int64_t milliseconds) {
  return core::Guarded("GrowList", Growth::kNone, [&] {
    BoardState& board = Board();
    // Gone, unless the step succeeds.
    std::shared_ptr<search::Run> run = std::exchange(board.Found.run, nullptr);
    if (run == nullptr || run->IsDone()) {
      board.Found.run = std::move(run);
      return Growth::kNone;
    }
    run->Step(milliseconds);
    std::vector<int64_t> hits = run->TakeHits();
    Growth growth = Growth::kNone;
    if (!hits.empty() && board.ListIsPlaceholder) {
      jet::Recordset list;
      OpenListOn(list, ListQueryText(board.LastWhere, ListSortClause(board.Filter)));
      list.Hold(hits);
      board.ListRecordset = std::move(list);
      board.ListIsPlaceholder = false;
      board.Found.ForgetCounts();
      growth = Growth::kFirst;
    } else if (!hits.empty()) {
      board.ListRecordset.HoldMore(hits);
      growth = Growth::kMore;
    }
    board.Found.run = std::move(run);
    return growth;
  });
}

bool CompleteList() {
  if (!IsListGrowing()) return true;
  core::RunState& state = core::State();
  state.ImportCancelFlag = false;
  while (IsListGrowing() && !state.ImportCancelFlag) {
    GrowList(kStepMilliseconds * 4);
    if (state.Ui != nullptr) state.Ui->ShowProgress(SearchedPercent(), 100);
    core::YieldEvents();
  }
  bool isComplete = Board().Found.run != nullptr && Board().Found.run->IsDone();
  if (state.Ui != nullptr) state.Ui->ShowProgress(100, 100);
  state.ImportCancelFlag = false;
  return isComplete;
}

bool PrepareMap(int64_t milliseconds) {
  return core::Guarded(
      "PrepareMap", true, [&] { return search::Map().Read(milliseconds); }, core::Report::kLog);
}

std::vector<search::Folder> CountedFolders() {
  return core::Guarded(
      "CountedFolders", std::vector<search::Folder>(), [] { return search::Map().Folders(); },
      core::Report::kLog);
}

std::string SearchName() {
  if (!IsSearching() || search::Map().IsUnfit()) return {};
  const FoundState& found = Board().Found;
  if (!found.folder) return found.text + '\n';
  return found.text + '\n' + found.folder->first + '\n' + found.folder->second;
}

std::vector<timeline::FoundMessage> TakeFound() {
  std::vector<timeline::FoundMessage> taken;
  core::GuardedRun(
      "TakeFound",
      [&] {
        if (Board().ListIsPlaceholder || !search::Map().IsComplete()) return;
        std::vector<int64_t> keys = Board().ListRecordset.Keys();
        size_t& told = Board().Found.told;
        for (size_t end = std::min(keys.size(), told + kMostTaken); told < end; ++told) {
          auto traits = search::Map().Of(keys[told]);
          if (traits) taken.push_back({traits->day, traits->isReceived, traits->contact});
        }
      },
      core::Report::kLog);
  return taken;
}

bool IsAllTaken() {
  return !IsListGrowing() && static_cast<int64_t>(Board().Found.told) >= CountListed();
}

int SearchedPercent() {
  const FoundState& found = Board().Found;
  if (found.run == nullptr || found.run->Total() == 0) return 100;
  return static_cast<int>(found.run->Looked() * 100 / found.run->Total());
}

int64_t CountFoundIncoming() {
  BoardState& board = Board();
  FoundState& found = board.Found;
  if (board.ListIsPlaceholder) return 0;
  if (!found.incoming) {
    found.incoming.emplace();
    found.counted = found.countedIncoming = 0;
    std::string where = LookedAtWhere(search::ParseQuery(found.text)) + " AND Direction='In'";
    for (int64_t key : KeysOf(where, "")) found.incoming->Add(key);
  }
  std::vector<int64_t> keys = board.ListRecordset.Keys();
  for (auto i = static_cast<size_t>(found.counted); i < keys.size(); ++i) {
    if (found.incoming->Holds(keys[i])) ++found.countedIncoming;
  }
  found.counted = static_cast<int64_t>(keys.size());
  return found.countedIncoming;
}

}  // namespace tarnwick::board
