// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/load_actions.h"

#include <QFileDialog>
#include <algorithm>

#include "board/list_query.h"
#include "board/load_log.h"
#include "core/run_state.h"
#include "repository/file_place.h"

namespace tarnwick::board {

using core::State;

LoadActions::LoadActions(const BoardParts& parts, BoardWork& work, ListActions& list,
                         QObject* parent)
    : QObject(parent), parts_(parts), work_(work), list_(list) {
  const BoardActions& actions = *parts.actions;
  connect(actions.loadFromMailer, &QAction::triggered, this,
          [this] { Load([] { return LoadFromMailer({}); }); });
  connect(actions.findLost, &QAction::triggered, this, [this] {
    LoadOptions options;
    options.rules = intake::StoredRules();
    options.rules->lostMail = true;
    Load([options] { return LoadFromMailer(options); });
  });
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
      filter.DateFromIsOwn = true;
      filter.DateTo = std::max(filter.DateTo, filter.DateFrom);
    }
    parts_.strip->ShowFilter(filter);
    parts_.strip->ForgetChoices();
    ShowRefresh(list_);
    ShowLastLoaded();
  });
}

void LoadActions::ChooseTextFile() {
  QStringList paths = QFileDialog::getOpenFileNames(
      parts_.window, tr("Select email file"), QString::fromStdString(repository::LastFolder()),
      tr("Email files") + " (*.eml *.txt);;(*.txt);;" + tr("All files") + " (*)");
  if (paths.isEmpty()) return;
  repository::RememberFolderOf(paths.front().toStdString());
  LoadTextFiles(paths);
}

void LoadActions::LoadTextFiles(const QStringList& paths) {
  work_.RunStoppable([&] {
    std::vector<std::string> files;
    for (const QString& path : paths) files.push_back(path.toStdString());
    TakeResult taken = TakeTextFiles(files);
    if (taken.stored == 0) return;
    ListFilter& filter = Board().Filter;
    parts_.strip->ReadFilter(filter);
    if (auto latest = State().LatestReceivedTime) {
      filter.DateFrom = std::min(filter.DateFrom, latest->DatePart());
      filter.DateTo = std::max(filter.DateTo, latest->DatePart());
    }
    parts_.strip->ShowFilter(filter);
    parts_.strip->ForgetChoices();
    ShowRefresh(list_);
    parts_.status->SetPanel(core::StatusPanel::kProgress,
                            taken.stored == 1
                                ? tr("The message is stored.")
                                : tr("%L1 messages are stored.").arg(qlonglong{taken.stored}));
  });
}

}  // namespace tarnwick::board
