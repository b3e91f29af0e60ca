// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Listing: from the controls of the filter to the rows in the grid, the timeline and the status
// bar.
#pragma once

#include <QTimer>
#include <cstdint>
#include <functional>
#include <string>

#include "board/board_work_actions.h"
#include "board/email_list.h"

namespace tarnwick::board {

class ListActions : public QObject, public ListForm {
  Q_OBJECT

 public:
  ListActions(const BoardParts& parts, BoardWork& work, QObject* parent);

  // Lists what the controls ask for.
  void Refresh();
  // The same as if the person had changed the controls so.
  void RefreshWith(const std::function<void(ListFilter&)>& change);
  // After rows were changed in the open list; the current row stays the one of its number.
  void ListAnew(bool changed);
  // After a command that changed the repository as a whole.
  void ListRepository();

  // What stands over an empty list.
  void UpdateHint();

  void SetDataSource(jet::Recordset& list, bool placeholder) override;
  void ShowFilter(const ListFilter& filter) override;
  void DescribeCounts(int64_t received, int64_t sent) override;

 signals:
  // A search of some length has ended, for which nothing could read from the repository.
  void LongSearchEnded();
  // The grid shows other rows.
  void Bound();
  // All that narrows is to go, but for a subject perhaps; the filter has gone already.
  void EverythingAskedFor();

 private:
  void ConnectTimeline();
  void List();
  void ListEvery(const std::string& subject);
  void ShowEverything();
  void ShowRelated();
  void PrepareSearch();

  const BoardParts parts_;
  BoardWork& work_;
  QTimer prepare_;          // while there is nothing else to do
  bool keepPlace_ = false;  // the next binding keeps the current row
};

}  // namespace tarnwick::board
