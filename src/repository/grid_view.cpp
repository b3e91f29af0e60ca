// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/grid_view.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <algorithm>

#include "platform/clock.h"
#include "repository/grid_layout.h"

namespace tarnwick::repository {

namespace {

// More rows than anyone pastes; an archive holds a hundred thousand.
constexpr size_t kMostCopied = 50000;

}  // namespace

GridView::GridView(QWidget* parent) : EvenRowsView(parent) {
  setSelectionBehavior(SelectRows);
  setEditTriggers(NoEditTriggers);
  setAlternatingRowColors(true);
  setWordWrap(false);
  setTabKeyNavigation(false);
  setContextMenuPolicy(Qt::ActionsContextMenu);
  SetRowHeight(fontMetrics().height() + 8);
  horizontalHeader()->setHighlightSections(false);
}

std::vector<int> GridView::Widths() const {
  std::vector<int> widths;
  for (int column = 0; column < model()->columnCount(); ++column) {
    widths.push_back(isColumnHidden(column) ? 0 : columnWidth(column) * kTwipsPerPixel);
  }
  return widths;
}

// By ranges: one for each row of a selection of all takes seconds.
std::vector<int> GridView::SelectedRows() const {
  std::vector<int> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

void GridView::CopySelected(int firstColumn) const {
  std::vector<int> rows = SelectedRows();
  rows.resize(std::min(rows.size(), kMostCopied));
  QString text;
  for (int row : rows) {
    QStringList cells;
    for (int column = firstColumn; column < model()->columnCount(); ++column) {
      if (!isColumnHidden(column)) cells << model()->index(row, column).data().toString();
    }
    text += cells.join('\t') + '\n';
  }
  if (!text.isEmpty()) QApplication::clipboard()->setText(text);
}

GridView::Typed GridView::TypeOn(const QString& typed) {
  qint64 now = platform::TickMilliseconds();
  bool goesOn = now - typedAt_ < QApplication::keyboardInputInterval();
  typedAt_ = now;
  word_ = goesOn ? word_ + typed : typed;
  return {word_, goesOn};
}

}  // namespace tarnwick::repository
