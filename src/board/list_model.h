// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The message list as the grid sees it: a recordset's rows, each read when it is first shown and
// kept in a small cache. Nothing here walks the list. Rows count from 0; column 0 holds the mark of
// important messages and a paperclip for those with files, the rest are repository::kListColumns in
// their order. What was not read in the mail program is in bold letters; signs before the subject
// tell what was replied to, forwarded and flagged there.
//
// A list that is grouped by conversations shows of each the first letter, with the number of all,
// and the others below it while it is open; while it is closed, the first stands in bold letters
// for all that were not read, with their number. Rows are those that are shown; places are those in
// the recordset, from 0.
#pragma once

#include <QAbstractTableModel>
#include <QPixmap>
#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

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
  // conversations: those of a list that is grouped.
  void Bind(jet::Recordset& list, bool placeholder,
            std::vector<ListedConversation> conversations = {});
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
  // Where the message is listed, or the first of its conversation while that is closed; -1 where it
  // is not.
  int RowOf(int64_t id) const;
  // Of a grouped list. Alone: the row is all of its conversation.
  enum class Part : uint8_t { kAlone, kClosed, kOpen, kInside };
  Part PartAt(int row) const;
  // Opens or closes the conversation that begins at a row.
  void SetOpen(int row, bool open);
  // The row of the first letter of a row's conversation.
  int FirstOf(int row) const;

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
  bool IsGrouped() const { return !conversations_.empty(); }
  int PlaceOf(int row) const { return IsGrouped() ? shown_[static_cast<size_t>(row)] : row; }
  // The conversation that a place belongs to, and where it ends.
  size_t GroupOf(int place) const;
  int EndOf(size_t group) const;
  void ShowGroups();
  const Row& RowAt(int row) const;
  int64_t IdOfPlace(int place) const;
  int PlaceOfId(int64_t id) const;  // -1 for none
  static Row Read(jet::Recordset& list, int place, bool placeholder);
  QString Text(const Row& row, int column) const;
  QString AccessibleText(int row, int column) const;
  // Of the conversation that begins there: its letters, and those that were not read.
  int LettersAt(int row) const;
  int UnreadAt(int row) const;
  bool HidesUnread(int row) const;  // in a closed conversation
  QPixmap SubjectSigns(int row) const;

  jet::Recordset* list_ = nullptr;
  bool placeholder_ = false;
  bool frozen_ = false;
  int rows_ = 0;  // of the recordset
  std::vector<ListedConversation> conversations_;
  std::vector<int> shown_;                      // the places of the rows, ascending
  std::set<int64_t> opened_;                    // first letters of conversations
  mutable std::unordered_map<int, Row> cache_;  // by places
};

}  // namespace tarnwick::board
