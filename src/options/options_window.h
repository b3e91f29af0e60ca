// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The options window. Each choice takes effect when its box is clicked; OK only closes. Where the
// machine is not a Windows of the mail's owner, the profile's folder is chosen here too.
#pragma once

#include <QDialog>
#include <vector>

#include "options/options.h"

class QCheckBox;
class QLabel;
class QLayout;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace tarnwick::options {

class frmOptions : public QDialog {
  Q_OBJECT

 public:
  // REQUIRES: a repository is open; State().Ui can choose a folder. Without a reader, and on
  // Windows, there is no line for the profile. mailers: those that can be read; Outlook Express and
  // Outlook always have their boxes.
  explicit frmOptions(ProfileReader readProfile, const std::vector<Mailer>& mailers = {},
                      QWidget* parent = nullptr);

  void reject() override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void MakeControls(const std::vector<Mailer>& mailers);
  QCheckBox* MakeBox(const QString& name, const QString& caption, const QString& tip);
  std::vector<QCheckBox*> MakeMailers(const std::vector<Mailer>& mailers);
  QLayout* MakeReadFolders();
  QWidget* MakeReading();
  QWidget* MakeProfile();
  QLayout* MakeLock();
  void Form_Load();
  void MSOutlook_Click();
  void OutlookExpress_Click();
  void LoadAllFolders_Click();
  void LogMailTexts_Click();
  void CompleteReading_Click();
  void cmdOK_Click();
  void Browse();
  void ShowProfile();
  void ShowFound(const QString& text);
  ProfileSummary Read(const std::string& folder);

  ProfileReader readProfile_;
  bool reading_ = false;
  bool placed_ = false;
  QCheckBox* LoadAllFolders_ = nullptr;
  QPushButton* cmdOK_ = nullptr;
  QCheckBox* MSOutlook_ = nullptr;
  QCheckBox* OutlookExpress_ = nullptr;
  QCheckBox* LogMailTexts_ = nullptr;
  QSpinBox* lockMinutes_ = nullptr;
  QCheckBox* CompleteReading_ = nullptr;
  std::vector<QCheckBox*>
      readFolders_;  // those that complete reading reads only when they are ticked
  QLineEdit* profileFolder_ = nullptr;
  QPushButton* browse_ = nullptr;
  QLabel* profileFound_ = nullptr;
};

}  // namespace tarnwick::options
