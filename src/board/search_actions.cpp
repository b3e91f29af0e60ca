// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/search_actions.h"

#include <QDockWidget>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>

#include "board/found_list.h"
#include "board/list_query.h"
#include "platform/locale.h"
#include "repository/date_range.h"
#include "repository/repository.h"
#include "search/folder_panel_view.h"
#include "search/mail_map.h"
#include "search/search_box_view.h"

namespace tarnwick::board {

namespace {

constexpr int64_t kStepMilliseconds = 12;
// How often the counts of a list that grows are shown.
constexpr qint64 kShowMilliseconds = 200;
constexpr int kCountEveryMilliseconds = 300;
constexpr int kTellEveryMilliseconds = 50;

// Whether the filter's dates leave mail out.
bool IsOfSomeDates() {
  repository::DateRange whole = repository::WholeDateRange();
  return Board().Filter.DateFrom > whole.from || Board().Filter.DateTo < whole.to;
}

QString NothingFoundAdvice() {
  if (!IsOfSomeDates()) {
    return SearchActions::tr(
        "Change its words, or empty the search box with Escape. The filter below the box narrows "
        "the search, too.");
  }
  auto shown = [](DateTime date) {
    return QString::fromStdString(platform::FormatDate(date, "ddddd"));
  };
  return SearchActions::tr(
             "Only mail from %1 to %2 is searched, as the filter below the box says. Widen its "
             "dates, or change the words.")
      .arg(shown(Board().Filter.DateFrom), shown(Board().Filter.DateTo));
}

}  // namespace

SearchActions::SearchActions(const BoardParts& parts, BoardWork& work, ListActions& list,
                             QObject* parent)
    : QObject(parent),
      parts_(parts),
      work_(work),
      list_(list),
      dock_(new QDockWidget(tr("Folders"), parts.window)),
      find_(new QAction(tr("&Search"), parts.window)),
      showFolders_(new QAction(tr("&Folders"), parts.window)) {
  dock_->setObjectName("FolderDock");
  dock_->setAllowedAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
  dock_->setFeatures(QDockWidget::DockWidgetMovable);
  dock_->setWidget(parts.folders);
  dock_->hide();
  parts.window->addDockWidget(Qt::LeftDockWidgetArea, dock_);
  AddActions();
  Connect();
}

void SearchActions::AddActions() {
  find_->setObjectName("mnViewSearch");
  find_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_K));
  find_->setToolTip(tr("Goes to the search box"));
  showFolders_->setObjectName("mnViewFolders");
  showFolders_->setCheckable(true);
  showFolders_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F));
  showFolders_->setToolTip(tr("Shows the folders of the mail program beside the list"));
  auto* view = parts_.window->menuBar()->findChild<QMenu*>("mnuView");
  if (view != nullptr) view->addActions({showFolders_, find_});
}

void SearchActions::Connect() {
  using search::FolderPanelView;
  using search::SearchBoxView;
  connect(find_, &QAction::triggered, parts_.search, &SearchBoxView::Enter);
  connect(parts_.search, &SearchBoxView::SearchAskedFor, this, &SearchActions::Search);
  connect(parts_.search, &SearchBoxView::Left, parts_.grid, &EmailGridView::Enter);
  connect(&list_, &ListActions::Bound, this, &SearchActions::Follow);
  connect(&list_, &ListActions::EverythingAskedFor, this, &SearchActions::Forget);
  connect(showFolders_, &QAction::toggled, this, &SearchActions::SetFoldersShown);
  connect(parts_.folders, &FolderPanelView::FolderChosen, this, &SearchActions::ChooseFolder);
  connect(parts_.folders, &FolderPanelView::AllChosen, this, &SearchActions::ChooseAll);
  connect(parts_.folders, &FolderPanelView::SearchChosen, parts_.search, &SearchBoxView::Search);
  connect(parts_.folders, &FolderPanelView::SaveAskedFor, this, &SearchActions::SaveSearch);
  connect(parts_.folders, &FolderPanelView::RemoveAskedFor, this, &SearchActions::RemoveSearch);
  connect(&grow_, &QTimer::timeout, this, &SearchActions::Grow);
  tell_.setSingleShot(true);
  connect(&tell_, &QTimer::timeout, this, &SearchActions::TellTimeline);
  count_.setInterval(kCountEveryMilliseconds);
  connect(&count_, &QTimer::timeout, this, &SearchActions::CountFolders);
  connect(&work_, &BoardWork::Ended, this, [this] {
    if (showFolders_->isChecked()) count_.start();
  });
}

void SearchActions::Load() {
  search::Map().Forget();
  Forget();
  parts_.folders->ShowSearches(search::SavedSearches());
  showFolders_->setChecked(search::ReadFoldersShown());
  if (showFolders_->isChecked()) count_.start();
}

void SearchActions::Search(const QString& text) {
  Board().Found.text = text.toStdString();
  Narrow();
}

void SearchActions::ChooseFolder(const QString& identity, const QString& name) {
  Board().Found.folder.emplace(identity.toStdString(), name.toStdString());
  Narrow();
}

// A search goes over all mail: the dates that a load chose go. Those that the person chose stay.
void SearchActions::Narrow() {
  list_.RefreshWith([](ListFilter& filter) {
    if (filter.DateFromIsOwn && IsSearching()) TakeEveryDate(filter);
  });
}

void SearchActions::ChooseAll() {
  Board().Found.folder.reset();
  list_.Refresh();
}

// The next list is one of the filter alone.
void SearchActions::Forget() {
  Board().Found.text.clear();
  Board().Found.folder.reset();
  parts_.search->ShowText({});
  parts_.folders->ShowChosen({});
}

// The list was bound.
void SearchActions::Follow() {
  Board().Found.told = 0;
  parts_.folders->ShowChosen(Board().Found.folder);
  parts_.folders->SetCanSave(!parts_.search->Text().trimmed().isEmpty());
  if (IsListGrowing()) {
    grow_.start();
  } else {
    grow_.stop();
  }
  ShowState();
}

void SearchActions::Grow() {
  // What runs may be asking the engine; the search goes on behind it.
  if (work_.IsRunning()) return;
  switch (GrowList(kStepMilliseconds)) {
    case Growth::kFirst:
      // Follow comes of it.
      BindEmailList(list_);
      return;
    case Growth::kMore:
      parts_.grid->Model().Grow();
      break;
    case Growth::kNone:
      break;
  }
  if (!IsListGrowing()) {
    grow_.stop();
    if (Board().Conversations.isOn) {
      BindEmailList(list_);
      return;
    }
  } else if (sinceShown_.isValid() && sinceShown_.elapsed() < kShowMilliseconds) {
    return;
  }
  ShowCounts(list_);
  ShowState();
}

void SearchActions::ShowState() {
  sinceShown_.start();
  bool searches = IsSearching();
  if (searches) tell_.start(0);
  if (searches && Board().ListIsPlaceholder && !repository::HasNoEmail()) {
    if (IsListGrowing()) {
      parts_.grid->SetHint(tr("Searching..."), {});
    } else {
      parts_.grid->SetHint(tr("No message matches the search."), NothingFoundAdvice());
    }
  }
  if (!searches && !told_) return;
  auto found = qlonglong{CountListed()};
  QString text;
  if (searches && IsListGrowing()) {
    text = tr("Searching... %L1 found so far (%2 %)").arg(found).arg(SearchedPercent());
  } else if (searches) {
    text = (IsOfSomeDates() ? tr("%L1 found within the dates of the filter") : tr("%L1 found"))
               .arg(found);
  }
  parts_.status->SetPanel(core::StatusPanel::kProgress, text);
  told_ = searches;
}

// What has been found so far; while the list grows ShowState asks again.
void SearchActions::TellTimeline() {
  if (!IsSearching()) return;
  if (work_.IsRunning() || !PrepareMap(kStepMilliseconds)) {
    return tell_.start(kTellEveryMilliseconds);
  }
  std::vector<timeline::FoundMessage> found = TakeFound();
  parts_.timeline->AddFound(found, IsAllTaken());
  if (!found.empty() && !IsListGrowing() && !IsAllTaken()) tell_.start(0);
}

void SearchActions::SetFoldersShown(bool on) {
  dock_->setVisible(on);
  search::SaveFoldersShown(on);
  if (on) {
    parts_.folders->ShowFolders({});
    count_.start();
    CountFolders();
  } else {
    count_.stop();
    if (Board().Found.folder) ChooseAll();
  }
}

// The map is read while nothing else is to be done; a little more of it here, for somebody waits.
void SearchActions::CountFolders() {
  if (work_.IsRunning() || !PrepareMap(2 * kStepMilliseconds)) return;
  count_.stop();
  parts_.folders->ShowFolders(CountedFolders());
}

void SearchActions::SaveSearch() {
  QString text = parts_.search->Text().trimmed();
  bool isGiven = false;
  QString name = QInputDialog::getText(parts_.window, tr("Save Search"), tr("Name"),
                                       QLineEdit::Normal, text, &isGiven)
                     .trimmed();
  if (!isGiven || name.isEmpty()) return;
  search::SaveSearch({name.toStdString(), text.toStdString()});
  parts_.folders->ShowSearches(search::SavedSearches());
}

void SearchActions::RemoveSearch(const QString& name) {
  search::RemoveSearch(name.toStdString());
  parts_.folders->ShowSearches(search::SavedSearches());
}

}  // namespace tarnwick::board
