// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/contact_list_model.h"

#include <algorithm>
#include <limits>

#include "core/guard.h"

namespace tarnwick::contacts {

namespace {

// Some screens full; a row is a few hundred bytes.
constexpr size_t kCachedRows = 1024;
// What a cell can show of a long note.
constexpr qsizetype kShownText = 500;

}  // namespace

void ContactListModel::List(const std::string& nameFilter) {
  beginResetModel();
  nameFilter_ = nameFilter;
  cache_.clear();
  rows_ = 0;
  if (OpenContactList(list_, nameFilter)) {
    rows_ = core::Guarded("frmContacts", 0, [&] {
      return static_cast<int>(
          std::min<int64_t>(list_.RecordCount(), std::numeric_limits<int>::max()));
    });
  }
  endResetModel();
}

const ContactListModel::Row& ContactListModel::RowAt(int row) const {
  auto cached = cache_.find(row);
  if (cached != cache_.end()) return cached->second;
  if (cache_.size() >= kCachedRows) cache_.clear();
  Row read;
  // Painting must not bring up boxes, which would paint again: the log has it.
  core::GuardedRun(
      "tblMeContacts",
      [&] {
        if (!list_.IsOpen()) return;
        list_.SetAbsolutePosition(int64_t{row} + 1);
        for (int field = 0; field < kContactColumns; ++field) {
          read.fields[static_cast<size_t>(field)] = list_.Field(field).AsText();
        }
        read.id = list_.Field(kContactId).AsInt();
      },
      core::Report::kLog);
  return cache_.emplace(row, std::move(read)).first->second;
}

int64_t ContactListModel::IdAt(int row) const {
  return row >= 0 && row < rows_ ? RowAt(row).id : 0;
}

int ContactListModel::RowOf(const Contact& contact) {
  if (!list_.IsOpen()) return -1;
  return static_cast<int>(FindInList(list_, nameFilter_, contact)) - 1;
}

int ContactListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int ContactListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kContactColumns;
}

QVariant ContactListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
    return {};
  }
  if (role != Qt::DisplayRole) return {};
  const std::string& text = RowAt(index.row()).fields[static_cast<size_t>(index.column())];
  // A postal address has lines; a cell has one.
  return QString::fromStdString(text).left(kShownText).simplified();
}

QVariant ContactListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kContactColumns) return {};
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
  if (role != Qt::DisplayRole) return {};
  const QString captions[] = {tr("Name"),     tr("Address"), tr("Home"), tr("Buisness"),
                              tr("Mobilers"), tr("Notes"),   tr("ID")};
  return captions[section];
}

}  // namespace tarnwick::contacts
