// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/filter_strip_view.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QRadioButton>
#include <QStringListModel>
#include <QTimer>
#include <algorithm>

#include "core/messages.h"
#include "platform/locale.h"

namespace tarnwick::board {

namespace {

QString BoxText(const QWidget* box) {
  if (const auto* combo = qobject_cast<const QComboBox*>(box)) return combo->currentText();
  return qobject_cast<const QLineEdit*>(box)->text();
}

void SetBoxText(QWidget* box, const QString& text) {
  if (auto* combo = qobject_cast<QComboBox*>(box)) {
    combo->setEditText(text);
  } else {
    qobject_cast<QLineEdit*>(box)->setText(text);
  }
}

void SelectBoxText(QWidget* box) {
  auto* combo = qobject_cast<QComboBox*>(box);
  (combo != nullptr ? combo->lineEdit() : qobject_cast<QLineEdit*>(box))->selectAll();
}

void Choose(QButtonGroup* group, int id) {
  if (QAbstractButton* button = group->button(id)) button->setChecked(true);
}

QStringList ToList(const std::vector<std::string>& texts) {
  QStringList list;
  list.reserve(static_cast<qsizetype>(texts.size()));
  for (const std::string& text : texts) list << QString::fromStdString(text);
  return list;
}

// Shows each name in one line; what is chosen is the name as it is, whatever blanks it has.
class NameModel : public QStringListModel {
 public:
  using QStringListModel::QStringListModel;
  QVariant data(const QModelIndex& index, int role) const override {
    QVariant value = QStringListModel::data(index, role);
    return role == Qt::DisplayRole ? QVariant(value.toString().simplified()) : value;
  }
};

}  // namespace

FilterStripView::FilterStripView(QWidget* parent) : QWidget(parent) {
  setObjectName("FilterStrip");
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  BuildBoxes(grid);

  auto id = [](auto choice) { return static_cast<int>(choice); };
  QGroupBox* groups[] = {
      BuildGroup("Frame1", tr("Direction"), direction_,
                 {{"oBoth", tr("Both"), id(ListDirection::kBoth)},
                  {"oIn", tr("In"), id(ListDirection::kIn)},
                  {"oOut", tr("Out"), id(ListDirection::kOut)}},
                 2),
      BuildGroup("Frame2", tr("Sort by"), sort_,
                 {{"oDate", tr("Date"), id(ListSort::kDate)},
                  {"oSubject", tr("Subject"), id(ListSort::kSubject)},
                  {"oFromTo", tr("From/To"), id(ListSort::kFromTo)},
                  {"oDirection", tr("Direction"), id(ListSort::kDirection)}},
                 2),
      BuildGroup("Frame3", tr("Order by"), order_,
                 {{"odAscending", tr("Ascending"), id(ListOrder::kAscending)},
                  {"odDescending", tr("Descending"), id(ListOrder::kDescending)}},
                 1)};
  groups_ = {groups[0], groups[1], groups[2]};
  firstGroupColumn_ = grid->columnCount();
  PlaceGroups();
  // As Enter goes through them, though the boxes stand in columns.
  for (size_t i = 1; i < boxes_.size(); ++i) setTabOrder(boxes_[i - 1], boxes_[i]);
  setTabOrder(boxes_.back(), active_);
}

// At the end of the two rows, or below them in a narrow window.
void FilterStripView::PlaceGroups() {
  auto* grid = qobject_cast<QGridLayout*>(layout());
  constexpr int kBelow[][2] = {{0, 4}, {4, 2}, {6, 1}};  // of each column and columns
  for (int i = 0; i < static_cast<int>(std::size(kBelow)); ++i) {
    QGroupBox* group = groups_[static_cast<size_t>(i)];
    grid->removeWidget(group);
    if (isFolded_) {
      grid->addWidget(group, 2, kBelow[i][0], 1, kBelow[i][1]);
    } else {
      grid->addWidget(group, 0, firstGroupColumn_ + i, 2, 1);
    }
  }
}

int FilterStripView::GroupsWidth() const {
  int width = 0;
  for (const QGroupBox* group : groups_) {
    width += group->minimumSizeHint().width() + layout()->spacing();
  }
  return width;
}

// The window may become narrower than two rows want: then they fold.
QSize FilterStripView::minimumSizeHint() const {
  QSize size = QWidget::minimumSizeHint();
  if (!isFolded_) size.setWidth(size.width() - GroupsWidth());
  return size;
}

void FilterStripView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (!isFolded_) wholeWidth_ = QWidget::minimumSizeHint().width();
  bool folds = width() < wholeWidth_;
  if (folds == isFolded_) return;
  isFolded_ = folds;
  PlaceGroups();
  updateGeometry();
}

void FilterStripView::BuildBoxes(QGridLayout* grid) {
  dateFrom_.edit = MakeEdit("DateFrom");
  dateTo_.edit = MakeEdit("DateTo");
  fromTo_ = MakeCombo("cmbFromTo");
  subject_ = MakeEdit("Subject");
  file_ = MakeCombo("cmbFile");
  mailText_ = MakeEdit("MailText");
  active_ = new QCheckBox(tr("Hot &Email"), this);
  active_->setObjectName("ckbActive");
  attached_ = new QCheckBox(tr("Atta&ched File"), this);
  attached_->setObjectName("AttachedFile");
  for (QCheckBox* box : {active_, attached_}) {
    connect(box, &QCheckBox::clicked, this, &FilterStripView::FilterChanged);
  }
  // The date that stands there already, typed once more, is chosen, too.
  for (DateBox* box : {&dateFrom_, &dateTo_}) {
    connect(box->edit, &QLineEdit::textEdited, this, [box] { box->grows = box->isOwn = false; });
  }
  subject_->setPlaceholderText(tr("Part of the subject"));
  mailText_->setPlaceholderText(tr("Part of the message"));
  fromTo_->lineEdit()->setPlaceholderText(tr("Part of a name"));
  file_->lineEdit()->setPlaceholderText(tr("Part of a name"));
  const QString marks = tr("an apostrophe or quotation mark");
  subject_->setToolTip(tr("Part of the subject. Each character stands for itself, but %1 is looked "
                          "for as an underscore (_).")
                           .arg(marks));
  mailText_->setToolTip(tr("Part of the message. Here % stands for any text, and _, %1 for any "
                           "one character.")
                            .arg(marks));
  boxes_ = {dateFrom_.edit, dateTo_.edit, fromTo_, subject_, file_, mailText_};

  const struct {
    QString label;
    QWidget* box;
    int row, column;
  } places[] = {
      {tr("Date Fro&m"), dateFrom_.edit, 0, 0}, {tr("Date T&o"), dateTo_.edit, 1, 0},
      {tr("F&rom/To"), fromTo_, 0, 2},          {tr("F&ile"), file_, 1, 2},
      {tr("S&ubject"), subject_, 0, 4},         {tr("Mail te&xt"), mailText_, 1, 4},
  };
  for (const auto& place : places) {
    auto* label = new QLabel(place.label, this);
    label->setContentsMargins(place.column == 0 ? 0 : 6, 0, 2, 0);
    label->setBuddy(place.box);
    place.box->setAccessibleName(QString(place.label).remove('&'));
    grid->addWidget(label, place.row, place.column);
    grid->addWidget(place.box, place.row, place.column + 1);
  }
  grid->addWidget(active_, 0, 6);
  grid->addWidget(attached_, 1, 6);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 3);
  grid->setColumnStretch(5, 4);
}

QGroupBox* FilterStripView::BuildGroup(
    const char* name, const QString& title, QButtonGroup*& buttons,
    const std::vector<std::tuple<const char*, QString, int>>& choices, int columns) {
  auto* group = new QGroupBox(title, this);
  group->setObjectName(name);
  auto* layout = new QGridLayout(group);
  layout->setContentsMargins(6, 2, 6, 4);
  layout->setVerticalSpacing(2);
  buttons = new QButtonGroup(group);
  int place = 0;
  for (const auto& [choiceName, caption, id] : choices) {
    auto* button = new QRadioButton(caption, group);
    button->setObjectName(choiceName);
    button->setAccessibleName(title + ": " + caption);
    buttons->addButton(button, id);
    layout->addWidget(button, place / columns, place % columns);
    ++place;
  }
  connect(buttons, &QButtonGroup::idClicked, this, &FilterStripView::FilterChanged);
  return group;
}

QComboBox* FilterStripView::MakeCombo(const char* name) {
  auto* combo = new QComboBox(this);
  combo->setObjectName(name);
  combo->setEditable(true);
  combo->setInsertPolicy(QComboBox::NoInsert);
  // What is typed is a part of a name: it must not be completed to a whole one.
  combo->setCompleter(nullptr);
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  combo->setMinimumContentsLength(4);
  combo->setMaxVisibleItems(16);
  combo->setModel(new NameModel(combo));
  auto* popup = new QListView(combo);
  popup->setUniformItemSizes(true);  // the list may hold thousands
  popup->setTextElideMode(Qt::ElideRight);
  combo->setView(popup);
  combo->installEventFilter(this);
  connect(combo, &QComboBox::activated, this, [this, combo] { Apply(combo); });
  return combo;
}

QLineEdit* FilterStripView::MakeEdit(const char* name) {
  auto* edit = new QLineEdit(this);
  edit->setObjectName(name);
  edit->setMinimumWidth(edit->fontMetrics().horizontalAdvance("12/28/2008") + 14);
  edit->installEventFilter(this);
  return edit;
}

void FilterStripView::ShowFilter(const ListFilter& filter) {
  ShowDate(dateFrom_, filter.DateFrom, filter.DateFromGrows);
  ShowDate(dateTo_, filter.DateTo, filter.DateToGrows);
  dateFrom_.isOwn = filter.DateFromIsOwn;
  for (DateBox* box : {&dateFrom_, &dateTo_}) {
    box->grewBefore = box->grows;
    box->wasOwn = box->isOwn;
  }
  fromTo_->setEditText(QString::fromStdString(filter.FromTo));
  subject_->setText(QString::fromStdString(filter.Subject));
  file_->setEditText(QString::fromStdString(filter.FileName));
  mailText_->setText(QString::fromStdString(filter.MailText));
  active_->setChecked(filter.Active);
  attached_->setChecked(filter.AttachedFile);
  Choose(direction_, static_cast<int>(filter.Direction));
  Choose(sort_, static_cast<int>(filter.SortBy));
  Choose(order_, static_cast<int>(filter.SortOrder));
  // Of a name that is longer than its box the beginning is seen.
  for (QComboBox* combo : {fromTo_, file_}) combo->lineEdit()->home(false);
  for (QWidget* box : boxes_) before_[box] = BoxText(box);
}

void FilterStripView::ReadFilter(ListFilter& filter) const {
  filter.DateFrom = DateOf(dateFrom_);
  filter.DateTo = DateOf(dateTo_);
  auto grows = [](const DateBox& box) { return box.grows && box.edit->text() == box.shown; };
  filter.DateFromGrows = grows(dateFrom_);
  filter.DateToGrows = grows(dateTo_);
  filter.DateFromIsOwn = dateFrom_.isOwn && dateFrom_.edit->text() == dateFrom_.shown;
  filter.FromTo = fromTo_->currentText().toStdString();
  filter.Subject = subject_->text().toStdString();
  filter.FileName = file_->currentText().toStdString();
  filter.MailText = mailText_->text().toStdString();
  filter.Active = active_->isChecked();
  filter.AttachedFile = attached_->isChecked();
  filter.Direction = static_cast<ListDirection>(direction_->checkedId());
  filter.SortBy = static_cast<ListSort>(sort_->checkedId());
  filter.SortOrder = static_cast<ListOrder>(order_->checkedId());
}

void FilterStripView::SetChoices(Choices list, const std::vector<std::string>& texts) {
  QComboBox* combo = list == Choices::kContacts ? fromTo_ : file_;
  QString typed = combo->currentText();
  qobject_cast<QStringListModel*>(combo->model())->setStringList(ToList(texts));
  combo->setCurrentIndex(-1);
  combo->setEditText(typed);
  outdated_.erase(combo);
}

void FilterStripView::ForgetChoices() {
  outdated_ = {fromTo_, file_};
  AskForChoices();
}

void FilterStripView::AskForChoices() {
  for (QComboBox* combo : {fromTo_, file_}) {
    if (combo->hasFocus()) AskFor(combo);
  }
}

void FilterStripView::AskFor(QComboBox* combo) {
  if (!outdated_.contains(combo)) return;
  emit ChoicesAskedFor(combo == fromTo_ ? Choices::kContacts : Choices::kFiles);
}

void FilterStripView::SortBy(ListSort sort) {
  int id = static_cast<int>(sort);
  if (sort_->checkedId() == id) {
    bool ascending = order_->checkedId() == static_cast<int>(ListOrder::kAscending);
    Choose(order_, static_cast<int>(ascending ? ListOrder::kDescending : ListOrder::kAscending));
  }
  Choose(sort_, id);
  emit FilterChanged();
}

void FilterStripView::FocusFirst() {
  boxes_.front()->setFocus();
}

bool FilterStripView::eventFilter(QObject* watched, QEvent* event) {
  auto* box = qobject_cast<QWidget*>(watched);
  if (box == nullptr || std::find(boxes_.begin(), boxes_.end(), box) == boxes_.end()) {
    return QWidget::eventFilter(watched, event);
  }
  auto reason = [event] { return static_cast<QFocusEvent*>(event)->reason(); };
  switch (event->type()) {
    case QEvent::FocusIn:
      AskForChoices();
      if (reason() != Qt::PopupFocusReason && reason() != Qt::ActiveWindowFocusReason) {
        Remember(box);
      }
      break;
    case QEvent::FocusOut:
      if (reason() != Qt::PopupFocusReason && reason() != Qt::ActiveWindowFocusReason) {
        Leave(box);
      }
      break;
    case QEvent::MouseButtonPress:
      // The list drops down at once, and the focus may come later, where the window was not in
      // front.
      if (auto* combo = qobject_cast<QComboBox*>(box)) AskFor(combo);
      break;
    case QEvent::Wheel:
      // Scrolling past a box must not choose another correspondent.
      event->ignore();
      return qobject_cast<QComboBox*>(box) != nullptr;
    case QEvent::ShortcutOverride:
      if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) event->accept();
      break;
    case QEvent::KeyPress:
      if (KeyPressed(box, static_cast<QKeyEvent*>(event)->key())) return true;
      break;
    default:
      break;
  }
  return QWidget::eventFilter(watched, event);
}

bool FilterStripView::KeyPressed(QWidget* box, int key) {
  auto* combo = qobject_cast<QComboBox*>(box);
  switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (DateBox* date = DateBoxOf(box); date != nullptr && !HoldsDate(*date)) {
        Complain(box);
        return true;
      }
      Apply(box);
      MoveOn(box);
      return true;
    case Qt::Key_Escape:
      SetBoxText(box, before_[box]);
      if (DateBox* date = DateBoxOf(box)) {
        date->grows = date->grewBefore;
        date->isOwn = date->wasOwn;
      }
      return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
      // Opens the list; stepping through it unseen would query for every name on the way.
      if (combo == nullptr) return false;
      combo->showPopup();
      return true;
    default:
      return false;
  }
}

void FilterStripView::Remember(QWidget* box) {
  // A box to which the focus was brought back keeps the date that Escape returns to.
  if (DateBox* date = DateBoxOf(box); date != nullptr && !HoldsDate(*date)) return;
  before_[box] = BoxText(box);
  if (DateBox* date = DateBoxOf(box)) {
    date->grewBefore = date->grows;
    date->wasOwn = date->isOwn;
  }
}

void FilterStripView::Apply(QWidget* box) {
  if (DateBox* date = DateBoxOf(box)) {
    ShowDate(*date, DateOf(*date), date->grows && date->edit->text() == date->shown);
  }
  if (BoxText(box) == before_[box]) return;
  before_[box] = BoxText(box);
  emit FilterChanged();
}

void FilterStripView::MoveOn(QWidget* box) {
  auto next = std::find(boxes_.begin(), boxes_.end(), box) + 1;
  if (next == boxes_.end()) {
    emit LastBoxLeft();
    return;
  }
  (*next)->setFocus(Qt::TabFocusReason);
  SelectBoxText(*next);
}

FilterStripView::DateBox* FilterStripView::DateBoxOf(QWidget* box) {
  if (box == dateFrom_.edit) return &dateFrom_;
  return box == dateTo_.edit ? &dateTo_ : nullptr;
}

bool FilterStripView::HoldsDate(const DateBox& box) {
  return box.edit->text() == box.shown ||
         platform::ParseDate(box.edit->text().trimmed().toStdString()).has_value();
}

DateTime FilterStripView::DateOf(const DateBox& box) {
  // The text that was put there stands for its date, however a locale would read it back.
  if (box.edit->text() == box.shown) return box.date;
  auto typed = platform::ParseDate(box.edit->text().trimmed().toStdString());
  return typed ? typed->DatePart() : box.date;
}

void FilterStripView::ShowDate(DateBox& box, DateTime date, bool grows) {
  box.date = date;
  box.grows = grows;
  box.shown = QString::fromStdString(platform::FormatDate(date, "ddddd"));
  box.edit->setText(box.shown);
}

void FilterStripView::Complain(QWidget* box) {
  if (complaining_) return;
  complaining_ = true;
  core::ShowMessage("Invalid date format.");
  complaining_ = false;
  box->setFocus(Qt::OtherFocusReason);
  SelectBoxText(box);
}

void FilterStripView::Leave(QWidget* box) {
  if (BoxText(box) == before_[box]) return;
  // Once the click or key that took the focus away has been dealt with: it may put a date right,
  // or fill the boxes anew.
  QTimer::singleShot(0, this, [this, box] {
    if (!isVisible() || !isEnabled() || box->hasFocus()) return;
    DateBox* date = DateBoxOf(box);
    if (date != nullptr && !HoldsDate(*date)) {
      Complain(box);
    } else {
      Apply(box);
    }
  });
}

}  // namespace tarnwick::board
