// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/contact_grid_view.h"

#include <QHeaderView>
#include <QPainter>
#include <algorithm>

#include "repository/grid_layout.h"

namespace tarnwick::contacts {

namespace {

// A width for each column: that of such a text.
constexpr const char* kWidest[] = {"Christopher Longfellow-Smith",
                                   "12 Elm Street, Old Town",
                                   "+44 20 7946 0123",
                                   "+44 20 7946 0123",
                                   "+44 20 7946 0123",
                                   "What one should know"};
constexpr int kCellMargins = 20;

}  // namespace

ContactGridView::ContactGridView(QWidget* parent)
    : GridView(parent), model_(new ContactListModel(this)) {
  setObjectName("tblMeContacts");
  setAccessibleName(tr("Contacts"));
  setModel(model_);
  setSelectionMode(SingleSelection);
  horizontalHeader()->setStretchLastSection(true);
  for (int column = 0; column < kContactId; ++column) {
    setColumnWidth(column, fontMetrics().horizontalAdvance(kWidest[column]) + kCellMargins);
  }
  setColumnHidden(kContactId, true);
}

int64_t ContactGridView::SelectedId() const {
  QModelIndexList rows = selectionModel()->selectedRows();
  return rows.isEmpty() ? 0 : model_->IdAt(rows.first().row());
}

void ContactGridView::SelectRow(int row) {
  if (row < 0 || row >= model_->rowCount()) {
    clearSelection();
    return;
  }
  selectRow(row);
  scrollTo(model_->index(row, 0));
}

void ContactGridView::ApplyWidths(const std::map<int, int>& twips) {
  for (const auto& [column, width] : twips) {
    int pixels = width / repository::kTwipsPerPixel;
    // A column that is drawn shut could not be found again.
    if (column != kContactId && pixels > 0) setColumnWidth(column, pixels);
  }
}

void ContactGridView::SetHint(const QString& hint) {
  hint_ = hint;
  setAccessibleDescription(model_->rowCount() == 0 ? hint : QString());
  viewport()->update();
}

void ContactGridView::keyboardSearch(const QString& search) {
  QString word = TypeOn(search).word;
  int rows = model_->rowCount();
  if (rows == 0 || word.trimmed().isEmpty()) return;
  int64_t before = CountBefore(model_->NameFilter(), word.toStdString());
  setCurrentIndex(model_->index(static_cast<int>(std::min<int64_t>(before, rows - 1)), kName));
}

void ContactGridView::paintEvent(QPaintEvent* event) {
  GridView::paintEvent(event);
  if (model_->rowCount() != 0 || hint_.isEmpty()) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(viewport()->rect().adjusted(24, 24, -24, -24),
                   Qt::AlignCenter | Qt::TextWordWrap, hint_);
}

}  // namespace tarnwick::contacts
