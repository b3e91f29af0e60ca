// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The strip over the list: how the mail of the filter spreads over the years, whatever dates the
// list is narrowed to, or who wrote most of the listed mail. It counts while nothing else happens,
// and not at all while it is disabled or hidden; until the new figures are there, for a moment at
// most, it shows the old ones.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <optional>
#include <string>

#include "repository/elided_label_view.h"
#include "timeline/correspondents_view.h"
#include "timeline/plot_view.h"
#include "timeline/query.h"

class QStackedWidget;
class QToolButton;

namespace tarnwick::timeline {

class TimelineView : public QWidget {
  Q_OBJECT

 public:
  explicit TimelineView(QWidget* parent = nullptr);

  // The list shows these messages now; correspondent is the text for a name that it is filtered by.
  // Where something is searched for, AddFound tells what is shown.
  void Follow(const Scope& scope, const std::string& correspondent);
  // What the search of the scope has found since the last call; isAll: it is through. Dates that
  // narrow a search take no days away that it was counted for before.
  void AddFound(const std::vector<FoundMessage>& messages, bool isAll);
  // Messages came, went or changed. What the strip was disabled for counts as such.
  void Forget();

  // Something is still to be counted.
  bool IsCounting() const { return work_.isActive(); }
  TimelinePlotView& Plot() { return *plot_; }
  CorrespondentsView& Correspondents() { return *correspondents_; }

 signals:
  void DatesAskedFor(DateTime from, DateTime to);
  // For the list's correspondent; empty: everybody.
  void NameAskedFor(const QString& text);

 protected:
  void changeEvent(QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* BuildHead();
  void Begin();
  void Work();
  void ShowCounts();
  void ShowText();
  void ShowCorrespondents(bool on);
  void BeginCorrespondents();
  void FollowSearch();
  const DayCounts& Counts() const { return found_ ? found_->counts : reader_.Counts(); }
  bool IsToldAll() const { return found_ ? found_->isWhole : !reader_.IsRunning(); }
  void ShowPeople();

  repository::ElidedLabel* text_ = nullptr;
  QToolButton* allDates_ = nullptr;
  QWidget* legend_ = nullptr;
  QToolButton* showCorrespondents_ = nullptr;
  QStackedWidget* pages_ = nullptr;
  TimelinePlotView* plot_ = nullptr;
  CorrespondentsView* correspondents_ = nullptr;

  std::optional<Scope> scope_;
  bool begun_ = false;  // the counts are those of the scope, or becoming so
  QTimer work_;         // fires when nothing else is to be done
  QElapsedTimer since_;
  TimelineReader reader_;
  CorrespondentReader correspondentReader_;
  std::string correspondentsOf_;  // the query that they answer
  struct Found {
    Scope scope;  // whose days are counted
    DayCounts counts;
    bool isWhole = false;
    bool countsDays = true;               // of the search that is under way; else they are known
    std::map<int64_t, int64_t> messages;  // of it, by contacts
  };
  std::optional<Found> found_;
  QString told_;
};

}  // namespace tarnwick::timeline
