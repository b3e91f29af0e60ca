// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/list_model.h"

#include <QFont>
#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

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

void ListModel::Bind(jet::Recordset& list, bool placeholder,
                     std::vector<ListedConversation> conversations) {
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
  conversations_ = std::move(conversations);
  ShowGroups();
  endResetModel();
}

// The first letters, and the others of what is open.
void ListModel::ShowGroups() {
  shown_.clear();
  if (!IsGrouped() || conversations_.back().start >= rows_) {
    conversations_.clear();
    return;
  }
  std::set<int> open;
  for (int64_t id : opened_) open.insert(PlaceOfId(id));
  shown_.reserve(conversations_.size());
  for (size_t group = 0; group < conversations_.size(); ++group) {
    int place = conversations_[group].start;
    shown_.push_back(place);
    bool isOpen = !open.empty() && open.contains(place);
    while (isOpen && ++place < EndOf(group)) shown_.push_back(place);
  }
}

size_t ListModel::GroupOf(int place) const {
  auto behind =
      std::upper_bound(conversations_.begin(), conversations_.end(), place,
                       [](int at, const ListedConversation& each) { return at < each.start; });
  return static_cast<size_t>(behind - conversations_.begin()) - 1;
}

int ListModel::EndOf(size_t group) const {
  return group + 1 < conversations_.size() ? conversations_[group + 1].start : rows_;
}

ListModel::Part ListModel::PartAt(int row) const {
  if (!IsGrouped() || row < 0 || row >= rowCount()) return Part::kAlone;
  int place = PlaceOf(row);
  size_t group = GroupOf(place);
  if (place != conversations_[group].start) return Part::kInside;
  if (EndOf(group) == place + 1) return Part::kAlone;
  return row + 1 < rowCount() && PlaceOf(row + 1) == place + 1 ? Part::kOpen : Part::kClosed;
}

int ListModel::FirstOf(int row) const {
  if (!IsGrouped() || row < 0 || row >= rowCount()) return row;
  int place = PlaceOf(row);
  return row - (place - conversations_[GroupOf(place)].start);
}

void ListModel::SetOpen(int row, bool open) {
  if (frozen_ || PartAt(row) != (open ? Part::kClosed : Part::kOpen)) return;
  int place = PlaceOf(row);
  int others = EndOf(GroupOf(place)) - place - 1;
  auto behind = shown_.begin() + row + 1;
  if (open) {
    beginInsertRows({}, row + 1, row + others);
    std::vector<int> places(static_cast<size_t>(others));
    std::iota(places.begin(), places.end(), place + 1);
    shown_.insert(behind, places.begin(), places.end());
    opened_.insert(IdOfPlace(place));
    endInsertRows();
  } else {
    beginRemoveRows({}, row + 1, row + others);
    shown_.erase(behind, behind + others);
    opened_.erase(IdOfPlace(place));
    endRemoveRows();
  }
  emit dataChanged(index(row, 0), index(row, kGridColumns - 1));
}

void ListModel::Grow() {
  int64_t count = list_ != nullptr && list_->IsOpen() && !placeholder_ ? list_->RecordCount() : 0;
  int rows = static_cast<int>(std::min<int64_t>(count, std::numeric_limits<int>::max()));
  if (rows <= rows_) return;
  beginInsertRows({}, rows_, rows - 1);
  rows_ = rows;
  endInsertRows();
}

ListModel::Row ListModel::Read(jet::Recordset& list, int place, bool placeholder) {
  Row result;
  list.SetAbsolutePosition(int64_t{place} + 1);
  int column = 0;
  for (size_t field = 0; field < result.fields.size() && column < list.FieldCount(); ++field) {
    if (placeholder && !repository::kListColumns[field].isInPlaceholder) continue;
    result.fields[field] = list.Field(column++).AsText();
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
  const int place = PlaceOf(row);
  auto cached = cache_.find(place);
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
        "EmailGrid", [&] { read = Read(*list_, place, placeholder_); }, core::Report::kLog);
  }
  return cache_.emplace(place, std::move(read)).first->second;
}

int64_t ListModel::IdAt(int row) const {
  return row >= 0 && row < rowCount() ? RowAt(row).id : 0;
}

int64_t ListModel::IdOnlyAt(int row) const {
  if (row < 0 || row >= rowCount() || frozen_) return 0;
  return IdOfPlace(PlaceOf(row));
}

int64_t ListModel::IdOfPlace(int place) const {
  if (placeholder_ || !list_->IsOpen()) return 0;
  return core::Guarded(
      "EmailGrid", int64_t{0},
      [&] {
        list_->SetAbsolutePosition(int64_t{place} + 1);
        return list_->Field(kId).AsInt();
      },
      core::Report::kLog);
}

int ListModel::PlaceOfId(int64_t id) const {
  if (placeholder_ || list_ == nullptr || !list_->IsOpen()) return -1;
  return core::Guarded(
      "EmailGrid", -1, [&] { return static_cast<int>(list_->PositionOfKey(id)) - 1; },
      core::Report::kLog);
}

int ListModel::RowOf(int64_t id) const {
  int place = PlaceOfId(id);
  if (place < 0 || !IsGrouped()) return place;
  // The last row that is shown up to there.
  auto behind = std::upper_bound(shown_.begin(), shown_.end(), place);
  return static_cast<int>(behind - shown_.begin()) - 1;
}

std::string ListModel::SubjectAt(int row) const {
  return row >= 0 && row < rowCount() ? RowAt(row).fields[kSubject] : std::string();
}

std::string ListModel::ApplicationAt(int row) const {
  return row >= 0 && row < rowCount() ? RowAt(row).fields[kApplication] : std::string();
}

int ListModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid()) return 0;
  return IsGrouped() ? static_cast<int>(shown_.size()) : rows_;
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

QString ListModel::AccessibleText(int number, int column) const {
  const Row& row = RowAt(number);
  if (column == kMarkColumn) {
    QStringList marks;
    if (row.important) marks << tr("High importance");
    if (row.hasFiles) marks << tr("Has attachments");
    return marks.join(", ");
  }
  if (column == kHotColumn) return row.hot ? tr("Hot") : QString();
  QStringList parts;
  if (QString text = Text(row, column); !text.isEmpty()) parts << text;
  if (column != kSubjectColumn) return parts.join(", ");
  if (QString state = StateText(row.state); !state.isEmpty()) parts << state;
  Part part = PartAt(number);
  if (part == Part::kInside) parts << tr("of the conversation above");
  if (part == Part::kClosed || part == Part::kOpen) {
    QString text = part == Part::kOpen ? tr("conversation of %L1 messages, open")
                                       : tr("conversation of %L1 messages, closed");
    parts << text.arg(LettersAt(number));
    if (int unread = UnreadAt(number); unread > 0) parts << tr("%L1 not read").arg(unread);
  }
  return parts.join(", ");
}

int ListModel::LettersAt(int row) const {
  int place = PlaceOf(row);
  return EndOf(GroupOf(place)) - place;
}

int ListModel::UnreadAt(int row) const {
  return conversations_[GroupOf(PlaceOf(row))].unread;
}

QPixmap ListModel::SubjectSigns(int row) const {
  Indent indent = Indent::kNone;
  QString count;
  if (IsGrouped()) {
    Part part = PartAt(row);
    indent = part == Part::kAlone    ? Indent::kOne
             : part == Part::kInside ? Indent::kTwo
             : part == Part::kOpen   ? Indent::kOpen
                                     : Indent::kClosed;
    if (part == Part::kOpen || part == Part::kClosed) count = QString::number(LettersAt(row));
    if (HidesUnread(row)) count = tr("%1 (%2 unread)").arg(count).arg(UnreadAt(row));
  }
  return SubjectSign(RowAt(row).state, indent, count);
}

bool ListModel::HidesUnread(int row) const {
  return PartAt(row) == Part::kClosed && UnreadAt(row) > 0;
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
      if (column == kSubjectColumn) return SubjectSigns(index.row());
      return {};
    case Qt::ToolTipRole:
      if (column == kMarkColumn || column == kHotColumn || column == kSubjectColumn) {
        return repository::TipText(AccessibleText(index.row(), column));
      }
      return repository::TipText(Text(RowAt(index.row()), column));
    case Qt::AccessibleTextRole:
      return AccessibleText(index.row(), column);
    case Qt::TextAlignmentRole:
      if (column == kMarkColumn || column == kHotColumn) return Qt::AlignCenter;
      return {};
    case Qt::ForegroundRole:
      if (column == kMarkColumn) return MarkColor();
      return {};
    case Qt::FontRole:
      if (column == kMarkColumn || RowAt(index.row()).hot || RowAt(index.row()).state.IsUnread() ||
          HidesUnread(index.row())) {
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
