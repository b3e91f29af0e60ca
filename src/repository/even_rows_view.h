// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A table whose rows are all of one height. It looks and acts like the QTableView that it is, with
// rows that cannot be moved, hidden, drawn higher or spanned. But the vertical header, which would
// keep a few bytes for each row and go over all of them whenever the model is reset, has none:
// where a row stands is its number times the height.
#pragma once

#include <QTableView>

namespace tarnwick::repository {

class EvenRowsView : public QTableView {
  Q_OBJECT

 public:
  explicit EvenRowsView(QWidget* parent = nullptr);

  // Of each row, in pixels.
  int RowHeight() const { return rowHeight_; }
  // REQUIRES: pixels > 0. Before there is a model.
  void SetRowHeight(int pixels) { rowHeight_ = pixels; }

  void setModel(QAbstractItemModel* model) override;
  QRect visualRect(const QModelIndex& index) const override;
  QModelIndex indexAt(const QPoint& point) const override;
  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

 protected:
  int sizeHintForColumn(int column) const override;
  int verticalOffset() const override;
  bool isIndexHidden(const QModelIndex& index) const override;
  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
  QRegion visualRegionForSelection(const QItemSelection& selection) const override;
  void updateGeometries() override;
  void scrollContentsBy(int dx, int dy) override;
  void paintEvent(QPaintEvent* event) override;
  void rowsInserted(const QModelIndex& parent, int first, int last) override;
  void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                   const QList<int>& roles) override;

 private:
  int Rows() const;
  // Its edge in the viewport, which may lie far outside.
  qint64 TopOf(int row) const;
  qint64 OffsetAt(int first) const;
  // What is at a height of the viewport; -1 for nothing.
  int RowAt(int y) const;
  // The next column that is shown, in the order on the screen; -1 where there is none.
  int ShownColumn(int visual, int step) const;
  void ScrollColumnIntoSight(int column, ScrollHint hint);
  void RowsChanged();
  void DrawCell(QPainter& painter, const QStyleOptionViewItem& row, const QModelIndex& index,
                const QModelIndex& hovered);

  QAbstractItemModel* noRows_;  // of the vertical header
  int rowHeight_ = 24;
  qint64 offset_ = 0;  // of the viewport in the rows, in pixels, as it was last drawn
};

}  // namespace tarnwick::repository
