// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/list_model.h"

#include <QFont>
#include <algorithm>
#include <limits>

#include "board/list_signs_view.h"
#include "core/guard.h"
#include "repository/plain_text_view.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

constexpr int kHotColumn = GridColumn(kActive);
constexpr int kSubjectColumn = GridColumn(kSubject);
// Some screens full; a row is a few hundred bytes.
constexpr size_t kCachedRows = 1024;

}  // namespace

void ListModel::Bind(jet::Recordset& list, bool placeholder) {
  beginResetModel();
  list_ = &list;
  placeholder_ = placeholder;
  frozen_ = false;
  cache_.clear();
  rows_ = core::Guarded(
      "BindEmailList", 0,
      [&] {
        int64_t count = list.IsOpen() ? list.RecordCount() : 0;
        return static_cast<int>(std::min<int64_t>(count, std::numeric_limits<int>::max()));
      },
      core::Report::kLog);
  endResetModel();
}

void ListModel::Grow() {
  int64_t count = list_ != nullptr && list_->IsOpen() && !placeholder_ ? list_->RecordCount() : 0;
  int rows = static_cast<int>(std::min<int64_t>(count, std::numeric_limits<int>::max()));
  if (rows <= rows_) return;
  beginInsertRows({}, rows_, rows - 1);
  rows_ = rows;
  endInsertRows();
}

ListModel::Row ListModel::Read(jet::Recordset& list, int row, bool placeholder) {
  Row result;
  list.SetAbsolutePosition(int64_t{row} + 1);
  int place = 0;
  for (size_t field = 0; field < result.fields.size() && place < list.FieldCount(); ++field) {
    if (placeholder && !repository::kListColumns[field].isInPlaceholder) continue;
    result.fields[field] = list.Field(place++).AsText();
  }
  // The placeholder's own key is no message's.
  if (!placeholder) result.id = list.Field(kId).AsInt();
  std::string importance = result.fields[kImportance];
  std::transform(importance.begin(), importance.end(), importance.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
  result.important = importance == "HIGH";
  result.hot = result.fields[kActive] == "+";
  if (result.id == 0) return result;
  // Not among the columns of the list query, whose text is fixed.
  jet::Recordset more;
  more.Open("SELECT FilesNum, State FROM Email WHERE ID=" + std::to_string(result.id),
            repository::RepositoryDb());
  if (more.Eof()) return result;
  result.hasFiles = more.Field(0).AsInt() > 0;
  result.state = intake::StateOfStored(more.Field(1).AsText());
  return result;
}

const ListModel::Row& ListModel::RowAt(int row) const {
  auto cached = cache_.find(row);
  if (cached != cache_.end()) return cached->second;
  if (frozen_) {
    static const Row kNotRead;
    return kNotRead;
  }
  if (cache_.size() >= kCachedRows) cache_.clear();
  Row read;
  if (list_->IsOpen()) {
    // Painting must not bring up boxes, which would paint again: the log has it.
    core::GuardedRun(
        "EmailGrid", [&] { read = Read(*list_, row, placeholder_); }, core::Report::kLog);
  }
  return cache_.emplace(row, std::move(read)).first->second;
}

int64_t ListModel::IdAt(int row) const {
  return row >= 0 && row < rows_ ? RowAt(row).id : 0;
}

int64_t ListModel::IdOnlyAt(int row) const {
  if (row < 0 || row >= rows_ || placeholder_ || frozen_ || !list_->IsOpen()) return 0;
  return core::Guarded(
      "EmailGrid", int64_t{0},
      [&] {
        list_->SetAbsolutePosition(int64_t{row} + 1);
        return list_->Field(kId).AsInt();
      },
      core::Report::kLog);
}

int ListModel::RowOf(int64_t id) const {
  if (placeholder_ || list_ == nullptr || !list_->IsOpen()) return -1;
  return core::Guarded(
      "EmailGrid", -1, [&] { return static_cast<int>(list_->PositionOfKey(id)) - 1; },
      core::Report::kLog);
}

std::string ListModel::SubjectAt(int row) const {
  return row >= 0 && row < rows_ ? RowAt(row).fields[kSubject] : std::string();
}

std::string ListModel::ApplicationAt(int row) const {
  return row >= 0 && row < rows_ ? RowAt(row).fields[kApplication] : std::string();
}

int ListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int ListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kGridColumns;
}

QString ListModel::Text(const Row& row, int column) const {
  if (column == kMarkColumn) {
    return row.important ? QStringLiteral("!") : QString();
  }
  QString text = QString::fromStdString(row.fields[static_cast<size_t>(column - 1)]);
  // A folded header would break the row in two.
  return text.simplified();
}

QString ListModel::AccessibleText(const Row& row, int column) const {
  if (column == kMarkColumn) {
    QStringList marks;
    if (row.important) marks << tr("High importance");
    if (row.hasFiles) marks << tr("Has attachments");
    return marks.join(", ");
  }
  if (column == kHotColumn) return row.hot ? tr("Hot") : QString();
  QString text = Text(row, column);
  if (column != kSubjectColumn) return text;
  QString state = StateText(row.state);
  return state.isEmpty() || text.isEmpty() ? text + state : text + QStringLiteral(", ") + state;
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
    return {};
  }
  int column = index.column();
  switch (role) {
    case Qt::DisplayRole:
      return Text(RowAt(index.row()), column);
    case Qt::DecorationRole:
      if (column == kMarkColumn && RowAt(index.row()).hasFiles) return Paperclip();
      if (column == kSubjectColumn) return StateSigns(RowAt(index.row()).state);
      return {};
    case Qt::ToolTipRole:
      if (column == kMarkColumn || column == kHotColumn || column == kSubjectColumn) {
        return repository::TipText(AccessibleText(RowAt(index.row()), column));
      }
      return repository::TipText(Text(RowAt(index.row()), column));
    case Qt::AccessibleTextRole:
      return AccessibleText(RowAt(index.row()), column);
    case Qt::TextAlignmentRole:
      if (column == kMarkColumn || column == kHotColumn) return Qt::AlignCenter;
      return {};
    case Qt::ForegroundRole:
      if (column == kMarkColumn) return MarkColor();
      return {};
    case Qt::FontRole:
      if (column == kMarkColumn || RowAt(index.row()).hot || RowAt(index.row()).state.IsUnread()) {
        QFont font;
        font.setBold(true);
        return font;
      }
      return {};
    default:
      return {};
  }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kGridColumns) return {};
  if (role == Qt::DisplayRole) {
    if (section == kMarkColumn) return QString();
    return tr(repository::kListColumns[static_cast<size_t>(section - 1)].caption);
  }
  if (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole) {
    if (section == kMarkColumn) return tr("Importance and attachments");
  }
  if (role == Qt::TextAlignmentRole) {
    if (section == kHotColumn) return Qt::AlignCenter;
    return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
  }
  return {};
}

}  // namespace tarnwick::board
