// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/contacts_window.h"

#include <QAction>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cassert>

#include "contacts/contact_dialog.h"
#include "repository/grid_layout.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::contacts {

namespace {

constexpr const char* kForm = "frmContacts";
// Long enough that the query runs once for a word typed at ease, too short to be noticed.
constexpr int kTypingPause = 150;
constexpr int kTwips = repository::kTwipsPerPixel;

}  // namespace

frmContacts::frmContacts(QWidget* parent) : QDialog(parent), grid_(new ContactGridView(this)) {
  assert(repository::RepositoryDb().IsOpen());
  setObjectName(kForm);
  setWindowTitle(tr("Contacts"));
  setSizeGripEnabled(false);  // the status bar has one

  auto* column = new QVBoxLayout(this);
  column->addWidget(MakeNameBox());
  column->addWidget(grid_, 1);
  column->addWidget(MakeButtons());
  column->addWidget(MakeStatusBar());
  setTabOrder(mctName_, grid_);
  MakeMenu();

  typing_.setSingleShot(true);
  typing_.setInterval(kTypingPause);
  connect(&typing_, &QTimer::timeout, this, &frmContacts::RunFilter);
  connect(mctName_, &QLineEdit::textChanged, this, [this] { typing_.start(); });
  connect(grid_, &QTableView::doubleClicked, this, &frmContacts::SelectContact);

  RestoreLayout();
  RunFilter();
  mctName_->setFocus();
}

frmContacts::~frmContacts() = default;

QWidget* frmContacts::MakeNameBox() {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  mctName_ = new QLineEdit(row);
  mctName_->setObjectName("mctName");
  mctName_->setAccessibleName(tr("Name"));
  mctName_->setPlaceholderText(tr("Part of a name"));
  mctName_->setClearButtonEnabled(true);
  mctName_->installEventFilter(this);
  auto* label = new QLabel(tr("&Name"), row);
  label->setBuddy(mctName_);
  layout->addWidget(label);
  layout->addWidget(mctName_, 1);
  return row;
}

QWidget* frmContacts::MakeButtons() {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  auto add = [&](const char* name, const QString& caption, const QString& tip,
                 void (frmContacts::*command)()) {
    auto* button = new QPushButton(caption, row);
    button->setObjectName(name);
    button->setToolTip(tip);
    button->setAutoDefault(false);
    layout->addWidget(button);
    connect(button, &QPushButton::clicked, this, command);
    return button;
  };
  add("mctSelect", tr("&Select"), tr("Opens the selected contact"), &frmContacts::SelectContact)
      ->setDefault(true);
  add("ctDelete", tr("&Delete"), tr("Deletes the selected contact and its messages"),
      &frmContacts::DeleteSelected);
  layout->addStretch(1);
  add("mctQuite", tr("&Quit"), tr("Closes the contacts"), &frmContacts::reject);
  return row;
}

QStatusBar* frmContacts::MakeStatusBar() {
  StatusBar1_ = new QStatusBar(this);
  StatusBar1_->setObjectName("StatusBar1");
  count_ = new QLabel(StatusBar1_);
  count_->setMinimumWidth(count_->fontMetrics().averageCharWidth() * 30);
  StatusBar1_->addWidget(count_, 1);
  return StatusBar1_;
}

void frmContacts::MakeMenu() {
  auto add = [this](const QString& caption, const QKeySequence& keys,
                    const std::function<void()>& command) {
    auto* action = new QAction(caption, grid_);
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetShortcut);
    connect(action, &QAction::triggered, this, command);
    grid_->addAction(action);
  };
  add(tr("&Select"), {}, [this] { SelectContact(); });
  add(tr("&Copy"), QKeySequence::Copy, [this] { grid_->CopySelected(); });
  add(tr("&Delete"), QKeySequence::Delete, [this] { DeleteSelected(); });
}

void frmContacts::RunFilter() {
  typing_.stop();
  grid_->Model().List(mctName_->text().toStdString());
  ShowCount();
}

void frmContacts::ShowCount() {
  int rows = grid_->Model().rowCount();
  count_->setText(rows == 1 ? tr("1 contact") : tr("%L1 contacts").arg(rows));
  grid_->SetHint(mctName_->text().isEmpty()
                     ? tr("There are no contacts yet. They are added when mail is loaded.")
                     : tr("No contact has this in its name."));
}

void frmContacts::RefreshList() {
  int64_t id = grid_->SelectedId();
  RunFilter();
  auto contact = id == 0 ? std::nullopt : ReadContact(id);
  if (contact) grid_->SelectRow(grid_->Model().RowOf(*contact));
}

void frmContacts::SelectContact() {
  int64_t id = grid_->SelectedId();
  if (id == 0) {
    ShowNothingSelected();
    return;
  }
  typing_.stop();  // the list is run anew afterwards, and must not be while the editor is open
  frmContact editor(id, this);
  editor.exec();
  RefreshList();
  if (editor.WasSaved()) emit Changed();
}

void frmContacts::DeleteSelected() {
  int row = grid_->currentIndex().row();
  if (!DeleteContact(grid_->SelectedId())) return;
  RunFilter();
  // The next one, so that several can be deleted one after the other.
  grid_->SelectRow(std::min(row, grid_->Model().rowCount() - 1));
  emit Changed();
}

bool frmContacts::eventFilter(QObject* watched, QEvent* event) {
  if (watched != mctName_ || event->type() != QEvent::KeyPress) {
    return QDialog::eventFilter(watched, event);
  }
  switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
      // From the name to what was found.
      if (typing_.isActive()) RunFilter();
      if (grid_->SelectedId() == 0) grid_->SelectRow(0);
      grid_->setFocus();
      return true;
    case Qt::Key_Escape:
      if (mctName_->text().isEmpty()) return false;
      mctName_->clear();
      RunFilter();
      return true;
    default:
      return false;
  }
}

void frmContacts::RestoreLayout() {
  grid_->ApplyWidths(repository::ReadGridLayout(kForm, kContactColumns));
  QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  resize(QSize(fontMetrics().averageCharWidth() * 160, fontMetrics().height() * 30)
             .boundedTo(screen.size() * 9 / 10));
  auto place = repository::RestoreFormPosition(kForm, true, screen.bottom() * kTwips,
                                               screen.right() * kTwips);
  if (!place) return;
  resize(QSize(place->width / kTwips, place->height / kTwips)
             .boundedTo(screen.size())
             .expandedTo(minimumSizeHint()));
  move(place->left / kTwips, place->top / kTwips);
}

void frmContacts::SaveLayout() {
  repository::SaveGridLayout(kForm, grid_->Widths());
  repository::SaveFormPosition(kForm,
                               {y() * kTwips, x() * kTwips, height() * kTwips, width() * kTwips});
}

void frmContacts::done(int result) {
  SaveLayout();
  QDialog::done(result);
}

}  // namespace tarnwick::contacts
