// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/contact_dialog.h"

#include <QAction>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <type_traits>

#include "contacts/unsent_message.h"

namespace tarnwick::contacts {

namespace {

std::string Text(const QLineEdit* box) {
  return box->text().toStdString();
}

std::string Text(const QPlainTextEdit* box) {
  return box->toPlainText().toStdString();
}

// What was typed where the box was changed, else what is stored.
const std::string& Changed(const std::string& typed, const std::string& shown,
                           const std::string& stored) {
  return typed == shown ? stored : typed;
}

std::optional<std::string> AskForAddress(QWidget* parent) {
  bool answered = false;
  QString address = QInputDialog::getText(parent, frmContact::tr("New email address"),
                                          frmContact::tr("Enter email address"), QLineEdit::Normal,
                                          {}, &answered);
  if (!answered) return std::nullopt;
  return address.trimmed().toStdString();
}

}  // namespace

frmContact::frmContact(int64_t id, QWidget* parent) : QDialog(parent), askAddress_(AskForAddress) {
  setObjectName("frmContact");
  setWindowTitle(tr("Contact"));
  stored_.ID = id;

  auto* column = new QVBoxLayout(this);
  column->addLayout(MakeFields(), 3);
  column->addWidget(MakeAddresses(), 2);
  column->addLayout(MakeBottom());

  ShowContact();
  ShowAddresses({});
  name_->setFocus();
  // The boxes ask for far more than a few lines.
  resize(fontMetrics().averageCharWidth() * 85, minimumSizeHint().height());
}

QFormLayout* frmContact::MakeFields() {
  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  auto line = [&](const char* name, const QString& label) {
    auto* box = new QLineEdit(this);
    box->setObjectName(name);
    form->addRow(label, box);
    box->setAccessibleName(QString(label).remove('&'));
    return box;
  };
  auto lines = [&](const char* name, const QString& label, int rows) {
    auto* box = new QPlainTextEdit(this);
    box->setObjectName(name);
    box->setTabChangesFocus(true);
    box->setMinimumHeight(fontMetrics().lineSpacing() * rows + 12);
    form->addRow(label, box);
    box->setAccessibleName(QString(label).remove('&'));
    return box;
  };
  name_ = line("Name", tr("&Name"));
  postAddress_ = lines("PostAddress", tr("&Post address"), 3);
  phoneHome_ = line("PhoneHome", tr("&Home phone"));
  phoneBuisness_ = line("PhoneBuisness", tr("&Business phone"));
  phoneMobiler_ = line("PhoneMobiler", tr("&Mobile phone"));
  remark_ = lines("Remark", tr("&Remark"), 4);
  return form;
}

QPushButton* frmContact::MakeButton(const char* name, const QString& caption, const QString& tip,
                                    void (frmContact::*command)()) {
  auto* button = new QPushButton(caption, this);
  button->setObjectName(name);
  button->setToolTip(tip);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, command);
  return button;
}

QWidget* frmContact::MakeAddresses() {
  auto* part = new QWidget(this);
  auto* layout = new QGridLayout(part);
  layout->setContentsMargins(0, 0, 0, 0);
  list_ = new QListWidget(part);
  list_->setObjectName("AddressList");
  list_->setAccessibleName(tr("Email addresses"));
  list_->setMinimumHeight(fontMetrics().lineSpacing() * 5);
  list_->setUniformItemSizes(true);
  auto* label = new QLabel(tr("&Email addresses"), part);
  label->setBuddy(list_);
  auto* remove = new QAction(list_);
  remove->setShortcut(QKeySequence::Delete);
  remove->setShortcutContext(Qt::WidgetShortcut);
  connect(remove, &QAction::triggered, this, &frmContact::DeleteSelectedAddress);
  list_->addAction(remove);
  connect(list_, &QListWidget::itemDoubleClicked, this, &frmContact::SendSelected);

  mctEmaiAddress_ = MakeButton("mctEmaiAddress", tr("&Add Address..."),
                               tr("Adds an address to the contact"), &frmContact::AddNewAddress);
  mctDeleteAddress_ =
      MakeButton("mctDeleteAddress", tr("&Delete Address"), tr("Deletes the selected address"),
                 &frmContact::DeleteSelectedAddress);
  layout->addWidget(label, 0, 0);
  layout->addWidget(list_, 1, 0, 3, 1);
  layout->addWidget(mctEmaiAddress_, 1, 1);
  layout->addWidget(mctDeleteAddress_, 2, 1);
  layout->setRowStretch(3, 1);
  layout->setColumnStretch(0, 1);
  return part;
}

QLayout* frmContact::MakeBottom() {
  auto* row = new QHBoxLayout;
  mctSendToOne_ = MakeButton("mctSendToOne", tr("Send To &Selected"),
                             tr("Begins a message to the selected address in your mail program"),
                             &frmContact::SendSelected);
  mctSendToAll_ = MakeButton("mctSendToAll", tr("Send To A&ll"),
                             tr("Begins a message to every address in your mail program"),
                             &frmContact::SendEvery);
  mctQuite_ = MakeButton("mctQuite", tr("&Quit"), tr("Closes the contact"), &frmContact::reject);
  row->addWidget(mctSendToOne_);
  row->addWidget(mctSendToAll_);
  row->addStretch(1);
  row->addWidget(mctQuite_);
  return row;
}

void frmContact::ShowContact() {
  if (auto contact = ReadContact(stored_.ID)) stored_ = *contact;
  auto set = [](auto* box, const std::string& text) {
    QString shown = QString::fromStdString(text);
    if constexpr (std::is_same_v<decltype(box), QLineEdit*>) {
      box->setText(shown);
      box->setCursorPosition(0);
    } else {
      box->setPlainText(shown);
    }
  };
  set(name_, stored_.Name);
  set(postAddress_, stored_.PostAddress);
  set(phoneHome_, stored_.PhoneHome);
  set(phoneBuisness_, stored_.PhoneBuisness);
  set(phoneMobiler_, stored_.PhoneMobiler);
  set(remark_, stored_.Remark);
  shown_ = Entered();
}

Contact frmContact::Entered() const {
  return {stored_.ID,           Text(name_),         Text(postAddress_), Text(phoneHome_),
          Text(phoneBuisness_), Text(phoneMobiler_), Text(remark_)};
}

// Keeps current selected when it is there, or the row that was.
void frmContact::ShowAddresses(const std::string& current) {
  int row = list_->currentRow();
  addresses_ = ReadAddresses(stored_.ID);
  list_->clear();
  for (const ContactAddress& address : addresses_) {
    list_->addItem(QString::fromStdString(address.Address).simplified());
    if (!current.empty() && address.Address == current) row = list_->count() - 1;
  }
  list_->setCurrentRow(std::min(std::max(row, 0), list_->count() - 1));
  UpdateButtons();
}

const ContactAddress* frmContact::Selected() const {
  int row = list_->selectedItems().isEmpty() ? -1 : list_->currentRow();
  return row < 0 ? nullptr : &addresses_[static_cast<size_t>(row)];
}

void frmContact::UpdateButtons() {
  mctEmaiAddress_->setEnabled(!sending_);
  mctDeleteAddress_->setEnabled(!sending_);
  mctSendToOne_->setEnabled(!sending_);
  mctSendToAll_->setEnabled(!sending_ && !addresses_.empty());
}

void frmContact::AddNewAddress() {
  auto address = askAddress_(this);
  if (address && AddAddress(stored_.ID, *address)) ShowAddresses(*address);
}

void frmContact::DeleteSelectedAddress() {
  const ContactAddress* address = Selected();
  if (address == nullptr) {
    ShowNothingSelected();
  } else if (DeleteAddress(*address)) {
    ShowAddresses({});
  }
}

// While the desktop is asked, events run: nothing else may be sent, and the window stays.
void frmContact::Send(const std::function<void()>& command) {
  if (sending_) return;
  sending_ = true;
  QWidget* focus = focusWidget();
  setCursor(Qt::BusyCursor);
  UpdateButtons();
  command();
  sending_ = false;
  UpdateButtons();
  unsetCursor();
  if (focus != nullptr) focus->setFocus();
}

void frmContact::SendSelected() {
  Send([this] { SendToOne(Text(name_), Selected()); });
}

void frmContact::SendEvery() {
  Send([this] { SendToAll(Text(name_), addresses_); });
}

void frmContact::reject() {
  if (sending_) return;
  Contact entered = Entered();
  Contact after{stored_.ID,
                Changed(entered.Name, shown_.Name, stored_.Name),
                Changed(entered.PostAddress, shown_.PostAddress, stored_.PostAddress),
                Changed(entered.PhoneHome, shown_.PhoneHome, stored_.PhoneHome),
                Changed(entered.PhoneBuisness, shown_.PhoneBuisness, stored_.PhoneBuisness),
                Changed(entered.PhoneMobiler, shown_.PhoneMobiler, stored_.PhoneMobiler),
                Changed(entered.Remark, shown_.Remark, stored_.Remark)};
  Leave left = SaveIfChanged(stored_, after);
  if (left == Leave::kNotSaved) return;  // what was typed is not thrown away
  wasSaved_ = left == Leave::kSaved;
  QDialog::reject();
}

}  // namespace tarnwick::contacts
