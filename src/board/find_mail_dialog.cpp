// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/find_mail_dialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "platform/charset.h"

namespace tarnwick::board {

namespace {

using look::FoundMail;

enum Column { kProgram, kWhose, kMessages, kFolders, kYears, kSize, kState, kStored, kPlace };

QString Shown(const std::string& text) {
  return QString::fromStdString(platform::EnsureUtf8(text));
}

QString YearsOf(const FoundMail& mail) {
  if (mail.firstYear == 0) return {};
  QString years = QString::number(mail.firstYear);
  if (mail.lastYear != mail.firstYear) years += QString("–%1").arg(mail.lastYear);
  return years;
}

QString StateOf(const FoundMail& mail) {
  switch (mail.state) {
    case look::State::kDamaged:
      return FindMailDialog::tr("damaged");
    case look::State::kPassword:
      return FindMailDialog::tr("has a password");
    case look::State::kWhole:
      break;
  }
  return FindMailDialog::tr("whole");
}

QString StoredOf(const FoundMail& mail) {
  if (mail.stored == look::Stored::kNo) return FindMailDialog::tr("no");
  return mail.stored == look::Stored::kPartly ? FindMailDialog::tr("in part")
                                              : FindMailDialog::tr("yes");
}

}  // namespace

FindMailDialog::FindMailDialog(QStringList places, QWidget* parent)
    : QDialog(parent), places_(std::move(places)) {
  setObjectName("FindMail");
  setWindowTitle(tr("Find mail"));
  MakeControls();
  SetLooking(false);
}

void FindMailDialog::MakeControls() {
  place_ = new QLineEdit(this);
  place_->setObjectName("Place");
  place_->setAccessibleName(tr("Place to look at"));
  auto* label = new QLabel(tr("&Disk or folder:"), this);
  label->setBuddy(place_);
  browse_ = new QPushButton(tr("&Browse..."), this);
  browse_->setObjectName("Browse");
  browse_->setAutoDefault(false);
  look_ = new QPushButton(tr("Loo&k"), this);
  look_->setObjectName("Look");
  look_->setAutoDefault(false);
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(place_, 1);
  row->addWidget(browse_);
  row->addWidget(look_);

  list_ = new QTreeWidget(this);
  list_->setObjectName("Found");
  list_->setAccessibleName(tr("Mail that was found"));
  list_->setRootIsDecorated(false);
  list_->setAllColumnsShowFocus(true);
  list_->setUniformRowHeights(true);
  list_->setHeaderLabels({tr("Program"), tr("Whose"), tr("Messages"), tr("Folders"), tr("Years"),
                          tr("Size"), tr("State"), tr("Stored"), tr("Place")});
  list_->setMinimumSize(fontMetrics().averageCharWidth() * 110, fontMetrics().lineSpacing() * 14);
  note_ = new QLabel(this);
  note_->setObjectName("Note");
  note_->setTextFormat(Qt::PlainText);
  lost_ = new QCheckBox(tr("Look for lost &messages too"), this);
  lost_->setObjectName("LostToo");
  lost_->setToolTip(
      tr("Takes what the files of Outlook Express and Outlook still hold of deleted "
         "and damaged messages, even of a store that can't be opened"));
  connect(lost_, &QCheckBox::toggled, this, &FindMailDialog::TickDamaged);

  auto* buttons = new QDialogButtonBox(this);
  load_ = buttons->addButton(tr("&Load"), QDialogButtonBox::AcceptRole);
  load_->setObjectName("Load");
  buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole)->setObjectName("Cancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &FindMailDialog::reject);
  connect(browse_, &QPushButton::clicked, this, &FindMailDialog::Browse);
  connect(look_, &QPushButton::clicked, this, &FindMailDialog::LookOrStop);
  connect(place_, &QLineEdit::textChanged, this, [this] { SetLooking(isLooking_); });
  connect(list_, &QTreeWidget::itemChanged, this, &FindMailDialog::ShowTicks);
  auto* column = new QVBoxLayout(this);
  column->addLayout(row);
  column->addWidget(list_, 1);
  column->addWidget(note_);
  column->addWidget(lost_);
  column->addWidget(buttons);
}

void FindMailDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (places_.isEmpty()) return;
  QTimer::singleShot(0, this, [this] { LookAt(std::exchange(places_, {})); });
}

void FindMailDialog::Browse() {
  auto folder = core::State().Ui->ChooseFolder("Select the disk or folder to look at");
  if (folder && !folder->empty()) LookAt({Shown(*folder)});
}

void FindMailDialog::LookOrStop() {
  if (isLooking_) {
    isStopped_ = true;
  } else {
    LookAt({QDir::fromNativeSeparators(place_->text().trimmed())});
  }
}

void FindMailDialog::LookAt(const QStringList& places) {
  if (isLooking_) return;
  place_->setText(QDir::toNativeSeparators(places.join("; ")));
  list_->clear();
  found_.clear();
  isStopped_ = false;
  SetLooking(true);
  QStringList notes;
  for (const QString& place : places) {
    core::GuardedRun("FindMail", [&] {
      look::Found found = look::Look(
          place.toStdString(), true, [this](const look::Found& soFar, const std::string& folder) {
            QString text = tr("%L1 files, %2").arg(qlonglong{soFar.filesSeen}).arg(Shown(folder));
            note_->setText(note_->fontMetrics().elidedText(text, Qt::ElideMiddle, list_->width()));
            core::YieldEvents();
            return !isStopped_;
          });
      for (const FoundMail& mail : found.mail) AddRow(mail);
      if (!found.forbidden.empty()) {
        notes += tr("Folders that may not be read: %L1, the first is %2.")
                     .arg(qlonglong(found.forbidden.size()))
                     .arg(Shown(found.forbidden.front()));
      }
    });
  }
  for (int column = 0; column < list_->columnCount(); ++column) {
    list_->resizeColumnToContents(column);
  }
  if (isStopped_) notes.prepend(tr("The look was stopped."));
  if (found_.empty()) notes.prepend(tr("No mail was found."));
  SetLooking(false);
  if (!notes.isEmpty()) note_->setText(notes.join(" "));
}

void FindMailDialog::AddRow(const FoundMail& mail) {
  auto* row = new QTreeWidgetItem;
  row->setText(kProgram, Shown(mail.program));
  row->setText(kWhose, Shown(mail.user.empty() ? mail.identity : mail.user + ", " + mail.identity));
  QString messages = QLocale().toString(qlonglong{mail.messages});
  row->setText(kMessages, mail.isEstimate ? tr("about %1").arg(messages) : messages);
  row->setText(kFolders, QLocale().toString(qlonglong{mail.folders}));
  row->setText(kYears, YearsOf(mail));
  row->setText(kSize, QLocale().formattedDataSize(static_cast<qint64>(mail.bytes)));
  row->setText(kState, StateOf(mail));
  row->setToolTip(kState, Shown(mail.fault));
  row->setText(kStored, StoredOf(mail));
  row->setText(kPlace, QDir::toNativeSeparators(Shown(mail.place)));
  for (int column : {kMessages, kFolders, kSize}) {
    row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
  }
  bool isWanted = mail.stored != look::Stored::kYes && mail.messages > 0;
  row->setCheckState(kProgram, isWanted ? Qt::Checked : Qt::Unchecked);
  found_.push_back(mail);
  list_->addTopLevelItem(row);
  if (WantsLost()) TickDamaged(true);
}

std::vector<FoundMail> FindMailDialog::Ticked() const {
  std::vector<FoundMail> ticked;
  for (size_t i = 0; i < found_.size(); ++i) {
    const QTreeWidgetItem* row = list_->topLevelItem(static_cast<int>(i));
    if (row != nullptr && row->checkState(kProgram) == Qt::Checked) ticked.push_back(found_[i]);
  }
  return ticked;
}

bool FindMailDialog::WantsLost() const {
  return lost_->isChecked();
}

// A damaged store that tells of no messages may still hold lost ones.
void FindMailDialog::TickDamaged(bool on) {
  for (size_t i = 0; i < found_.size(); ++i) {
    if (found_[i].state != look::State::kDamaged || found_[i].messages > 0) continue;
    list_->topLevelItem(static_cast<int>(i))
        ->setCheckState(kProgram, on ? Qt::Checked : Qt::Unchecked);
  }
}

void FindMailDialog::ShowTicks() {
  std::vector<FoundMail> ticked = Ticked();
  load_->setEnabled(!isLooking_ && !ticked.empty());
  qlonglong messages = 0;
  for (const FoundMail& mail : ticked) messages += mail.messages;
  if (!isLooking_) note_->setText(tr("Messages that are ticked: %L1").arg(messages));
}

void FindMailDialog::SetLooking(bool on) {
  isLooking_ = on;
  place_->setEnabled(!on);
  browse_->setEnabled(!on);
  look_->setText(on ? tr("&Stop") : tr("Loo&k"));
  look_->setEnabled(on || !place_->text().trimmed().isEmpty());
  ShowTicks();
}

void FindMailDialog::reject() {
  if (isLooking_) {
    isStopped_ = true;
  } else {
    QDialog::reject();
  }
}

}  // namespace tarnwick::board
