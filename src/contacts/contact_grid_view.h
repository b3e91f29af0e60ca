// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The grid of the contact list: rows of one height, column widths that can be stored, typing ahead
// by name, a text for when there is nothing to list.
#pragma once

#include <QTableView>
#include <map>
#include <vector>

#include "contacts/contact_list_model.h"

namespace tarnwick::contacts {

class ContactGridView : public QTableView {
  Q_OBJECT

 public:
  explicit ContactGridView(QWidget* parent = nullptr);

  ContactListModel& Model() { return *model_; }

  // The selected contact's key; 0 when none is.
  int64_t SelectedId() const;
  // Selects a row and shows it; none for a row that is not there.
  void SelectRow(int row);

  // Widths in twips, by column number; columns that are not named keep theirs. The key stays
  // hidden.
  void ApplyWidths(const std::map<int, int>& twips);
  std::vector<int> Widths() const;

  // Shown while the list is empty.
  void SetHint(const QString& hint);

  // Puts the selected row on the clipboard, columns parted by tabs.
  void CopySelected() const;

  // Goes to the first name that follows what is being typed; a lookup, however long the list.
  void keyboardSearch(const QString& search) override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ContactListModel* model_;
  QString hint_;
  QString typed_;
  qint64 typedAt_ = 0;
};

}  // namespace tarnwick::contacts
