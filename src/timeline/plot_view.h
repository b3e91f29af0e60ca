// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Messages over time as bars: incoming ones filled, outgoing ones hatched on top of them. Days are
// chosen by dragging, by a click on one bar, or with the keyboard; a double click zooms in, Escape
// goes back. A mark at an edge says that there is mail beyond it; a click on it goes there.
#pragma once

#include <QString>
#include <QWidget>
#include <optional>

#include "timeline/state.h"

namespace tarnwick::timeline {

// "1 message", "1,200 messages".
QString MessagesText(int64_t messages);
// "March 2004: 12 messages (9 in, 3 out)".
QString SpanText(DaySpan days, MessageCount count);

class TimelinePlotView : public QWidget {
  Q_OBJECT

 public:
  explicit TimelinePlotView(QWidget* parent = nullptr);

  const TimelineState& State() const { return state_; }
  void SetCounts(const DayCounts& counts);
  void SetChosen(DaySpan days);
  // What stands in place of bars when there are none.
  void SetEmptyText(const QString& text);
  // As the person does by dragging.
  void Choose(DaySpan days);
  // The bar's place in the widget.
  QRect SlotRect(int bar) const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

  // The marks of the two directions, for a legend.
  static void PaintIn(QPainter& painter, const QRect& mark, const QPalette& palette);
  static void PaintOut(QPainter& painter, const QRect& mark, const QPalette& palette);

 signals:
  void DaysChosen(int first, int last);
  // What is being chosen, or the bar the cursor came to; empty: nothing any more.
  void Told(const QString& text);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  enum class Place { kNone, kBefore, kBar, kAfter };
  struct Target {
    Place place = Place::kNone;
    int bar = 0;
  };
  QRect Plot() const;  // where the bars stand
  Target TargetAt(const QPoint& point) const;
  QString TextOf(const Target& target) const;
  void Describe(const QString& text);
  void Apply(DaySpan days);
  void GoBack();
  void AfterKey();
  void PaintBars(QPainter& painter);
  void PaintSpan(QPainter& painter, DaySpan days, bool firm);
  void PaintEdgeMarks(QPainter& painter);
  void PaintAxis(QPainter& painter);

  TimelineState state_;
  QString emptyText_;
  std::optional<int> hovered_;
  bool dragging_ = false;
  size_t stepsAtPress_ = 0;
};

}  // namespace tarnwick::timeline
