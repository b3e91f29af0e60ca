// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/list_signs_view.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmapCache>
#include <QStringList>
#include <algorithm>
#include <utility>
#include <vector>

namespace tarnwick::board {

namespace {

constexpr int kSide = kSignWidth;
constexpr qreal kSharp = 3;  // for screens of any density

using Draw = void (*)(QPainter& painter);

// Each is drawn around the middle of a square of kSide.
void DrawPaperclip(QPainter& painter) {
  painter.rotate(35);
  QPainterPath wire(QPointF(2.6, -2));
  wire.lineTo(2.6, 2.6);
  wire.arcTo(QRectF(-2.6, 0, 5.2, 5.2), 0, -180);
  wire.lineTo(-2.6, -3.4);
  wire.arcTo(QRectF(-2.6, -5.2, 3.6, 3.6), 180, -180);
  wire.lineTo(1, 2.2);
  wire.arcTo(QRectF(-1, 1.2, 2, 2), 0, -180);
  wire.lineTo(-1, -2);
  painter.drawPath(wire);
}

void DrawArrowBack(QPainter& painter) {
  QPainterPath arrow(QPointF(4.6, 3.8));
  arrow.cubicTo(4.6, 0, 2, -1.2, -4.4, -1.2);
  arrow.moveTo(-1.2, -4.4);
  arrow.lineTo(-4.4, -1.2);
  arrow.lineTo(-1.2, 2);
  painter.drawPath(arrow);
}

void DrawArrowOn(QPainter& painter) {
  painter.scale(-1, 1);
  DrawArrowBack(painter);
}

void DrawFlag(QPainter& painter) {
  QColor colour = MarkColor();
  painter.setPen(QPen(colour, 1.2));
  painter.drawLine(QPointF(-2.8, -4.6), QPointF(-2.8, 4.8));
  painter.setBrush(colour);
  painter.drawPolygon(QPolygonF({{-2.8, -4.6}, {3.8, -2.2}, {-2.8, 0.2}}));
}

void DrawNothing(QPainter& /*painter*/) {}

void DrawClosed(QPainter& painter) {
  painter.setBrush(painter.pen().color());
  painter.drawPolygon(QPolygonF({{-2, -3.6}, {2.4, 0}, {-2, 3.6}}));
}

void DrawOpen(QPainter& painter) {
  painter.rotate(90);
  DrawClosed(painter);
}

// The signs side by side, and a text behind the first of them. name tells the drawing from others.
QPixmap Drawn(const std::vector<Draw>& signs, const QString& name, const QString& text = {}) {
  if (signs.empty()) return {};
  QColor colour = QGuiApplication::palette().color(QPalette::Text);
  QString key = QStringLiteral("tarnwick/") + name + text + colour.name() + MarkColor().name();
  QPixmap drawn;
  if (QPixmapCache::find(key, &drawn)) return drawn;
  QFontMetrics metrics(QGuiApplication::font());
  int textWidth = text.isEmpty() ? 0 : metrics.horizontalAdvance(text) + 4;
  int height = text.isEmpty() ? kSide : std::max(kSide, metrics.height());
  drawn = QPixmap(QSize(kSide * static_cast<int>(signs.size()) + textWidth, height) * kSharp);
  drawn.setDevicePixelRatio(kSharp);
  drawn.fill(Qt::transparent);
  QPainter painter(&drawn);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setFont(QGuiApplication::font());
  painter.setPen(colour);
  painter.drawText(QRect(kSide, 0, textWidth, height), Qt::AlignLeft | Qt::AlignVCenter, text);
  qreal middle = kSide / 2.0;
  for (Draw draw : signs) {
    painter.save();
    painter.setPen(QPen(colour, 1.2));
    painter.translate(middle, height / 2.0);
    draw(painter);
    painter.restore();
    middle += kSide + std::exchange(textWidth, 0);
  }
  painter.end();
  QPixmapCache::insert(key, drawn);
  return drawn;
}

}  // namespace

QColor MarkColor() {
  bool dark = QGuiApplication::palette().color(QPalette::Base).lightness() < 128;
  return dark ? QColor(255, 120, 110) : QColor(180, 0, 0);
}

QPixmap Paperclip() {
  return Drawn({DrawPaperclip}, QStringLiteral("clip"));
}

QPixmap SubjectSign(const intake::MessageState& state, Indent indent, const QString& count) {
  std::vector<Draw> signs;
  QString name;
  auto add = [&](bool isSo, Draw draw, QChar letter) {
    if (!isSo) return;
    signs.push_back(draw);
    name += letter;
  };
  add(indent == Indent::kClosed, DrawClosed, 'c');
  add(indent == Indent::kOpen, DrawOpen, 'o');
  add(indent == Indent::kOne || indent == Indent::kTwo, DrawNothing, ' ');
  add(indent == Indent::kTwo, DrawNothing, ' ');
  add(state.isAnswered, DrawArrowBack, 'R');
  add(state.isForwarded, DrawArrowOn, 'P');
  add(state.isFlagged, DrawFlag, 'F');
  return Drawn(signs, name, count);
}

QString StateText(const intake::MessageState& state) {
  auto tr = [](const char* text) { return QCoreApplication::translate("ListModel", text); };
  QStringList words;
  if (state.IsUnread()) words << tr("not read");
  if (state.isAnswered) words << tr("replied to");
  if (state.isForwarded) words << tr("forwarded");
  if (state.isFlagged) words << tr("flagged");
  if (state.isDraft) words << tr("draft");
  return words.join(", ");
}

}  // namespace tarnwick::board
