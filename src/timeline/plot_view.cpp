// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "timeline/plot_view.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "platform/clock.h"
#include "platform/locale.h"

namespace tarnwick::timeline {

namespace {

constexpr int kMargin = 12;       // beside the bars, for the edge marks
constexpr int kLeastSlot = 4;     // pixels
constexpr int kWidestBar = 44;    // pixels
constexpr int kLeastHatched = 4;  // pixels; lower marks would be all outline
constexpr double kAside = 0.35;   // how strong what is not chosen shows

QString Text(const std::string& text) {
  return QString::fromStdString(text);
}

QString DateText(int day, const char* pattern) {
  return Text(platform::FormatDate(DayDate(day), pattern));
}

struct AxisLabel {
  int bar;
  QString text;
  bool major;
};

// Major labels name the larger period that begins at a bar, the others the bar itself. In the order
// in which they get their room: major ones first.
std::vector<AxisLabel> AxisLabels(const std::vector<TimelineState::Bar>& bars, PeriodUnit unit) {
  std::vector<AxisLabel> labels;
  std::vector<AxisLabel> minor;
  auto add = [&](int bar, int day, bool major, const char* larger, const char* own) {
    (major ? labels : minor).push_back({bar, DateText(day, major ? larger : own), major});
  };
  for (size_t i = 0; i < bars.size(); ++i) {
    int day = bars[i].days.first;
    int bar = static_cast<int>(i);
    CivilTime date = DayDate(day).ToCivil();
    if (unit == PeriodUnit::kYear) {
      add(bar, day, true, "yyyy", "yyyy");
    } else if (unit == PeriodUnit::kMonth) {
      add(bar, day, date.month == 1, "yyyy", "mmm");
    } else {
      add(bar, day, date.day == 1, "mmm yyyy", "d");
    }
  }
  // A view that begins in the middle says where it is.
  if (!minor.empty() && minor.front().bar == 0) {
    labels.push_back({0, DateText(bars.front().days.first, "mmm yyyy"), true});
  }
  labels.insert(labels.end(), minor.begin(), minor.end());
  return labels;
}

}  // namespace

QString MessagesText(int64_t messages) {
  return messages == 1
             ? TimelinePlotView::tr("1 message")
             : TimelinePlotView::tr("%1 messages").arg(QLocale().toString(qlonglong{messages}));
}

QString SpanText(DaySpan days, MessageCount count) {
  QLocale locale;
  return TimelinePlotView::tr("%1: %2 (%3 in, %4 out)")
      .arg(Text(SpanName(days)), MessagesText(count.Total()), locale.toString(qlonglong{count.in}),
           locale.toString(qlonglong{count.out}));
}

TimelinePlotView::TimelinePlotView(QWidget* parent) : QWidget(parent) {
  setObjectName("TimelineBars");
  setAccessibleName(tr("Messages by date"));
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void TimelinePlotView::SetCounts(const DayCounts& counts) {
  state_.SetCounts(counts, DayNumber(platform::Now()));
  hovered_.reset();
  update();
}

void TimelinePlotView::SetChosen(DaySpan days) {
  state_.SetChosen(days);
  update();
}

void TimelinePlotView::SetEmptyText(const QString& text) {
  emptyText_ = text;
  update();
}

void TimelinePlotView::Choose(DaySpan days) {
  Apply(days);
}

QSize TimelinePlotView::sizeHint() const {
  return {600, minimumSizeHint().height()};
}

QSize TimelinePlotView::minimumSizeHint() const {
  return {120, fontMetrics().height() * 7 / 2 + 4};
}

QRect TimelinePlotView::Plot() const {
  return rect().adjusted(kMargin, 1, -kMargin, -fontMetrics().height() - 2);
}

QRect TimelinePlotView::SlotRect(int bar) const {
  QRect plot = Plot();
  double width = static_cast<double>(plot.width()) / static_cast<double>(state_.Bars().size());
  int left = plot.left() + static_cast<int>(std::lround(bar * width));
  int right = plot.left() + static_cast<int>(std::lround((bar + 1) * width));
  return {left, plot.top(), std::max(1, right - left), plot.height()};
}

TimelinePlotView::Target TimelinePlotView::TargetAt(const QPoint& point) const {
  int bars = static_cast<int>(state_.Bars().size());
  if (bars == 0) return {};
  QRect plot = Plot();
  if (!dragging_ && point.x() < plot.left() && state_.Before().Total() > 0) {
    return {Place::kBefore};
  }
  if (!dragging_ && point.x() > plot.right() && state_.After().Total() > 0) return {Place::kAfter};
  int bar = static_cast<int>(std::floor(double(point.x() - plot.left()) * bars / plot.width()));
  return {Place::kBar, std::clamp(bar, 0, bars - 1)};
}

QString TimelinePlotView::TextOf(const Target& target) const {
  const auto& bars = state_.Bars();
  switch (target.place) {
    case Place::kBefore:
      return tr("%1 before %2")
          .arg(MessagesText(state_.Before().Total()), Text(SpanName(bars.front().days)));
    case Place::kAfter:
      return tr("%1 after %2")
          .arg(MessagesText(state_.After().Total()), Text(SpanName(bars.back().days)));
    case Place::kBar: {
      const TimelineState::Bar& bar = bars[static_cast<size_t>(target.bar)];
      return SpanText(bar.days, bar.count);
    }
    default:
      return emptyText_;
  }
}

void TimelinePlotView::Describe(const QString& text) {
  if (text == accessibleDescription()) return;
  setAccessibleDescription(text);
  QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&changed);
}

void TimelinePlotView::Apply(DaySpan days) {
  if (state_.Choose(days)) emit DaysChosen(days.first, days.last);
  emit Told({});
  update();
}

void TimelinePlotView::GoBack() {
  DaySpan chosen = state_.Chosen();
  if (!state_.Back()) state_.DropCursor();
  if (state_.Chosen() != chosen) emit DaysChosen(state_.Chosen().first, state_.Chosen().last);
}

bool TimelinePlotView::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    auto* help = static_cast<QHelpEvent*>(event);
    Target target = TargetAt(help->pos());
    QRect area = target.place == Place::kBar ? SlotRect(target.bar) : QRect();
    QToolTip::showText(help->globalPos(), TextOf(target), this, area);
    return true;
  }
  if (event->type() == QEvent::ShortcutOverride &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    event->accept();
    return true;
  }
  return QWidget::event(event);
}

void TimelinePlotView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  state_.SetRoom(Plot().width() / kLeastSlot);
}

void TimelinePlotView::keyPressEvent(QKeyEvent* event) {
  bool extend = event->modifiers().testFlag(Qt::ShiftModifier);
  int key = event->key();
  if (layoutDirection() == Qt::RightToLeft && (key == Qt::Key_Left || key == Qt::Key_Right)) {
    key = key == Qt::Key_Left ? Qt::Key_Right : Qt::Key_Left;
  }
  switch (key) {
    case Qt::Key_Left:
      state_.MoveCursor(-1, extend);
      break;
    case Qt::Key_Right:
      state_.MoveCursor(1, extend);
      break;
    case Qt::Key_Home:
      state_.MoveToEdge(false, extend);
      break;
    case Qt::Key_End:
      state_.MoveToEdge(true, extend);
      break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:  // the same key without Shift
      if (auto selected = state_.Selected()) state_.ZoomIn(*selected);
      break;
    case Qt::Key_Minus:
      state_.ZoomOut();
      break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (auto selected = state_.Selected()) Apply(*selected);
      break;
    case Qt::Key_Escape:
      if (dragging_) {
        dragging_ = false;
        state_.DropCursor();
      } else {
        GoBack();
      }
      break;
    default:
      QWidget::keyPressEvent(event);
      return;
  }
  AfterKey();
}

void TimelinePlotView::AfterKey() {
  auto cursor = state_.CursorBar();
  auto selected = state_.Selected();
  QString text = selected ? SpanText(*selected, state_.Counts().Within(*selected)) : QString();
  emit Told(text);
  if (cursor) Describe(text);
  update();
}

void TimelinePlotView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  Target target = TargetAt(event->pos());
  stepsAtPress_ = state_.Steps();
  if (target.place == Place::kBefore || target.place == Place::kAfter) {
    state_.Edge(target.place == Place::kAfter);
    update();
  } else if (target.place == Place::kBar) {
    dragging_ = true;
    state_.PutCursor(target.bar, event->modifiers().testFlag(Qt::ShiftModifier));
    AfterKey();
  }
}

void TimelinePlotView::mouseMoveEvent(QMouseEvent* event) {
  Target target = TargetAt(event->pos());
  bool isEdge = target.place == Place::kBefore || target.place == Place::kAfter;
  setCursor(isEdge ? Qt::PointingHandCursor : Qt::ArrowCursor);
  if (dragging_ && target.place == Place::kBar) {
    if (state_.CursorBar() == target.bar) return;
    state_.PutCursor(target.bar, true);
    AfterKey();
    return;
  }
  auto hovered = target.place == Place::kBar ? std::optional<int>(target.bar) : std::nullopt;
  if (hovered == hovered_) return;
  hovered_ = hovered;
  Describe(TextOf(target));
  update();
}

void TimelinePlotView::mouseReleaseEvent(QMouseEvent* event) {
  if (!dragging_ || event->button() != Qt::LeftButton) return;
  dragging_ = false;
  if (auto selected = state_.Selected()) Apply(*selected);
}

void TimelinePlotView::mouseDoubleClickEvent(QMouseEvent* event) {
  Target target = TargetAt(event->pos());
  if (event->button() != Qt::LeftButton || target.place != Place::kBar) return;
  state_.ZoomIn(state_.Bars()[static_cast<size_t>(target.bar)].days);
  // With the click that began it, it is one step.
  state_.MergeSteps(stepsAtPress_);
  hovered_.reset();
  state_.DropCursor();
  AfterKey();
}

void TimelinePlotView::leaveEvent(QEvent* event) {
  QWidget::leaveEvent(event);
  hovered_.reset();
  update();
}

void TimelinePlotView::focusOutEvent(QFocusEvent* event) {
  QWidget::focusOutEvent(event);
  if (event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason) {
    return;
  }
  dragging_ = false;
  state_.DropCursor();
  emit Told({});
  update();
}

void TimelinePlotView::PaintIn(QPainter& painter, const QRect& mark, const QPalette& palette) {
  // The colour that it has in front: some systems take it from windows behind, and it counts
  // letters.
  painter.fillRect(mark, palette.color(QPalette::Active, QPalette::Highlight));
}

void TimelinePlotView::PaintOut(QPainter& painter, const QRect& mark, const QPalette& palette) {
  QColor line = palette.color(QPalette::Text);
  painter.fillRect(mark, palette.color(QPalette::Base));
  line.setAlphaF(0.7F);
  if (mark.height() < kLeastHatched) {
    painter.fillRect(mark, line);
    return;
  }
  painter.fillRect(mark, QBrush(line, Qt::BDiagPattern));
  painter.setPen(line);
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(mark.adjusted(0, 0, -1, -1));
}

void TimelinePlotView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  QRect box = rect().adjusted(0, 0, 0, -fontMetrics().height() - 1);
  painter.fillRect(box, palette().color(QPalette::Base));
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(box.adjusted(0, 0, -1, -1));
  if (state_.Bars().empty()) {
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(box, Qt::AlignCenter, emptyText_);
  } else {
    // Where all that is seen is chosen, there is nothing to tell it from.
    bool within = state_.Chosen().Holds(*state_.Shown());
    if (!within && !state_.ChoosesAll()) PaintSpan(painter, state_.Chosen(), false);
    PaintBars(painter);
    if (auto selected = state_.Selected(); selected && (dragging_ || hasFocus())) {
      PaintSpan(painter, *selected, true);
    }
    PaintEdgeMarks(painter);
    PaintAxis(painter);
  }
  if (hasFocus()) {
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.rect = box;
    option.backgroundColor = palette().color(QPalette::Base);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
  }
}

void TimelinePlotView::PaintBars(QPainter& painter) {
  const auto& bars = state_.Bars();
  int64_t most = 1;
  for (const TimelineState::Bar& bar : bars) most = std::max(most, bar.count.Total());
  QRect plot = Plot();
  int room = plot.height() - 3;
  bool choosesAll = state_.ChoosesAll();
  DaySpan chosen = state_.Chosen();
  auto height = [&](int64_t messages) {
    if (messages == 0) return 0;
    return std::max(1, static_cast<int>(std::lround(double(messages) * room / double(most))));
  };
  for (size_t i = 0; i < bars.size(); ++i) {
    QRect slot = SlotRect(static_cast<int>(i));
    if (hovered_ == static_cast<int>(i)) {
      QColor shade = palette().color(QPalette::Text);
      shade.setAlphaF(0.08F);
      painter.fillRect(slot, shade);
    }
    int64_t total = bars[i].count.Total();
    if (total == 0) continue;
    int gap = slot.width() >= kLeastSlot ? 1 : 0;
    int width = std::min(slot.width() - gap, kWidestBar);
    int left = slot.left() + (slot.width() - width) / 2;
    int in = height(bars[i].count.in);
    int out = bars[i].count.out == 0 ? 0 : std::max(1, height(total) - in);
    if (in + out == 1) (in > 0 ? in : out) = 2;  // seen beside the frame
    const DaySpan& days = bars[i].days;
    bool aside = !choosesAll && (days.last < chosen.first || days.first > chosen.last);
    painter.setOpacity(aside ? kAside : 1.0);
    int foot = plot.bottom() + 1;
    if (in > 0) PaintIn(painter, {left, foot - in, width, in}, palette());
    if (out > 0) PaintOut(painter, {left, foot - in - out, width, out}, palette());
    painter.setOpacity(1.0);
  }
}

// firm: what is being chosen, with a frame; otherwise what the list is narrowed to.
void TimelinePlotView::PaintSpan(QPainter& painter, DaySpan days, bool firm) {
  const auto& bars = state_.Bars();
  auto first = std::find_if(bars.begin(), bars.end(),
                            [&](const auto& bar) { return bar.days.last >= days.first; });
  auto end =
      std::find_if(first, bars.end(), [&](const auto& bar) { return bar.days.first > days.last; });
  if (first == end) return;
  QRect left = SlotRect(static_cast<int>(first - bars.begin()));
  QRect right = SlotRect(static_cast<int>(end - bars.begin()) - 1);
  QRect span = left.united(right);
  QColor shade = palette().color(QPalette::Active, QPalette::Highlight);
  shade.setAlphaF(firm ? 0.30F : 0.18F);
  bool isShaded = firm && days == state_.Chosen() && !state_.ChoosesAll();
  if (!isShaded) painter.fillRect(span, shade);
  if (!firm) return;
  painter.setPen(palette().color(QPalette::Text));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(span.adjusted(0, 0, -1, -1));
}

void TimelinePlotView::PaintEdgeMarks(QPainter& painter) {
  QRect plot = Plot();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(palette().color(QPalette::Text));
  auto mark = [&](int tip, int base) {
    QPainterPath path;
    int middle = plot.center().y();
    path.moveTo(tip, middle);
    path.lineTo(base, middle - 5);
    path.lineTo(base, middle + 5);
    path.closeSubpath();
    painter.drawPath(path);
  };
  if (state_.Before().Total() > 0) mark(3, 9);
  if (state_.After().Total() > 0) mark(width() - 4, width() - 10);
  painter.setRenderHint(QPainter::Antialiasing, false);
}

void TimelinePlotView::PaintAxis(QPainter& painter) {
  std::vector<AxisLabel> labels = AxisLabels(state_.Bars(), state_.Unit());
  QFontMetrics metrics = fontMetrics();
  int top = Plot().bottom() + 1;
  int space = metrics.horizontalAdvance(' ') * 2;
  std::vector<QRect> taken;
  auto place = [&](const AxisLabel& label) {
    QRect slot = SlotRect(label.bar);
    int width = metrics.horizontalAdvance(label.text) + 1;
    // A label that is wider than its bar begins with it.
    int left = width < slot.width() ? slot.left() + (slot.width() - width) / 2 : slot.left();
    QRect area(std::min(left, this->width() - width), top + 1, width, metrics.height());
    QRect clear = area.adjusted(-space, 0, space, 0);
    if (std::any_of(taken.begin(), taken.end(),
                    [&](const QRect& other) { return other.intersects(clear); })) {
      return;
    }
    taken.push_back(area);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(area, Qt::AlignLeft | Qt::AlignTop, label.text);
    painter.setPen(palette().color(QPalette::Mid));
    if (width >= slot.width()) painter.drawLine(slot.left(), top, slot.left(), top + 3);
  };
  // Those of the larger periods first; the others come in between, or not at all.
  for (const AxisLabel& label : labels) {
    if (label.major) place(label);
  }
  if (state_.Unit() == PeriodUnit::kYear || labels.empty()) return;
  int widest = 0;
  for (const AxisLabel& label : labels) {
    if (!label.major) widest = std::max(widest, metrics.horizontalAdvance(label.text));
  }
  int every = 1;
  int slot = SlotRect(0).width();
  bool isDay = state_.Unit() == PeriodUnit::kDay;
  for (int step : {1, isDay ? 5 : 3, isDay ? 10 : 6}) {
    every = step;
    if (slot * step > widest + space) break;
    if (step >= 6) return;
  }
  for (const AxisLabel& label : labels) {
    CivilTime date = DayDate(state_.Bars()[static_cast<size_t>(label.bar)].days.first).ToCivil();
    bool fits = isDay ? date.day % every == 0 : (date.month - 1) % every == 0;
    if (!label.major && fits) place(label);
  }
}

}  // namespace tarnwick::timeline
