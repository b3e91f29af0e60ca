// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The editor of one contact: its fields, its addresses, and a new message to one or all of them.
// Addresses are added and deleted at once; changed fields are saved on leaving, after a question.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "contacts/contact_book.h"

class QFormLayout;
class QLayout;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

namespace tarnwick::contacts {

class frmContact : public QDialog {
  Q_OBJECT

 public:
  // Shows the contact; one that has been deleted shows empty and can't be saved.
  frmContact(int64_t id, QWidget* parent = nullptr);

  // True when changed fields were written.
  bool WasSaved() const { return wasSaved_; }

  // The input box for a new address; nullopt when cancelled. Tests put their own answer here.
  using AddressQuestion = std::function<std::optional<std::string>(QWidget* parent)>;
  void SetAddressQuestion(AddressQuestion question) { askAddress_ = std::move(question); }

  void reject() override;

 private:
  QFormLayout* MakeFields();
  QWidget* MakeAddresses();
  QLayout* MakeBottom();
  QPushButton* MakeButton(const char* name, const QString& caption, const QString& tip,
                          void (frmContact::*command)());
  void ShowContact();
  void ShowAddresses(const std::string& current);
  Contact Entered() const;
  const ContactAddress* Selected() const;
  void UpdateButtons();
  void AddNewAddress();
  void DeleteSelectedAddress();
  void Send(const std::function<void()>& command);
  void SendSelected();
  void SendEvery();

  Contact stored_;  // as it is in the repository
  Contact shown_;   // as the boxes show it unchanged: a box may not show every character
  std::vector<ContactAddress> addresses_;
  AddressQuestion askAddress_;
  bool wasSaved_ = false;
  bool sending_ = false;

  QLineEdit* name_ = nullptr;
  QPlainTextEdit* postAddress_ = nullptr;
  QLineEdit* phoneHome_ = nullptr;
  QLineEdit* phoneBuisness_ = nullptr;
  QLineEdit* phoneMobiler_ = nullptr;
  QPlainTextEdit* remark_ = nullptr;
  QListWidget* list_ = nullptr;
  QPushButton* mctEmaiAddress_ = nullptr;
  QPushButton* mctDeleteAddress_ = nullptr;
  QPushButton* mctSendToOne_ = nullptr;
  QPushButton* mctSendToAll_ = nullptr;
  QPushButton* mctQuite_ = nullptr;
};

}  // namespace tarnwick::contacts
