// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the lists of messages and of contacts have in common: column widths in the twips that
// grid_layout.h keeps, copying of rows, typing ahead.
#pragma once

#include <QString>
#include <vector>

#include "repository/even_rows_view.h"

namespace tarnwick::repository {

class GridView : public EvenRowsView {
  Q_OBJECT

 public:
  explicit GridView(QWidget* parent = nullptr);

  // In twips; 0 for a hidden column.
  std::vector<int> Widths() const;

  // Puts the selected rows on the clipboard, a line each, columns from the first on that are shown
  // parted by tabs.
  void CopySelected(int firstColumn = 0) const;

 protected:
  std::vector<int> SelectedRows() const;  // ascending

  // The word that is being typed, with what comes now; after a pause another word begins.
  struct Typed {
    QString word;
    bool goesOn;
  };
  Typed TypeOn(const QString& typed);

 private:
  QString word_;
  qint64 typedAt_ = 0;
};

}  // namespace tarnwick::repository
