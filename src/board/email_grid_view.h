// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The grid of the message list: rows of one height, column widths that can be stored, a header that
// sorts when clicked, a text for when there is nothing to list.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "board/list_model.h"
#include "board/message_commands.h"
#include "repository/grid_view.h"

namespace tarnwick::board {

class EmailGridView : public repository::GridView {
  Q_OBJECT

 public:
  explicit EmailGridView(QWidget* parent = nullptr);

  ListModel& Model() { return *model_; }

  // Shows the recordset's rows anew. What was selected is so again where it is listed still; where
  // it is not, with keepPlace, the row of the same number.
  // conversations: as ListModel takes them.
  void Bind(jet::Recordset& list, bool placeholder, bool keepPlace,
            const std::vector<ListedConversation>& conversations = {});
  // Shows the rows as they are until the next Bind, and reads none.
  void Freeze();

  // The selected messages in list order; without the placeholder and rows that have gone. Of
  // several only the IDs.
  std::vector<SelectedMessage> Selected() const;
  // How many rows are selected, without looking at them; none while the placeholder is shown.
  int64_t SelectedCount() const;
  // The IDs of the selected messages, as Selected gives them.
  std::vector<int64_t> SelectedIds() const;
  // The current row's when it is selected, else the first selected one's; id 0 when none is.
  SelectedMessage Current() const;

  // Widths in twips, by column number; columns that are not named keep theirs. Width 0 hides.
  // Unless they were stored for a window of the same width, the subject is fitted to this one.
  void ApplyWidths(const std::map<int, int>& twips, bool sameWindow);

  // Shown over the placeholder row; it says what to do next.
  void SetHint(const QString& title, const QString& advice);

  void ShowSort(ListSort sort, ListOrder order);

  void CopySelected() const;

  // Takes the focus, to the first row where none is current.
  void Enter();

  // Types ahead within the rows that can be looked at in a fifth of a second.
  void keyboardSearch(const QString& search) override;

 signals:
  // A click on a header that orders the list.
  void SortAskedFor(ListSort sort);
  // The current row or the selection is another, or its rows were bound anew.
  void CurrentChanged();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  // Right and Left open and close a conversation, and so does a click on its triangle.
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  struct Held {
    std::vector<int64_t> ids;
    int64_t current = 0;
  };
  void Hold();
  bool SelectAgain(const Held& held);
  SelectedMessage MessageAt(int row) const;
  void SetOpen(int row, bool open);
  void SetDefaultWidths();
  void FitSubject();

  ListModel* model_;
  Held held_;
  bool fitsWindow_ = false;
  bool settled_ = false;  // shown once: from now on a resize goes to the subject
  QString hintTitle_;
  QString hintAdvice_;
};

}  // namespace tarnwick::board
