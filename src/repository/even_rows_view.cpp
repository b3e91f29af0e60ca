// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/even_rows_view.h"

#include <QCursor>
#include <QHeaderView>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStringListModel>
#include <algorithm>
#include <limits>

namespace tarnwick::repository {

namespace {

// What lies outside of all viewports by far, in numbers that can still be added.
int InPixels(qint64 place) {
  constexpr qint64 kFar = qint64{1} << 29;
  return static_cast<int>(std::clamp(place, -kFar, kFar));
}

}  // namespace

EvenRowsView::EvenRowsView(QWidget* parent)
    : QTableView(parent), noRows_(new QStringListModel(this)) {
  setShowGrid(false);
  setHorizontalScrollMode(ScrollPerPixel);
  // Always there, so that the columns that fill the width do so for any number of rows, and the
  // base class need not know of these.
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  verticalHeader()->hide();
}

void EvenRowsView::setModel(QAbstractItemModel* newModel) {
  if (model() != nullptr) model()->disconnect(this);
  QTableView::setModel(newModel);
  verticalHeader()->setModel(noRows_);
  if (newModel != nullptr) {
    connect(newModel, &QAbstractItemModel::rowsRemoved, this, &EvenRowsView::RowsChanged);
  }
}

int EvenRowsView::Rows() const {
  return model() != nullptr ? model()->rowCount(rootIndex()) : 0;
}

// The last row stands at the foot when it is in sight, and the first at the top else.
qint64 EvenRowsView::OffsetAt(int first) const {
  if (first > 0 && first == verticalScrollBar()->maximum()) {
    return qint64{Rows()} * rowHeight_ - viewport()->height();
  }
  return qint64{first} * rowHeight_;
}

qint64 EvenRowsView::TopOf(int row) const {
  return qint64{row} * rowHeight_ - OffsetAt(verticalScrollBar()->value());
}

int EvenRowsView::RowAt(int y) const {
  qint64 place = y + OffsetAt(verticalScrollBar()->value());
  return place >= 0 && place / rowHeight_ < Rows() ? static_cast<int>(place / rowHeight_) : -1;
}

int EvenRowsView::verticalOffset() const {
  return InPixels(OffsetAt(verticalScrollBar()->value()));
}

bool EvenRowsView::isIndexHidden(const QModelIndex& index) const {
  return isColumnHidden(index.column());
}

QRect EvenRowsView::visualRect(const QModelIndex& index) const {
  if (!index.isValid() || index.model() != model() || isIndexHidden(index)) return {};
  return {columnViewportPosition(index.column()), InPixels(TopOf(index.row())),
          columnWidth(index.column()), rowHeight_};
}

QModelIndex EvenRowsView::indexAt(const QPoint& point) const {
  int row = RowAt(point.y());
  int column = columnAt(point.x());
  return row >= 0 && column >= 0 ? model()->index(row, column, rootIndex()) : QModelIndex();
}

void EvenRowsView::scrollTo(const QModelIndex& index, ScrollHint hint) {
  if (!index.isValid() || index.model() != model() || isIndexHidden(index)) return;
  // The scroll bars may not know of the present rows yet.
  executeDelayedItemsLayout();
  ScrollColumnIntoSight(index.column(), hint);
  int height = viewport()->height();
  qint64 top = TopOf(index.row());
  if (hint == EnsureVisible) {
    if (top < 0 || rowHeight_ > height) {
      hint = PositionAtTop;
    } else if (top + rowHeight_ > height) {
      hint = PositionAtBottom;
    }
  }
  int above = 0;
  if (hint == PositionAtBottom) above = std::max(height / rowHeight_ - 1, 0);
  if (hint == PositionAtCenter) above = std::max(height / 2 / rowHeight_ - 1, 0);
  if (hint != EnsureVisible) verticalScrollBar()->setValue(index.row() - above);
  update(index);
}

void EvenRowsView::ScrollColumnIntoSight(int column, ScrollHint hint) {
  int width = viewport()->width();
  int left = horizontalHeader()->sectionPosition(column);
  int right = left + columnWidth(column);
  int offset = horizontalHeader()->offset();
  if (hint == PositionAtCenter) {
    horizontalScrollBar()->setValue(left - (width - columnWidth(column)) / 2);
  } else if (left < offset) {
    horizontalScrollBar()->setValue(left);
  } else if (right > offset + width) {
    horizontalScrollBar()->setValue(right - width);
  }
}

int EvenRowsView::ShownColumn(int visual, int step) const {
  const QHeaderView& header = *horizontalHeader();
  while (visual >= 0 && visual < header.count() && isColumnHidden(header.logicalIndex(visual))) {
    visual += step;
  }
  return visual >= 0 && visual < header.count() ? visual : -1;
}

// What a double click on the edge of its header makes it as wide as: of the rows in sight and those
// about them, as many in all as the header is told to look at.
int EvenRowsView::sizeHintForColumn(int column) const {
  if (model() == nullptr) return -1;
  ensurePolished();
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  const int most = horizontalHeader()->resizeContentsPrecision();
  const int first = std::clamp(RowAt(0) - most / 2, 0, std::max(Rows() - most, 0));
  const int end = std::min(Rows(), first + most);
  int width = 0;
  for (int row = first; row < end; row++) {
    QModelIndex index = model()->index(row, column, rootIndex());
    width = std::max(width, itemDelegateForIndex(index)->sizeHint(option, index).width());
  }
  return width;
}

QModelIndex EvenRowsView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
  executeDelayedItemsLayout();
  const int last = Rows() - 1;
  const int first = ShownColumn(0, 1);
  const int end = ShownColumn(horizontalHeader()->count() - 1, -1);
  if (last < 0 || first < 0) return {};
  if (!currentIndex().isValid()) {
    return model()->index(0, horizontalHeader()->logicalIndex(first), rootIndex());
  }
  int row = currentIndex().row();
  int column = horizontalHeader()->visualIndex(currentIndex().column());
  const bool toEnds = (modifiers & Qt::ControlModifier) != 0;
  const QRect place = visualRect(currentIndex());
  if (isRightToLeft() && (action == MoveLeft || action == MoveRight)) {
    action = action == MoveLeft ? MoveRight : MoveLeft;
  }
  // What leads out of the table leads nowhere.
  switch (action) {
    case MoveUp:
      row--;
      break;
    case MoveDown:
      row++;
      break;
    case MovePageUp:
      row = std::max(RowAt(place.bottom() - viewport()->height()), 0);
      break;
    case MovePageDown:
      row = RowAt(place.top() + viewport()->height());
      if (row < 0) row = last;
      break;
    case MoveHome:
      column = first;
      if (toEnds) row = 0;
      break;
    case MoveEnd:
      column = end;
      if (toEnds) row = last;
      break;
    case MovePrevious:
    case MoveNext: {
      const int step = action == MoveNext ? 1 : -1;
      const bool wraps = column == (step > 0 ? end : first);
      if (wraps) row = (row + step + last + 1) % (last + 1);
      column = wraps ? (step > 0 ? first : end) : ShownColumn(column + step, step);
      break;
    }
    case MoveLeft:
      column = ShownColumn(column - 1, -1);
      break;
    case MoveRight:
      column = ShownColumn(column + 1, 1);
      break;
  }
  if (row < 0 || row > last || column < 0) return {};
  return model()->index(row, horizontalHeader()->logicalIndex(column), rootIndex());
}

QRegion EvenRowsView::visualRegionForSelection(const QItemSelection& selection) const {
  QRegion region;
  for (const QItemSelectionRange& range : selection) {
    int top = InPixels(TopOf(range.top()));
    QRect rows(0, top, viewport()->width(), InPixels(TopOf(range.bottom() + 1)) - top);
    region += rows.intersected(viewport()->rect());
  }
  return region;
}

// The base class, for which there are no rows, must not move the scroll bar on the way.
void EvenRowsView::updateGeometries() {
  QScrollBar& bar = *verticalScrollBar();
  const int value = bar.value();
  {
    QSignalBlocker quiet(bar);
    QTableView::updateGeometries();
    bar.setRange(0, std::numeric_limits<int>::max());
    bar.setValue(value);
  }
  bool fitsWidth = horizontalHeader()->length() <= maximumViewportSize().width();
  bool fitsHeight = qint64{Rows()} * rowHeight_ <= maximumViewportSize().height();
  int height = fitsWidth && fitsHeight ? maximumViewportSize().height() : viewport()->height();
  int page = std::clamp(height / rowHeight_, 1, std::max(Rows(), 1));
  bar.setPageStep(page);
  bar.setSingleStep(1);
  bar.setRange(0, std::max(Rows() - page, 0));
  qint64 offset = OffsetAt(bar.value());
  if (offset != offset_) viewport()->update();
  offset_ = offset;
}

void EvenRowsView::scrollContentsBy(int dx, int dy) {
  if (dx != 0) QTableView::scrollContentsBy(dx, 0);
  if (dy == 0) return;
  qint64 offset = OffsetAt(verticalScrollBar()->value());
  viewport()->scroll(0, InPixels(offset_ - offset));
  offset_ = offset;
}

void EvenRowsView::rowsInserted(const QModelIndex& parent, int first, int last) {
  QTableView::rowsInserted(parent, first, last);
  RowsChanged();
}

void EvenRowsView::RowsChanged() {
  updateGeometries();
  viewport()->update();
}

void EvenRowsView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                               const QList<int>& roles) {
  QTableView::dataChanged(topLeft, bottomRight, roles);
  viewport()->update(visualRegionForSelection({topLeft, bottomRight}));
}

void EvenRowsView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  QModelIndex hovered;
  if (viewport()->underMouse()) hovered = indexAt(viewport()->mapFromGlobal(QCursor::pos()));
  const QRect area = event->rect();
  const int last = Rows() - 1;
  int row = RowAt(std::max(area.top(), 0));
  for (; row >= 0 && row <= last && TopOf(row) <= area.bottom(); row++) {
    option.features.setFlag(QStyleOptionViewItem::Alternate,
                            alternatingRowColors() && row % 2 != 0);
    for (int visual = 0; visual < horizontalHeader()->count(); visual++) {
      QModelIndex index =
          model()->index(row, horizontalHeader()->logicalIndex(visual), rootIndex());
      option.rect = visualRect(index);
      if (option.rect.intersects(area)) DrawCell(painter, option, index, hovered);
    }
  }
}

void EvenRowsView::DrawCell(QPainter& painter, const QStyleOptionViewItem& row,
                            const QModelIndex& index, const QModelIndex& hovered) {
  QStyleOptionViewItem cell = row;
  cell.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
  cell.state.setFlag(QStyle::State_MouseOver, index == hovered);
  if ((cell.state & QStyle::State_Enabled) != 0) {
    bool isEnabled = (model()->flags(index) & Qt::ItemIsEnabled) != 0;
    cell.state.setFlag(QStyle::State_Enabled, isEnabled);
    cell.palette.setCurrentColorGroup(isEnabled ? QPalette::Normal : QPalette::Disabled);
  }
  cell.state.setFlag(QStyle::State_HasFocus,
                     index == currentIndex() && (hasFocus() || viewport()->hasFocus()));
  style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &cell, &painter, this);
  itemDelegateForIndex(index)->paint(&painter, cell, index);
}

}  // namespace tarnwick::repository
