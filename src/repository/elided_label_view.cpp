// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/elided_label_view.h"

#include <QPainter>
#include <QStyle>
#include <algorithm>

#include "repository/plain_text_view.h"

namespace tarnwick::repository {

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, QWidget* parent) : QLabel(parent), mode_(mode) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void ElidedLabel::SetText(const QString& text) {
  Explain({});
  if (text == text_) return;
  text_ = text;
  setText(text);  // for screen readers
  setToolTip(TipText(text));
  updateGeometry();
  update();
}

void ElidedLabel::Explain(const QString& meaning) {
  setToolTip(TipText(meaning.isEmpty() ? text_ : meaning));
  setAccessibleDescription(meaning);
}

QSize ElidedLabel::sizeHint() const {
  return {fontMetrics().horizontalAdvance(text_) + 8, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
  return {std::min(sizeHint().width(), fontMetrics().averageCharWidth() * 12),
          fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  QRect area = contentsRect().adjusted(2, 0, -2, 0);
  style()->drawItemText(&painter, area, Qt::AlignVCenter | Qt::AlignLeft, palette(), isEnabled(),
                        fontMetrics().elidedText(text_, mode_, area.width()), QPalette::WindowText);
}

}  // namespace tarnwick::repository
