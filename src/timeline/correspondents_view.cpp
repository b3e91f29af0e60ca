// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "timeline/correspondents_view.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOption>
#include <QToolTip>
#include <algorithm>

#include "repository/plain_text_view.h"
#include "timeline/plot_view.h"

namespace tarnwick::timeline {

namespace {

constexpr int kPadding = 4;

}  // namespace

CorrespondentsView::CorrespondentsView(QWidget* parent) : QWidget(parent) {
  setObjectName("Correspondents");
  setAccessibleName(tr("Correspondents with most mail"));
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void CorrespondentsView::SetPeople(std::vector<Correspondent> people) {
  people_ = std::move(people);
  people_.resize(std::min<size_t>(people_.size(), size_t{kRows} * kColumns));
  current_ = std::clamp(current_, 0, std::max(0, static_cast<int>(people_.size()) - 1));
  hovered_ = -1;
  update();
}

void CorrespondentsView::SetFiltered(const std::string& text) {
  filtered_ = text;
  update();
}

void CorrespondentsView::SetEmptyText(const QString& text) {
  emptyText_ = text;
  update();
}

QSize CorrespondentsView::sizeHint() const {
  return {600, minimumSizeHint().height()};
}

QSize CorrespondentsView::minimumSizeHint() const {
  return {120, kRows * (fontMetrics().height() + 1) + 2};
}

QRect CorrespondentsView::CellRect(int person) const {
  int column = person / kRows;
  int row = person % kRows;
  QRect box = rect().adjusted(1, 1, -1, -1);
  int left = box.left() + box.width() * column / kColumns;
  int right = box.left() + box.width() * (column + 1) / kColumns;
  int top = box.top() + box.height() * row / kRows;
  int bottom = box.top() + box.height() * (row + 1) / kRows;
  return {left, top, right - left, bottom - top};
}

int CorrespondentsView::PersonAt(const QPoint& point) const {
  for (int i = 0; i < static_cast<int>(people_.size()); ++i) {
    if (CellRect(i).contains(point)) return i;
  }
  return -1;
}

bool CorrespondentsView::IsFiltered(int person) const {
  return !filtered_.empty() && people_[static_cast<size_t>(person)].name == filtered_;
}

QString CorrespondentsView::TextOf(int person) const {
  const Correspondent& shown = people_[static_cast<size_t>(person)];
  QString text = tr("%1: %2").arg(QString::fromStdString(shown.name).simplified(),
                                  MessagesText(shown.messages));
  return IsFiltered(person) ? tr("%1, listed").arg(text) : text;
}

void CorrespondentsView::Pick(int person) {
  current_ = person;
  QString text = IsFiltered(person)
                     ? QString()
                     : QString::fromStdString(people_[static_cast<size_t>(person)].name);
  update();
  emit NameAskedFor(text);
}

void CorrespondentsView::MoveTo(int person) {
  if (people_.empty()) return;
  current_ = std::clamp(person, 0, static_cast<int>(people_.size()) - 1);
  setAccessibleDescription(TextOf(current_));
  QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&changed);
  update();
}

bool CorrespondentsView::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    auto* help = static_cast<QHelpEvent*>(event);
    int person = PersonAt(help->pos());
    if (person < 0) {
      QToolTip::hideText();
    } else {
      QToolTip::showText(help->globalPos(), repository::TipText(TextOf(person)), this,
                         CellRect(person));
    }
    return true;
  }
  return QWidget::event(event);
}

void CorrespondentsView::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Up:
      return MoveTo(current_ - 1);
    case Qt::Key_Down:
      return MoveTo(current_ + 1);
    case Qt::Key_Left:
      return MoveTo(current_ - kRows);
    case Qt::Key_Right:
      return MoveTo(current_ + kRows);
    case Qt::Key_Home:
      return MoveTo(0);
    case Qt::Key_End:
      return MoveTo(kRows * kColumns);
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
      if (!people_.empty()) Pick(current_);
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

void CorrespondentsView::mouseReleaseEvent(QMouseEvent* event) {
  int person = PersonAt(event->pos());
  if (event->button() == Qt::LeftButton && person >= 0) Pick(person);
}

void CorrespondentsView::mouseMoveEvent(QMouseEvent* event) {
  int person = PersonAt(event->pos());
  setCursor(person >= 0 ? Qt::PointingHandCursor : Qt::ArrowCursor);
  if (person == hovered_) return;
  hovered_ = person;
  update();
}

void CorrespondentsView::leaveEvent(QEvent* event) {
  QWidget::leaveEvent(event);
  hovered_ = -1;
  update();
}

void CorrespondentsView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
  if (people_.empty()) {
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(rect(), Qt::AlignCenter, emptyText_);
  }
  int64_t most = people_.empty() ? 1 : std::max<int64_t>(1, people_.front().messages);
  for (int i = 0; i < static_cast<int>(people_.size()); ++i) PaintPerson(painter, i, most);
  if (!hasFocus()) return;
  QStyleOptionFocusRect option;
  option.initFrom(this);
  option.rect = people_.empty() ? rect() : CellRect(current_);
  option.backgroundColor = palette().color(QPalette::Base);
  style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}

void CorrespondentsView::PaintPerson(QPainter& painter, int person, int64_t most) {
  const Correspondent& shown = people_[static_cast<size_t>(person)];
  QRect cell = CellRect(person).adjusted(1, 0, -kPadding, 0);
  QColor bar = palette().color(QPalette::Active, QPalette::Highlight);
  bool filtered = IsFiltered(person);
  if (!filtered) bar.setAlphaF(hovered_ == person ? 0.45F : 0.30F);
  QRect length = cell.adjusted(0, 1, 0, -1);
  if (!filtered) {
    length.setWidth(std::max(
        2, static_cast<int>(double(cell.width()) * double(shown.messages) / double(most))));
  }
  painter.fillRect(length, bar);
  painter.setPen(
      palette().color(QPalette::Active, filtered ? QPalette::HighlightedText : QPalette::Text));
  QString count = QLocale().toString(qlonglong{shown.messages});
  QFontMetrics metrics = painter.fontMetrics();
  int countWidth = metrics.horizontalAdvance(count) + kPadding;
  QRect text = cell.adjusted(kPadding, 0, -kPadding, 0);
  painter.drawText(text, Qt::AlignRight | Qt::AlignVCenter, count);
  QString name = metrics.elidedText(QString::fromStdString(shown.name).simplified(), Qt::ElideRight,
                                    text.width() - countWidth);
  painter.drawText(text.adjusted(0, 0, -countWidth, 0), Qt::AlignLeft | Qt::AlignVCenter, name);
}

}  // namespace tarnwick::timeline
