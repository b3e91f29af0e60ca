// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/even_rows_view.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTest>
#include <random>

#include "support/testing.h"

namespace tarnwick::repository {
namespace {

constexpr int kHeight = 23;
constexpr int kColumns = 5;

std::string StateOf(const QTableView& view) {
  auto cell = [](const QModelIndex& index) {
    return QString("%1,%2 ").arg(index.row()).arg(index.column());
  };
  const QAbstractItemView& items = view;
  QString state = QString("bar %1 of %2, column 2 may be %3 wide, current ")
                      .arg(view.verticalScrollBar()->value())
                      .arg(view.verticalScrollBar()->maximum())
                      .arg(items.sizeHintForColumn(2));
  state += cell(view.currentIndex()) + "at 90,100: " + cell(view.indexAt({90, 100})) + "first ";
  QRect first = view.visualRect(view.model()->index(0, 0));
  state += QString("%1 %2 %3 %4, selected ")
               .arg(first.left())
               .arg(first.top())
               .arg(first.width())
               .arg(first.height());
  for (const QItemSelectionRange& range : view.selectionModel()->selection()) {
    state += cell(range.topLeft()) + "to " + cell(range.bottomRight());
  }
  return state.toStdString();
}

// A plain table with a header for its rows stands beside it: whatever is done to both, they look
// the same.
TEST(EvenRowsView, LooksAndActsLikeATableWithAHeaderForItsRows) {
  QStandardItemModel model(60, kColumns);
  for (int row = 0; row < model.rowCount(); row++) {
    for (int column = 0; column < kColumns; column++) {
      model.setItem(row, column,
                    new QStandardItem(QString("Row %1, column %2").arg(row).arg(column)));
    }
  }
  QWidget window;
  QTableView plain(&window);
  EvenRowsView even(&window);
  plain.setShowGrid(false);
  plain.setHorizontalScrollMode(QTableView::ScrollPerPixel);
  plain.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  plain.verticalHeader()->hide();
  plain.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  plain.verticalHeader()->setDefaultSectionSize(kHeight);
  even.SetRowHeight(kHeight);
  const std::array<QTableView*, 2> both = {&plain, &even};
  for (QTableView* view : both) {
    view->setModel(&model);
    view->setSelectionBehavior(QTableView::SelectRows);
    view->setAlternatingRowColors(true);
    view->setColumnHidden(1, true);
    view->resize(260, 200);
  }
  window.show();
  window.activateWindow();
  EXPECT_EQ(even.verticalHeader()->count(), 0);

  constexpr Qt::Key kKeys[] = {Qt::Key_Up,     Qt::Key_Down,     Qt::Key_Left, Qt::Key_Right,
                               Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End,
                               Qt::Key_Tab,    Qt::Key_Backtab};
  constexpr Qt::KeyboardModifiers kModifiers[] = {Qt::NoModifier, Qt::ShiftModifier,
                                                  Qt::ControlModifier};
  std::mt19937 random(1);
  auto any = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most)); };
  QString done;
  for (int i = 0; i < 1500; i++) {
    const int act = any(20);
    const int row = any(std::max(model.rowCount(), 1));
    const int column = any(kColumns);
    const int number = any(1000);
    done = QString("step %1: act %2, row %3, number %4").arg(i).arg(act).arg(row).arg(number);
    if (act == 0) model.insertRows(row, 1 + number % 3);
    if (act == 1 && number < 400) model.removeRows(row, 1 + number % 3);
    if (act == 2 && number < 100) model.setRowCount(number % 12);
    if (act == 2 && number > 900) model.setRowCount(80);
    if (act == 3) model.setData(model.index(row, column), number);
    std::array<QImage, 2> pictures;
    for (QTableView* view : both) {
      view->setFocus();
      QPoint point(number % 250, number % 170);
      if (act == 4) view->resize(150 + number % 300, 60 + number % 230);
      if (act == 5) view->scrollTo(model.index(row, column), QTableView::ScrollHint(number % 4));
      if (act == 6) view->verticalScrollBar()->setValue(number % 70);
      if (act == 7) view->clearSelection(), view->selectRow(row);
      if (act == 8) view->setColumnHidden(column, number % 3 == 0 && column != 0);
      if (act == 9) view->setLayoutDirection(number % 4 == 0 ? Qt::RightToLeft : Qt::LeftToRight);
      if (act == 10) view->selectAll();
      if (act == 11 || act == 12) {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, kModifiers[number % 3], point);
      }
      if (act > 12) QTest::keyClick(view, kKeys[number % 10], kModifiers[row % 3]);
      QApplication::processEvents();
      if (i % 10 == 0) pictures[view == &even] = view->grab().toImage();
    }
    SCOPED_TRACE(done.toStdString());
    ASSERT_EQ(StateOf(even), StateOf(plain));
    ASSERT_EQ(pictures[1], pictures[0]);
  }
}

}  // namespace
}  // namespace tarnwick::repository
