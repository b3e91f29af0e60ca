// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/email_grid_view.h"

#include <QElapsedTimer>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <algorithm>
#include <utility>

#include "board/layout_store.h"
#include "board/list_signs_view.h"
#include "platform/locale.h"

namespace tarnwick::board {

namespace {

using repository::ListColumn;
using repository::ListWidth;

constexpr int kFirstColumn = GridColumn(0);  // behind the mark
constexpr int kSubjectColumn = GridColumn(kSubject);
constexpr int kNarrowestSubject = 120;

int WidthInPixels(const ListColumn& column, const QFontMetrics& metrics) {
  auto wide = [&](const QString& text) { return metrics.horizontalAdvance(text) + 24; };
  DateTime wideDate = DateTime::FromDate(2008, 12, 28).WithTime(20, 58, 58);
  switch (column.width) {
    case ListWidth::kCaption:
      return wide(ListModel::tr(column.caption));
    case ListWidth::kSortedCaption:
      return wide(ListModel::tr(column.caption)) + 16;
    case ListWidth::kDate:
      return wide(QString::fromStdString(platform::FormatDate(wideDate, "ddddd hh:mm")));
    case ListWidth::kCharacters:
      return metrics.averageCharWidth() * column.amount;
    case ListWidth::kPixels:
      return column.amount;
    case ListWidth::kHidden:
      break;
  }
  return 0;
}

}  // namespace

EmailGridView::EmailGridView(QWidget* parent) : GridView(parent), model_(new ListModel(this)) {
  setObjectName("EmailGrid");
  setAccessibleName(tr("Messages"));
  setModel(model_);
  setSelectionMode(ExtendedSelection);
  QHeaderView* header = horizontalHeader();
  header->setMinimumSectionSize(20);
  header->setSectionsClickable(true);
  header->setSortIndicatorShown(true);
  connect(header, &QHeaderView::sectionClicked, this, [this](int column) {
    if (column == kMarkColumn) return;
    int sort = repository::kListColumns[static_cast<size_t>(column - 1)].sort;
    if (sort != 0) emit SortAskedFor(static_cast<ListSort>(sort));
  });
  SetDefaultWidths();
}

void EmailGridView::SetDefaultWidths() {
  setColumnWidth(kMarkColumn,
                 WidthInPixels({.caption = "!88", .width = ListWidth::kCaption}, fontMetrics()));
  for (const ListColumn& column : repository::kListColumns) {
    int width = WidthInPixels(column, fontMetrics());
    setColumnHidden(column.place, width == 0);
    if (width != 0) setColumnWidth(column.place, width);
  }
}

void EmailGridView::Bind(jet::Recordset& list, bool placeholder, bool keepPlace,
                         const std::vector<ListedConversation>& conversations) {
  int row = currentIndex().row();
  const Held held = std::exchange(held_, {});
  model_->Bind(list, placeholder, conversations);
  int rows = placeholder ? 0 : model_->rowCount();
  if (rows == 0) {
    viewport()->update();
  } else if (!SelectAgain(held)) {
    if (keepPlace && row >= 0 && !held.ids.empty()) {
      selectRow(std::min(row, rows - 1));
    } else {
      scrollToTop();
    }
  }
  emit CurrentChanged();
}

// False when none of them is listed any more.
bool EmailGridView::SelectAgain(const Held& held) {
  QItemSelection rows;
  QModelIndex current;
  for (int64_t id : held.ids) {
    int row = model_->RowOf(id);
    if (row < 0) continue;
    QModelIndex index = model_->index(row, kSubjectColumn);
    rows.select(index, index);
    if (!current.isValid() || id == held.current) current = index;
  }
  if (!current.isValid()) return false;
  selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
  scrollTo(current);
  return true;
}

// Remembers what is selected by its numbers: the next query may put it elsewhere. Of very many only
// the current one.
void EmailGridView::Hold() {
  constexpr int64_t kMostHeld = 200;
  held_ = {};
  if (SelectedCount() == 0) return;
  held_.current = model_->IdOnlyAt(currentIndex().row());
  if (SelectedCount() > kMostHeld) {
    held_.ids = {held_.current};
    return;
  }
  for (int row : SelectedRows()) held_.ids.push_back(model_->IdOnlyAt(row));
}

void EmailGridView::Freeze() {
  model_->Freeze();
}

SelectedMessage EmailGridView::MessageAt(int row) const {
  return {model_->IdAt(row), model_->SubjectAt(row), model_->ApplicationAt(row)};
}

std::vector<SelectedMessage> EmailGridView::Selected() const {
  std::vector<int> rows = SelectedRows();
  if (rows.size() == 1 && model_->IdAt(rows[0]) != 0) return {MessageAt(rows[0])};
  std::vector<SelectedMessage> messages;
  messages.reserve(rows.size());
  for (int row : rows) {
    if (int64_t id = model_->IdOnlyAt(row); id != 0) messages.push_back({id, {}, {}});
  }
  return messages;
}

int64_t EmailGridView::SelectedCount() const {
  int64_t count = 0;
  if (model_->IsPlaceholder()) return count;
  for (const QItemSelectionRange& range : selectionModel()->selection()) count += range.height();
  return count;
}

std::vector<int64_t> EmailGridView::SelectedIds() const {
  std::vector<int64_t> ids;
  for (const SelectedMessage& message : Selected()) ids.push_back(message.id);
  return ids;
}

SelectedMessage EmailGridView::Current() const {
  int row = -1;
  if (currentIndex().isValid() && selectionModel()->isRowSelected(currentIndex().row())) {
    row = currentIndex().row();
  } else {
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
      if (row < 0 || range.top() < row) row = range.top();
    }
  }
  return model_->IdAt(row) == 0 ? SelectedMessage() : MessageAt(row);
}

void EmailGridView::ApplyWidths(const std::map<int, int>& twips, bool sameWindow) {
  for (const auto& [column, width] : twips) {
    int pixels = width / kTwipsPerPixel;
    setColumnHidden(column, pixels == 0);
    if (pixels != 0) setColumnWidth(column, pixels);
  }
  fitsWindow_ = sameWindow && twips.count(kSubjectColumn) != 0;
}

void EmailGridView::SetHint(const QString& title, const QString& advice) {
  hintTitle_ = title;
  hintAdvice_ = advice;
  setAccessibleDescription(model_->IsPlaceholder() ? title + ' ' + advice : QString());
  viewport()->update();
}

void EmailGridView::ShowSort(ListSort sort, ListOrder order) {
  for (const ListColumn& column : repository::kSortColumns) {
    if (static_cast<ListSort>(column.sort) != sort) continue;
    horizontalHeader()->setSortIndicator(
        column.place, order == ListOrder::kAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
  }
}

void EmailGridView::CopySelected() const {
  GridView::CopySelected(kFirstColumn);
}

void EmailGridView::keyboardSearch(const QString& search) {
  auto [word, goesOn] = TypeOn(search);
  int rows = model_->rowCount();
  if (word.isEmpty() || rows == 0 || model_->IsPlaceholder()) return;
  int column = std::max(currentIndex().column(), kFirstColumn);
  // A first letter moves on from the current row, a longer word may stay on it.
  int row = std::max(currentIndex().row(), 0) + (goesOn ? 0 : 1);
  QElapsedTimer timer;
  timer.start();
  for (int looked = 0; looked < rows && timer.elapsed() < 200; ++looked, ++row) {
    QModelIndex index = model_->index(row % rows, column);
    if (index.data().toString().startsWith(word, Qt::CaseInsensitive)) {
      setCurrentIndex(index);
      return;
    }
  }
}

void EmailGridView::paintEvent(QPaintEvent* event) {
  GridView::paintEvent(event);
  if (!model_->IsPlaceholder() || hintTitle_.isEmpty()) return;
  QPainter painter(viewport());
  QFont bold = font();
  bold.setBold(true);
  bold.setPointSizeF(bold.pointSizeF() * 1.2);
  int line = QFontMetrics(bold).height();
  QRect area = viewport()->rect().adjusted(24, RowHeight(), -24, 0);
  painter.setFont(bold);
  painter.setPen(palette().color(QPalette::Text));
  QRect title(area.left(), area.center().y() - 2 * line, area.width(), line);
  painter.drawText(title, Qt::AlignCenter, hintTitle_);
  painter.setFont(font());
  painter.setPen(palette().color(QPalette::PlaceholderText));
  QRect advice(area.left(), title.bottom() + line / 2, area.width(),
               area.bottom() - title.bottom());
  painter.drawText(advice, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, hintAdvice_);
}

void EmailGridView::FitSubject() {
  int others = 0;
  for (int column = 0; column < kGridColumns; ++column) {
    if (column != kSubjectColumn && !isColumnHidden(column)) others += columnWidth(column);
  }
  setColumnWidth(kSubjectColumn, std::max(viewport()->width() - others, kNarrowestSubject));
}

void EmailGridView::resizeEvent(QResizeEvent* event) {
  // The row that was in sight stays there: a letter with attachments takes room from the list.
  QModelIndex current = currentIndex();
  bool wasSeen =
      current.isValid() && QRect(QPoint(), event->oldSize()).intersects(visualRect(current));
  int before = event->oldSize().width();
  bool filled = horizontalHeader()->length() == before;
  bool squeezed = columnWidth(kSubjectColumn) == kNarrowestSubject;
  GridView::resizeEvent(event);
  // Columns that the person drew narrower or wider than the window stay as they are.
  if (settled_ && event->size().width() != before && (filled || squeezed)) FitSubject();
  if (wasSeen) scrollTo(current);
}

void EmailGridView::selectionChanged(const QItemSelection& selected,
                                     const QItemSelection& deselected) {
  GridView::selectionChanged(selected, deselected);
  Hold();
  emit CurrentChanged();
}

void EmailGridView::Enter() {
  setFocus();
  bool hasRows = model_->rowCount() > 0 && !model_->IsPlaceholder();
  if (!currentIndex().isValid() && hasRows) selectRow(0);
}

// The base class makes the first cell current, which looks half selected.
void EmailGridView::focusInEvent(QFocusEvent* event) {
  bool hadCurrent = currentIndex().isValid();
  GridView::focusInEvent(event);
  if (!hadCurrent && selectionModel() != nullptr) selectionModel()->clearCurrentIndex();
}

// What is selected among rows that go is the conversation's first letter from then on.
void EmailGridView::SetOpen(int row, bool open) {
  bool isInside = model_->FirstOf(currentIndex().row()) == row;
  if (!open && isInside) setCurrentIndex(model_->index(row, currentIndex().column()));
  model_->SetOpen(row, open);
}

void EmailGridView::keyPressEvent(QKeyEvent* event) {
  using Part = ListModel::Part;
  bool isRight = event->key() == Qt::Key_Right;
  bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
  if (!isPlain || (!isRight && event->key() != Qt::Key_Left)) return GridView::keyPressEvent(event);
  int row = currentIndex().row();
  Part part = model_->PartAt(row);
  if (isRight && part == Part::kClosed) {
    SetOpen(row, true);
  } else if (!isRight && (part == Part::kOpen || part == Part::kInside)) {
    SetOpen(model_->FirstOf(row), false);
  } else {
    GridView::keyPressEvent(event);
  }
}

void EmailGridView::mousePressEvent(QMouseEvent* event) {
  using Part = ListModel::Part;
  QModelIndex index = indexAt(event->pos());
  Part part = model_->PartAt(index.row());
  constexpr int kMargin = 6;
  bool isTriangle = event->button() == Qt::LeftButton && index.column() == kSubjectColumn &&
                    event->pos().x() < visualRect(index).left() + kMargin + kSignWidth;
  if (isTriangle && (part == Part::kClosed || part == Part::kOpen)) {
    SetOpen(index.row(), part == Part::kClosed);
    return;
  }
  GridView::mousePressEvent(event);
}

void EmailGridView::showEvent(QShowEvent* event) {
  GridView::showEvent(event);
  if (settled_) return;
  if (!fitsWindow_) FitSubject();
  settled_ = true;
}

}  // namespace tarnwick::board
