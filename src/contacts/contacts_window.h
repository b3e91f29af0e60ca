// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The contact list. The name box narrows it while one types; a contact is opened in the editor or
// deleted. Column widths and the window's place are kept.
#pragma once

#include <QDialog>
#include <QTimer>
#include <functional>

#include "contacts/contact_grid_view.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QStatusBar;

namespace tarnwick::contacts {

class frmContacts : public QDialog {
  Q_OBJECT

 public:
  // REQUIRES: a repository is open.
  explicit frmContacts(QWidget* parent = nullptr);
  ~frmContacts() override;

  ContactGridView& Grid() { return *grid_; }

  // The list query anew; the selected contact stays selected while it is in the list.
  void RefreshList();

  void done(int result) override;

 signals:
  // A contact was deleted with its messages, or changed: lists of messages are out of date.
  void Changed();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* MakeNameBox();
  QWidget* MakeButtons();
  QStatusBar* MakeStatusBar();
  void MakeMenu();
  void RunFilter();
  void ShowCount();
  void SelectContact();
  void DeleteSelected();
  void RestoreLayout();
  void SaveLayout();

  QLineEdit* mctName_ = nullptr;
  ContactGridView* grid_;
  QStatusBar* StatusBar1_ = nullptr;
  QLabel* count_ = nullptr;
  QTimer typing_;  // runs out when the person stops typing
};

}  // namespace tarnwick::contacts
