// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The contact list as its grid sees it: the rows of the list query, each read when it is first
// shown and kept in a small cache. Rows count from 0; columns are ContactColumn's.
#pragma once

#include <QAbstractTableModel>
#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "contacts/contact_book.h"

namespace tarnwick::contacts {

class ContactListModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using QAbstractTableModel::QAbstractTableModel;

  // Runs the list query anew. When it can't be run, which is shown, the list is empty.
  void List(const std::string& nameFilter);
  const std::string& NameFilter() const { return nameFilter_; }

  // 0 for a row that has gone.
  int64_t IdAt(int row) const;
  // -1 when the contact is not in the list.
  int RowOf(const Contact& contact);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;

 private:
  struct Row {
    std::array<std::string, kContactColumns> fields;
    int64_t id = 0;
  };
  const Row& RowAt(int row) const;

  mutable jet::Recordset list_;
  std::string nameFilter_;
  int rows_ = 0;
  mutable std::unordered_map<int, Row> cache_;
};

}  // namespace tarnwick::contacts
