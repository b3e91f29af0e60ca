// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/save_messages_dialog.h"

#include <cassert>

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include "core/guard.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::takeout {

namespace {

// Where the choice is kept.
constexpr const char* kGroup = "SaveMessages";
constexpr const char* kFormat = "Format";
constexpr const char* kFolders = "Folders";
constexpr const char* kFolder = "Folder";

QVBoxLayout* Column(std::initializer_list<QWidget*> widgets) {
  auto* column = new QVBoxLayout;
  for (QWidget* widget : widgets) column->addWidget(widget);
  return column;
}

}  // namespace

SaveMessagesDialog::SaveMessagesDialog(int64_t selected, int64_t listed, QWidget* parent)
    : QDialog(parent) {
  assert(repository::RepositoryDb().IsOpen() && listed > 0);
  setObjectName("SaveMessages");
  setWindowTitle(tr("Save messages as"));
  MakeControls(selected, listed);
  RestoreChoice();
  connect(folder_, &QLineEdit::textChanged, this,
          [this](const QString& text) { save_->setEnabled(!text.trimmed().isEmpty()); });
  save_->setEnabled(!folder_->text().trimmed().isEmpty());
}

void SaveMessagesDialog::MakeControls(int64_t selected, int64_t listed) {
  auto radio = [this](const char* name, const QString& caption, const QString& tip = {}) {
    auto* made = new QRadioButton(caption, this);
    made->setObjectName(name);
    made->setToolTip(tip);
    return made;
  };
  selected_ = radio("SelectedMessages",
                    selected == 0   ? tr("The s&elected messages (none)")
                    : selected == 1 ? tr("The s&elected message")
                                    : tr("The %L1 s&elected messages").arg(qlonglong{selected}));
  listed_ =
      radio("ListedMessages", listed == 1 ? tr("A&ll listed messages (1)")
                                          : tr("A&ll %L1 listed messages").arg(qlonglong{listed}));
  auto* which = new QButtonGroup(this);
  which->addButton(selected_);
  which->addButton(listed_);
  selected_->setEnabled(selected > 0);
  (selected > 0 ? selected_ : listed_)->setChecked(true);

  formats_ = new QButtonGroup(this);
  auto* eml = radio("FormatEml", tr("&One file each (.eml)"),
                    tr("Named by date, correspondent and subject; mail programs open them"));
  auto* msg = radio("FormatMsg", tr("O&ne file each for Outlook (.msg)"),
                    tr("With texts, people, dates and attached files as Outlook keeps them"));
  auto* mbox = radio("FormatMbox", tr("&Mailbox file (mbox)"),
                     tr("All in one file, which other mail programs take in"));
  auto* maildir = radio("FormatMaildir", tr("Mail&dir"),
                        tr("A folder as mail servers and some mail programs keep it"));
  formats_->addButton(eml, static_cast<int>(SaveFormat::kEml));
  formats_->addButton(msg, static_cast<int>(SaveFormat::kMsg));
  formats_->addButton(mbox, static_cast<int>(SaveFormat::kMbox));
  formats_->addButton(maildir, static_cast<int>(SaveFormat::kMaildir));
  eml->setChecked(true);
  folders_ = new QCheckBox(tr("&Keep the mail folders apart"), this);
  folders_->setObjectName("Folders");
  folders_->setToolTip(tr("A folder or mailbox for each folder that the messages lay in"));

  folder_ = new QLineEdit(this);
  folder_->setObjectName("Folder");
  folder_->setAccessibleName(tr("Folder for the messages"));
  folder_->setMinimumWidth(fontMetrics().averageCharWidth() * 45);
  auto* browse = new QPushButton(tr("&Browse..."), this);
  browse->setObjectName("Browse");
  browse->setAutoDefault(false);
  connect(browse, &QPushButton::clicked, this, &SaveMessagesDialog::Browse);
  auto* place = new QHBoxLayout;
  place->addWidget(folder_, 1);
  place->addWidget(browse);
  auto* note = new QLabel(tr("Files that are there already are kept."), this);
  auto* where = new QVBoxLayout;
  where->addLayout(place);
  where->addWidget(note);

  auto* form = new QFormLayout;
  form->setVerticalSpacing(fontMetrics().height() * 3 / 4);
  form->addRow(tr("Messages:"), Column({selected_, listed_}));
  form->addRow(tr("Form:"), Column({eml, msg, mbox, maildir, folders_}));
  auto* label = new QLabel(tr("&Folder:"), this);
  label->setBuddy(folder_);
  form->addRow(label, where);

  auto* buttons = new QDialogButtonBox(this);
  save_ = buttons->addButton(tr("&Save"), QDialogButtonBox::AcceptRole);
  save_->setObjectName("Save");
  save_->setDefault(true);
  buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole)->setObjectName("Cancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &SaveMessagesDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &SaveMessagesDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addLayout(form);
  column->addStretch(1);
  column->addWidget(buttons);
}

void SaveMessagesDialog::RestoreChoice() {
  core::GuardedRun(
      "SaveMessages",
      [this] {
        auto read = [](const char* key, std::string_view column) {
          return repository::GetParameter(kGroup, key, column);
        };
        auto* format =
            formats_->button(static_cast<int>(read(kFormat, repository::kAmountColumn).AsInt()));
        if (format != nullptr) format->setChecked(true);
        folders_->setChecked(read(kFolders, repository::kAmountColumn).AsInt() != 0);
        folder_->setText(QString::fromStdString(read(kFolder, repository::kTextColumn).AsText()));
      },
      core::Report::kLog);
  if (!folder_->text().isEmpty()) return;
  QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  folder_->setText(QDir::toNativeSeparators(QDir(documents).filePath(tr("Saved mail"))));
}

void SaveMessagesDialog::Browse() {
  QDir folder(folder_->text());
  // The one that is proposed need not be there yet.
  while (!folder.exists() && !folder.isRoot() && !folder.path().isEmpty()) {
    QString above = QFileInfo(folder.path()).path();
    if (above == folder.path()) break;
    folder.setPath(above);
  }
  QString chosen =
      QFileDialog::getExistingDirectory(this, tr("Select folder for the messages"), folder.path());
  if (!chosen.isEmpty()) folder_->setText(QDir::toNativeSeparators(chosen));
}

bool SaveMessagesDialog::WantsSelected() const {
  return selected_->isChecked();
}

SaveOrder SaveMessagesDialog::Order() const {
  SaveOrder order;
  order.format = static_cast<SaveFormat>(formats_->checkedId());
  order.folders = folders_->isChecked();
  QString folder = QDir::fromNativeSeparators(folder_->text().trimmed());
  if (folder == "~" || folder.startsWith("~/")) folder = QDir::homePath() + folder.mid(1);
  order.folder = QDir::home().absoluteFilePath(folder).toStdString();
  return order;
}

void SaveMessagesDialog::accept() {
  core::GuardedRun(
      "SaveMessages",
      [this] {
        auto write = [](const char* key, std::string_view column, const jet::Value& value) {
          repository::SetParameter(kGroup, key, column, value);
        };
        write(kFormat, repository::kAmountColumn, formats_->checkedId());
        write(kFolders, repository::kAmountColumn, folders_->isChecked() ? 1 : 0);
        write(kFolder, repository::kTextColumn, folder_->text().trimmed().toStdString());
      },
      core::Report::kLog);
  QDialog::accept();
}

}  // namespace tarnwick::takeout
