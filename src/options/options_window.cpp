// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/options_window.h"

#include <QCheckBox>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <cassert>

#include "core/run_state.h"
#include "intake/reading_rules.h"
#include "repository/plain_text_view.h"
#include "repository/repository.h"

namespace tarnwick::options {

namespace {

// So many names of a kind are told.
constexpr size_t kNamesShown = 4;

QString Names(const std::vector<std::string>& names) {
  QStringList shown;
  for (size_t i = 0; i < names.size() && i < kNamesShown; ++i) {
    shown << QString::fromStdString(names[i]).simplified();
  }
  if (names.size() > kNamesShown) shown << QStringLiteral("...");
  return shown.join(", ");
}

QString Describe(const ProfileSummary& found) {
  if (found.IsEmpty()) return frmOptions::tr("No mail was found there.");
  QStringList lines;
  if (!found.identities.empty() || found.folders > 0) {
    QString identities = found.identities.size() == 1
                             ? frmOptions::tr("1 identity")
                             : frmOptions::tr("%L1 identities").arg(found.identities.size());
    if (!found.identities.empty()) identities += " (" + Names(found.identities) + ")";
    QString folders = found.folders == 1 ? frmOptions::tr("1 folder")
                                         : frmOptions::tr("%L1 folders").arg(found.folders);
    lines << frmOptions::tr("Outlook Express: %1, %2").arg(identities, folders);
  }
  if (!found.outlookStores.empty()) {
    QString stores = found.outlookStores.size() == 1
                         ? frmOptions::tr("1 store")
                         : frmOptions::tr("%L1 stores").arg(found.outlookStores.size());
    lines << frmOptions::tr("Outlook: %1 (%2)").arg(stores, Names(found.outlookStores));
  }
  if (!found.otherMailers.empty()) lines << Names(found.otherMailers);
  return lines.join('\n');
}

}  // namespace

frmOptions::frmOptions(ProfileReader readProfile, const std::vector<Mailer>& mailers,
                       QWidget* parent)
    : QDialog(parent), readProfile_(std::move(readProfile)) {
  assert(repository::RepositoryDb().IsOpen() && core::State().Ui != nullptr);
  setObjectName("frmOptions");
  setWindowTitle(tr("Options"));
  MakeControls(mailers);
  Form_Load();
  connect(LoadAllFolders_, &QCheckBox::clicked, this, &frmOptions::LoadAllFolders_Click);
  connect(cmdOK_, &QPushButton::clicked, this, &frmOptions::cmdOK_Click);
  connect(MSOutlook_, &QCheckBox::clicked, this, &frmOptions::MSOutlook_Click);
  connect(OutlookExpress_, &QCheckBox::clicked, this, &frmOptions::OutlookExpress_Click);
  connect(LogMailTexts_, &QCheckBox::clicked, this, &frmOptions::LogMailTexts_Click);
}

QCheckBox* frmOptions::MakeBox(const QString& name, const QString& caption, const QString& tip) {
  auto* box = new QCheckBox(caption, this);
  box->setObjectName(name);
  box->setToolTip(tip);
  return box;
}

// The designed boxes first, in their designed order.
std::vector<QCheckBox*> frmOptions::MakeMailers(const std::vector<Mailer>& mailers) {
  MSOutlook_ = MakeBox("MSOutlook", tr("O&utlook"), tr("The load command reads Outlook's stores"));
  OutlookExpress_ = MakeBox("OutlookExpress", tr("Outlook E&xpress"),
                            tr("The load command reads Outlook Express folders"));
  std::vector<QCheckBox*> boxes = {MSOutlook_, OutlookExpress_};
  for (const Mailer& mailer : mailers) {
    QString option = QString::fromStdString(mailer.option);
    if (option == MSOutlook_->objectName() || option == OutlookExpress_->objectName()) continue;
    QString name = QString::fromStdString(mailer.name);
    QCheckBox* box = MakeBox(option, name, tr("The load command reads %1").arg(name));
    box->setChecked(IsUsed(mailer.option));
    connect(box, &QCheckBox::clicked, this,
            [option = mailer.option](bool on) { SetUsed(option, on); });
    boxes.push_back(box);
  }
  return boxes;
}

void frmOptions::MakeControls(const std::vector<Mailer>& mailers) {
  LoadAllFolders_ =
      MakeBox("LoadAllFolders", tr("&Load from all folders"),
              tr("The next load asks before each mailer and reads every folder again"));
  cmdOK_ = new QPushButton(tr("OK"), this);
  cmdOK_->setObjectName("cmdOK");
  cmdOK_->setDefault(true);
  std::vector<QCheckBox*> boxes = MakeMailers(mailers);
  auto* line = new QFrame(this);
  line->setObjectName("Line1");
  line->setFrameStyle(QFrame::HLine | QFrame::Sunken);
  auto* label = new QLabel(tr("Active mailers:"), this);
  label->setObjectName("Label1");

  LogMailTexts_ = MakeBox("LogMailTexts", tr("Write &subjects into the event log"),
                          tr("The log lies unencrypted beside the repository. Without subjects and "
                             "names of files it tells less about what a load left out."));
  auto* ownLine = new QFrame(this);
  ownLine->setFrameStyle(QFrame::HLine | QFrame::Sunken);

  auto* column = new QVBoxLayout(this);
  column->addWidget(LoadAllFolders_);
  column->addWidget(line);
  column->addWidget(label);
  auto* active = new QVBoxLayout;
  active->setContentsMargins(fontMetrics().averageCharWidth() * 2, 0, 0, 0);
  for (QCheckBox* box : boxes) active->addWidget(box);
  column->addLayout(active);
  column->addWidget(MakeReading());
  column->addWidget(ownLine);
  column->addWidget(LogMailTexts_);
  column->addLayout(MakeLock());
  if (readProfile_) column->addWidget(MakeProfile());
  column->addStretch(1);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(cmdOK_);
  column->addLayout(buttons);

  QWidget* former = LoadAllFolders_;
  auto goOnTo = [&former](QWidget* next) {
    if (next == nullptr) return;
    setTabOrder(former, next);
    former = next;
  };
  for (QCheckBox* box : boxes) goOnTo(box);
  goOnTo(CompleteReading_);
  for (QCheckBox* box : readFolders_) goOnTo(box);
  goOnTo(LogMailTexts_);
  goOnTo(lockMinutes_);
  goOnTo(profileFolder_);
  goOnTo(browse_);
  goOnTo(cmdOK_);
}

// The folders belong to complete reading.
QLayout* frmOptions::MakeReadFolders() {
  auto* label = new QLabel(tr("Also these folders of Outlook Express:"), this);
  label->setObjectName("ReadFoldersLabel");
  const struct {
    const char* option;
    QString caption;
  } kFolders[] = {{intake::kDraftsOption, tr("&Drafts")},
                  {intake::kDeletedItemsOption, tr("Dele&ted Items")},
                  {intake::kOutboxOption, tr("&Outbox")}};
  auto* row = new QHBoxLayout;
  for (const auto& folder : kFolders) {
    QCheckBox* box = MakeBox(folder.option, folder.caption,
                             tr("The load command reads this folder and those in it"));
    box->setChecked(IsUsed(folder.option));
    connect(box, &QCheckBox::clicked, this,
            [option = folder.option](bool on) { SetUsed(option, on); });
    row->addWidget(box);
    readFolders_.push_back(box);
  }
  row->addStretch(1);
  auto follow = [&](QWidget* widget) {
    widget->setEnabled(false);
    connect(CompleteReading_, &QCheckBox::toggled, widget, &QWidget::setEnabled);
  };
  follow(label);
  for (QCheckBox* box : readFolders_) follow(box);
  auto* indented = new QVBoxLayout;
  indented->setContentsMargins(fontMetrics().averageCharWidth() * 2, 0, 0, 0);
  indented->addWidget(label);
  indented->addLayout(row);
  return indented;
}

QWidget* frmOptions::MakeReading() {
  auto* part = new QWidget(this);
  auto* line = new QFrame(part);
  line->setFrameStyle(QFrame::HLine | QFrame::Sunken);
  CompleteReading_ =
      MakeBox("CompleteReading", tr("&Read everything a store holds"),
              tr("Messages of every year and at every depth of a store, whole subjects and names, "
                 "and stores and files that nothing leads to. Without it much mail of large or "
                 "damaged stores is left out."));
  connect(CompleteReading_, &QCheckBox::clicked, this, &frmOptions::CompleteReading_Click);
  auto* column = new QVBoxLayout(part);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(line);
  column->addWidget(CompleteReading_);
  column->addLayout(MakeReadFolders());
  return part;
}

QLayout* frmOptions::MakeLock() {
  constexpr int kMost = 24 * 60;
  lockMinutes_ = new QSpinBox(this);
  lockMinutes_->setObjectName("LockMinutes");
  lockMinutes_->setAccessibleName(tr("Lock a protected repository after"));
  lockMinutes_->setRange(0, kMost);
  lockMinutes_->setSpecialValueText(tr("never"));
  lockMinutes_->setSuffix(tr(" min"));
  lockMinutes_->setValue(static_cast<int>(LockMinutes()));
  lockMinutes_->setToolTip(
      tr("How long a repository with a password of your own stays open while nobody uses it"));
  connect(lockMinutes_, &QSpinBox::valueChanged, this,
          [](int minutes) { SetLockMinutes(minutes); });
  auto* label = new QLabel(tr("Loc&k a protected repository after:"), this);
  label->setBuddy(lockMinutes_);
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(lockMinutes_);
  row->addStretch(1);
  return row;
}

QWidget* frmOptions::MakeProfile() {
  auto* part = new QWidget(this);
  auto* column = new QVBoxLayout(part);
  column->setContentsMargins(0, 0, 0, 0);
  auto* line = new QFrame(part);
  line->setFrameStyle(QFrame::HLine | QFrame::Sunken);
  profileFolder_ = new QLineEdit(part);
  profileFolder_->setObjectName("ProfileFolder");
  profileFolder_->setAccessibleName(tr("Windows profile"));
  profileFolder_->setReadOnly(true);
  profileFolder_->setPlaceholderText(tr("No folder is chosen yet"));
  profileFolder_->setMinimumWidth(fontMetrics().averageCharWidth() * 56);
  auto* label = new QLabel(tr("&Windows profile:"), part);
  label->setBuddy(profileFolder_);
  browse_ = new QPushButton(tr("&Browse..."), part);
  browse_->setObjectName("ProfileBrowse");
  browse_->setAutoDefault(false);
  browse_->setEnabled(!IsProfileFixed());
  browse_->setToolTip(IsProfileFixed()
                          ? tr("The folder is given by the environment (TARNWICK_PROFILE)")
                          : tr("Chooses the folder of a Windows user, on an old disk say, or one "
                               "with copied *.dbx or *.pst files"));
  connect(browse_, &QPushButton::clicked, this, &frmOptions::Browse);
  profileFound_ = new QLabel(part);
  profileFound_->setObjectName("ProfileFound");
  profileFound_->setTextFormat(Qt::PlainText);
  profileFound_->setWordWrap(true);
  // Room for what is usually found, so that the window does not jump when it comes.
  profileFound_->setMinimumHeight(fontMetrics().lineSpacing() * 3);
  profileFound_->setAlignment(Qt::AlignTop);

  auto* row = new QHBoxLayout;
  row->addWidget(profileFolder_, 1);
  row->addWidget(browse_);
  column->addWidget(line);
  column->addWidget(label);
  column->addLayout(row);
  column->addWidget(profileFound_);
  return part;
}

void frmOptions::Form_Load() {
  OutlookExpress_->setChecked(core::State().UseOutlookExpress);
  MSOutlook_->setChecked(core::State().UseMSOutlook);
  LogMailTexts_->setChecked(core::State().LogMailTexts);
  CompleteReading_->setChecked(IsReadingComplete());
}

void frmOptions::MSOutlook_Click() {
  SetUsed("MSOutlook", MSOutlook_->isChecked());
}

void frmOptions::OutlookExpress_Click() {
  SetUsed("OutlookExpress", OutlookExpress_->isChecked());
}

void frmOptions::LogMailTexts_Click() {
  SetLogMailTexts(LogMailTexts_->isChecked());
}

void frmOptions::CompleteReading_Click() {
  SetCompleteReading(CompleteReading_->isChecked());
}

void frmOptions::LoadAllFolders_Click() {
  RequestFullLoad();
}

void frmOptions::cmdOK_Click() {
  accept();
}

ProfileSummary frmOptions::Read(const std::string& folder) {
  reading_ = true;
  browse_->setEnabled(false);
  cmdOK_->setEnabled(false);
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  repaint();  // a window that has just opened is painted after its timers on Windows
  ProfileSummary found = readProfile_(folder);
  QGuiApplication::restoreOverrideCursor();
  cmdOK_->setEnabled(true);
  browse_->setEnabled(!IsProfileFixed());
  reading_ = false;
  return found;
}

void frmOptions::ShowProfile() {
  if (profileFolder_ == nullptr) return;
  std::string folder = ProfileFolder();
  profileFolder_->setText(QString::fromStdString(folder));
  profileFolder_->setToolTip(repository::TipText(profileFolder_->text()));
  if (folder.empty()) {
    ShowFound(
        tr("Choose the folder of a Windows user, on an old disk say, or one with copied *.dbx or "
           "*.pst files."));
    return;
  }
  ShowFound(tr("Looking..."));
  ShowFound(Describe(Read(folder)));
}

void frmOptions::ShowFound(const QString& text) {
  profileFound_->setText(text);
  // A label that wraps does not make its window grow.
  resize(width(), std::max(height(), layout()->totalHeightForWidth(width())));
}

void frmOptions::Browse() {
  if (reading_) return;
  auto folder = core::State().Ui->ChooseFolder("Select the folder of a Windows profile");
  if (!folder || folder->empty()) return;
  ProfileSummary found = Read(*folder);
  if (!ChooseProfile(*folder, found)) return;
  profileFolder_->setText(QString::fromStdString(ProfileFolder()));
  profileFolder_->setToolTip(repository::TipText(profileFolder_->text()));
  ShowFound(Describe(found));
}

void frmOptions::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (placed_) return;
  placed_ = true;
  adjustSize();
  move(screen()->availableGeometry().center() - rect().center());
  // Once the window is there: an old disk may take its time.
  QTimer::singleShot(0, this, &frmOptions::ShowProfile);
}

void frmOptions::reject() {
  if (!reading_) QDialog::reject();
}

}  // namespace tarnwick::options
