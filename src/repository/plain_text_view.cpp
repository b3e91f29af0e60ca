// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/plain_text_view.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>

namespace tarnwick::repository {

namespace {

// Tool tips and message boxes show their text in labels, too. Each label is polished before it is
// laid out or shown for the first time.
class PlainLabels : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Polish) {
      auto* label = qobject_cast<QLabel*>(watched);
      if (label != nullptr && label->textFormat() == Qt::AutoText) {
        label->setTextFormat(Qt::PlainText);
      }
    }
    return QObject::eventFilter(watched, event);
  }
};

}  // namespace

void KeepTextsPlain(QApplication& application) {
  application.installEventFilter(new PlainLabels(&application));
}

QString TipText(const QString& text) {
  constexpr qsizetype kLine = 90;  // characters
  constexpr int kMostLines = 12;
  QString tip;
  qsizetype begin = 0;
  for (int line = 0; begin < text.size(); ++line) {
    if (line == kMostLines) return tip + QStringLiteral("\n...");
    qsizetype end = text.indexOf(u'\n', begin);
    if (end < 0) end = text.size();
    bool isWhole = end - begin <= kLine;
    if (!isWhole) {
      end = text.lastIndexOf(u' ', begin + kLine);
      if (end <= begin) end = begin + kLine - (text[begin + kLine].isLowSurrogate() ? 1 : 0);
    }
    if (line > 0) tip += u'\n';
    tip += QStringView(text).mid(begin, end - begin);
    begin = end + (end < text.size() && (text[end] == u'\n' || text[end] == u' ') ? 1 : 0);
  }
  return tip;
}

}  // namespace tarnwick::repository
