// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A label of one line that gives way when room is short: "..." where it is cut, the whole in the
// tool tip.
#pragma once

#include <QLabel>

namespace tarnwick::repository {

class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  ElidedLabel(Qt::TextElideMode mode, QWidget* parent = nullptr);
  // The tool tip is the whole text, until another one is given.
  void SetText(const QString& text);
  // What the text means in plain words: the tool tip, and what a screen reader says of it.
  void Explain(const QString& meaning);
  const QString& WholeText() const { return text_; }
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Qt::TextElideMode mode_;
  QString text_;
};

}  // namespace tarnwick::repository
