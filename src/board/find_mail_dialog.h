// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Looks for mail on a disk or in folders and lists what is there, with a tick for each that is to
// be loaded: whatever the repository does not hold yet is ticked.
#pragma once

#include <QDialog>
#include <QStringList>
#include <vector>

#include "look/look.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace tarnwick::board {

class FindMailDialog : public QDialog {
  Q_OBJECT

 public:
  // places are looked at as soon as the window is there; none: the person chooses.
  // REQUIRES: a repository is open.
  explicit FindMailDialog(QStringList places = {}, QWidget* parent = nullptr);

  // After it was accepted.
  std::vector<look::FoundMail> Ticked() const;
  // Whether lost messages are to be looked for in it, too.
  bool WantsLost() const;

  // Looks at the places and lists what is found, until it is stopped.
  void LookAt(const QStringList& places);

  void reject() override;  // while it looks: stops that

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void MakeControls();
  void Browse();
  void LookOrStop();
  void AddRow(const look::FoundMail& mail);
  void ShowTicks();
  void TickDamaged(bool on);
  void SetLooking(bool on);

  QStringList places_;
  std::vector<look::FoundMail> found_;  // a row each
  bool isLooking_ = false;
  bool isStopped_ = false;
  QLineEdit* place_ = nullptr;
  QPushButton* browse_ = nullptr;
  QPushButton* look_ = nullptr;
  QTreeWidget* list_ = nullptr;
  QLabel* note_ = nullptr;
  QCheckBox* lost_ = nullptr;
  QPushButton* load_ = nullptr;
};

}  // namespace tarnwick::board
