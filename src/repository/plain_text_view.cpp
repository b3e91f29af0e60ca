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

// The layout of a line takes time that grows faster than the line: longer ones are broken, which
// leaves even megabytes without a line end readable at once.
constexpr qsizetype kLongestLine = 4000;
// More than anyone reads in a window; the whole is in the message's file.
constexpr qsizetype kLongestText = 2000000;

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

QString ReadableText(const std::string& text, const QString& advice) {
  QString all = QString::fromStdString(text);
  bool isCut = all.size() > kLongestText;
  if (isCut) all.truncate(kLongestText);
  QString shown;
  shown.reserve(all.size() + all.size() / kLongestLine + 1);
  qsizetype length = 0;
  for (QChar c : all) {
    length = c == u'\n' ? 0 : length + 1;
    if (length > kLongestLine && !c.isLowSurrogate()) {
      shown += u'\n';
      length = 1;
    }
    shown += c;
  }
  if (isCut) shown += "\n[...]\n" + advice;
  return shown;
}

}  // namespace tarnwick::repository
