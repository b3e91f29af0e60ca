// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/list_actions.h"

#include <QLabel>

#include "board/found_list.h"
#include "board/list_query.h"
#include "board/message_commands.h"
#include "board/search_watch.h"
#include "board/timeline_scope.h"
#include "core/run_state.h"
#include "repository/repository.h"
#include "search/conversations.h"

namespace tarnwick::board {

namespace {

// A little now and then: nobody notices, and a million messages are searchable in minutes.
constexpr int kPrepareEveryMilliseconds = 50;
constexpr int64_t kPrepareMilliseconds = 20;

}  // namespace

ListActions::ListActions(const BoardParts& parts, BoardWork& work, QObject* parent)
    : QObject(parent), parts_(parts), work_(work) {
  connect(parts.actions->showAll, &QAction::triggered, this, &ListActions::ShowEverything);
  connect(parts.actions->showRelated, &QAction::triggered, this, &ListActions::ShowRelated);
  connect(parts.strip, &FilterStripView::FilterChanged, this, &ListActions::Refresh);
  connect(parts.strip, &FilterStripView::LastBoxLeft, parts.grid, qOverload<>(&QWidget::setFocus));
  connect(parts.grid, &EmailGridView::SortAskedFor, parts.strip, &FilterStripView::SortBy);
  connect(parts.strip, &FilterStripView::ChoicesAskedFor, this,
          [this](FilterStripView::Choices list) {
            if (work_.IsRunning()) return;  // the engine may be
            bool areContacts = list == FilterStripView::Choices::kContacts;
            parts_.strip->SetChoices(list, areContacts ? ContactNames() : AttachmentNames());
          });
  ConnectTimeline();
  connect(parts.otherDates, &OtherDatesView::AllDatesAskedFor, this,
          [this] { RefreshWith(TakeEveryDate); });
  prepare_.setInterval(kPrepareEveryMilliseconds);
  connect(&prepare_, &QTimer::timeout, this, &ListActions::PrepareSearch);
  connect(&work, &BoardWork::Ended, &prepare_, qOverload<>(&QTimer::start));
  connect(&work, &BoardWork::Ended, parts.strip, &FilterStripView::AskForChoices);
  // Reading ahead waits while somebody goes through the list.
  connect(parts.grid, &EmailGridView::CurrentChanged, this, [this] {
    if (prepare_.isActive()) prepare_.start();
  });
}

void ListActions::ConnectTimeline() {
  using timeline::TimelineView;
  connect(parts_.timeline, &TimelineView::DatesAskedFor, this, [this](DateTime from, DateTime to) {
    RefreshWith([&](ListFilter& filter) {
      DateRange whole = WholeDateRange();
      filter.DateFrom = from, filter.DateTo = to;
      filter.DateFromIsOwn = false;
      filter.DateFromGrows = from == whole.from, filter.DateToGrows = to == whole.to;
    });
  });
  connect(parts_.timeline, &TimelineView::NameAskedFor, this, [this](const QString& text) {
    RefreshWith([&](ListFilter& filter) { filter.FromTo = text.toStdString(); });
  });
}

void ListActions::SetDataSource(jet::Recordset& list, bool placeholder) {
  const ListFilter& filter = Board().Filter;
  parts_.grid->Bind(list, placeholder, keepPlace_, Board().Conversations.listed);
  keepPlace_ = false;
  parts_.grid->ShowSort(filter.SortBy, filter.SortOrder);
  timeline::Scope scope = TimelineScope(filter);
  scope.search = SearchName();
  parts_.timeline->Follow(scope, filter.FromTo);
  // It counts by the filter alone.
  parts_.otherDates->Follow(scope, filter.DateFromIsOwn && !IsSearching());
  UpdateHint();
  emit Bound();
  prepare_.start();
  // The rows are there; the counts that come next may take a look at every message.
  if (parts_.grid->isVisible()) parts_.grid->viewport()->repaint();
}

void ListActions::ShowFilter(const ListFilter& filter) {
  parts_.strip->ShowFilter(filter);
}

void ListActions::DescribeCounts(int64_t received, int64_t sent) {
  int64_t total = received + sent;
  QString messages = total == 1 ? tr("1 message") : tr("%L1 messages").arg(qlonglong{total});
  parts_.status->ExplainPanel(
      core::StatusPanel::kCounts,
      tr("%1: %L2 received, %L3 sent").arg(messages).arg(qlonglong{received}).arg(qlonglong{sent}));
}

void ListActions::UpdateHint() {
  const ListFilter& filter = Board().Filter;
  auto hasMark = [](const std::string& text) {
    return text.find_first_of("'\"") != std::string::npos;
  };
  bool inSubject = hasMark(filter.Subject);
  QString noMatch = tr("No message matches the filter.");
  if (repository::HasNoEmail()) {
    parts_.grid->SetHint(
        tr("There is no mail in this repository yet."),
        tr("Choose \"Load from Mailer\" to take it from an old Windows profile or a "
           "folder with *.dbx or *.pst files."));
  } else if (inSubject || (hasMark(filter.FromTo) && !filter.FromToIsListed)) {
    parts_.grid->SetHint(
        noMatch, tr("The box \"%1\" holds an apostrophe or quotation mark. Such a mark is looked "
                    "for as an underscore (_), so the message it was copied from is not found, "
                    "either. Shorten the text to a part without it.")
                     .arg(inSubject ? tr("Subject") : tr("From/To")));
  } else {
    parts_.grid->SetHint(noMatch,
                         tr("Change it above, or choose \"Show All\" to list every message."));
  }
}

// A query that takes long can be stopped; meanwhile the list stands still, for the engine is at
// work on it.
void ListActions::List() {
  auto freeze = [this](bool on) {
    parts_.grid->setUpdatesEnabled(!on);
    parts_.grid->setEnabled(!on);
  };
  bool isListed = false;
  bool tookLong = false;
  {
    SearchWatch watch([&] {
      work_.Begin();
      freeze(true);
      parts_.status->SetPanel(core::StatusPanel::kProgress, tr("Searching..."));
      parts_.status->SetBusy(true);
    });
    isListed = ShowRefresh(*this);
    tookLong = watch.HasBegun();
  }
  if (!tookLong) return;
  freeze(false);
  work_.End();
  emit LongSearchEnded();
  parts_.status->SetPanel(
      core::StatusPanel::kProgress,
      isListed ? QString() : tr("The search was stopped; the list is as it was."));
}

void ListActions::PrepareSearch() {
  if (work_.IsRunning() || core::State().LoadIsRunning) return;
  if (repository::PrepareSearch(kPrepareMilliseconds) && PrepareMap(kPrepareMilliseconds)) {
    prepare_.stop();
  }
}

void ListActions::Refresh() {
  if (work_.IsRunning()) return;
  parts_.notice->hide();
  parts_.strip->ReadFilter(Board().Filter);
  List();
}

void ListActions::RefreshWith(const std::function<void(ListFilter&)>& change) {
  if (work_.IsRunning()) return;
  ListFilter filter = Board().Filter;
  parts_.strip->ReadFilter(filter);
  change(filter);
  ShowFilter(filter);
  Refresh();
}

void ListActions::ListAnew(bool changed) {
  if (!changed) return;
  keepPlace_ = true;
  parts_.timeline->Forget();
  RequeryEmailList();
  BindEmailList(*this);
}

void ListActions::ListRepository() {
  repository::NoteWhetherEmpty();
  search::Map().Forget();
  search::AllConversations().Forget();
  parts_.strip->ForgetChoices();
  ShowRefresh(*this);
}

// Empties the filter but for the subject; the order stays.
void ListActions::ListEvery(const std::string& subject) {
  ListFilter every = EveryMessage();
  const ListFilter& now = Board().Filter;
  every.SortBy = now.SortBy;
  every.SortOrder = now.SortOrder;
  every.Project = now.Project;
  every.Subject = subject;
  Board().Filter = every;
  emit EverythingAskedFor();
  parts_.notice->hide();
  ShowFilter(every);
  List();
}

void ListActions::ShowEverything() {
  ListEvery({});
}

void ListActions::ShowRelated() {
  SelectedMessage message = parts_.grid->Current();
  if (message.id == 0) {
    ShowNothingSelected();
  } else {
    ListEvery(RelatedSubject(message.subject));
  }
}

}  // namespace tarnwick::board
