// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/load_actions.h"

#include <QFileDialog>
#include <QLabel>
#include <algorithm>

#include "board/list_query.h"
#include "board/load_log.h"
#include "core/run_state.h"
#include "platform/locale.h"

namespace tarnwick::board {

using core::State;

LoadActions::LoadActions(const BoardParts& parts, BoardWork& work, ListActions& list,
                         QObject* parent)
    : QObject(parent), parts_(parts), work_(work), list_(list) {
  const BoardActions& actions = *parts.actions;
  connect(actions.loadFromMailer, &QAction::triggered, this,
          [this] { Load([] { return LoadFromMailer({}); }); });
  connect(actions.loadTextFile, &QAction::triggered, this, &LoadActions::ChooseTextFile);
  connect(actions.lastLoad, &QAction::triggered, this,
          [this] { work_.Run([] { ShowLoadLog(); }); });
}

void LoadActions::Load(const std::function<LoadResult()>& load) {
  work_.RunStoppable([&] {
    parts_.grid->SetHint(tr("Loading..."), tr("The messages are listed when the load ends."));
    LoadResult result = load();
    list_.UpdateHint();
    if (!result.ran) return;
    ListFilter& filter = Board().Filter;
    parts_.strip->ReadFilter(filter);
    if (auto latest = State().LatestReceivedTime) {
      // So that the list shows what was loaded.
      filter.DateFrom = latest->DatePart();
      filter.DateFromGrows = false;
      filter.DateTo = std::max(filter.DateTo, filter.DateFrom);
    }
    parts_.strip->ShowFilter(filter);
    list_.FillChoices();
    ShowRefresh(list_);
    ShowLastLoaded();
    ShowNotice();
  });
}

// A load narrows the list to what it brought last; nobody should miss the rest.
void LoadActions::ShowNotice() {
  DateTime from = Board().Filter.DateFrom;
  if (from <= WholeDateRange().from) {
    parts_.notice->hide();
    return;
  }
  QString day = QString::fromStdString(platform::FormatDate(from, "ddddd")).toHtmlEscaped();
  parts_.notice->setText(tr("The list begins on %1, the day of the latest message loaded. "
                            "<a href=\"all\">Show all messages</a>")
                             .arg(day));
  parts_.notice->show();
}

void LoadActions::ChooseTextFile() {
  QString path = QFileDialog::getOpenFileName(parts_.window, tr("Select email file"), {},
                                              "(*.txt);;" + tr("All files") + " (*)");
  if (!path.isEmpty()) LoadTextFile(path);
}

void LoadActions::LoadTextFile(const QString& path) {
  work_.Run([&] {
    parts_.status->SetPanel(core::StatusPanel::kProgress, {});
    if (TakeTextFiles({path.toStdString()}).stored == 0) return;
    ListFilter& filter = Board().Filter;
    parts_.strip->ReadFilter(filter);
    if (auto latest = State().LatestReceivedTime) {
      filter.DateFrom = std::min(filter.DateFrom, latest->DatePart());
      filter.DateTo = std::max(filter.DateTo, latest->DatePart());
    }
    parts_.strip->ShowFilter(filter);
    list_.FillChoices();
    ShowRefresh(list_);
    parts_.status->SetPanel(core::StatusPanel::kProgress, tr("The message is stored."));
  });
}

}  // namespace tarnwick::board
