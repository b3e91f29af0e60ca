// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The grid of the contact list: typing ahead by name, a text for when there is nothing to list.
#pragma once

#include <map>

#include "contacts/contact_list_model.h"
#include "repository/grid_view.h"

namespace tarnwick::contacts {

class ContactGridView : public repository::GridView {
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

  // Shown while the list is empty.
  void SetHint(const QString& hint);

  // Goes to the first name that follows what is being typed; a lookup, however long the list.
  void keyboardSearch(const QString& search) override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ContactListModel* model_;
  QString hint_;
};

}  // namespace tarnwick::contacts
