// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Asks which messages are to be saved, in which form and where. What was chosen last is proposed
// the next time.
#pragma once

#include <QDialog>
#include <cstdint>

#include "takeout/save_messages.h"

class QButtonGroup;
class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace tarnwick::takeout {

class SaveMessagesDialog : public QDialog {
  Q_OBJECT

 public:
  // How many messages are selected and listed. REQUIRES: a repository is open; listed > 0.
  SaveMessagesDialog(int64_t selected, int64_t listed, QWidget* parent = nullptr);

  // After it was accepted. ids are the caller's to fill in.
  bool WantsSelected() const;
  SaveOrder Order() const;

  void accept() override;

 private:
  void MakeControls(int64_t selected, int64_t listed);
  void RestoreChoice();
  void Browse();

  QRadioButton* selected_ = nullptr;
  QRadioButton* listed_ = nullptr;
  QButtonGroup* formats_ = nullptr;  // ids are those of SaveFormat
  QCheckBox* folders_ = nullptr;
  QLineEdit* folder_ = nullptr;
  QPushButton* save_ = nullptr;
};

}  // namespace tarnwick::takeout
