// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The message list as the grid sees it: a recordset's rows, each read when it is first shown and
// kept in a small cache. Nothing here walks the list. Rows count from 0; column 0 holds the mark of
// important messages and a paperclip for those with files, the rest are repository::kListColumns in
// their order. What was not read in the mail program is in bold letters; signs before the subject
// tell what was replied to, forwarded and flagged there.
#pragma once

#include <QAbstractTableModel>
#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "board/email_list.h"
#include "board/list_query.h"
#include "intake/message_state.h"

namespace tarnwick::board {

inline constexpr int kMarkColumn = 0;
inline constexpr int kGridColumns = 1 + static_cast<int>(repository::kListColumnCount);
// The grid's column for one of the list query.
constexpr int GridColumn(int field) {
  return field + 1;
}

class ListModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using QAbstractTableModel::QAbstractTableModel;

  // Shows these rows from now on; called again after each query. The recordset must stay in its
  // place; while it is closed the rows read as empty. placeholder: its one row stands for none.
  void Bind(jet::Recordset& list, bool placeholder);
  // Reads nothing until the next Bind, while the engine is at work: rows that were not looked at
  // yet are empty.
  void Freeze() { frozen_ = true; }
  // Rows have come behind those that are shown.
  void Grow();

  bool IsPlaceholder() const { return placeholder_; }
  // 0 for the placeholder and for a row that has gone.
  int64_t IdAt(int row) const;
  // The same without a look at the row itself where that can be: for all rows at once.
  int64_t IdOnlyAt(int row) const;
  // Where the message is listed; -1 where it is not.
  int RowOf(int64_t id) const;
  // As it is stored, UTF-8.
  std::string SubjectAt(int row) const;
  // The mailer that the message came from.
  std::string ApplicationAt(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;

 private:
  struct Row {
    std::array<std::string, repository::kListColumnCount> fields;
    int64_t id = 0;
    bool important = false;
    bool hot = false;
    bool hasFiles = false;
    intake::MessageState state;
  };
  const Row& RowAt(int row) const;
  static Row Read(jet::Recordset& list, int row, bool placeholder);
  QString Text(const Row& row, int column) const;
  QString AccessibleText(const Row& row, int column) const;

  jet::Recordset* list_ = nullptr;
  bool placeholder_ = false;
  bool frozen_ = false;
  int rows_ = 0;
  mutable std::unordered_map<int, Row> cache_;
};

}  // namespace tarnwick::board
