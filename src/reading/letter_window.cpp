// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/letter_window.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>

#include "reading/letter_view.h"
#include "repository/plain_text_view.h"

namespace tarnwick::reading {

namespace {

void SetUp(QDialog* window, QWidget* content, int letters, int lines) {
  window->setAttribute(Qt::WA_DeleteOnClose);
  window->setWindowFlag(Qt::WindowMaximizeButtonHint);
  auto* column = new QVBoxLayout(window);
  column->setContentsMargins(4, 4, 4, 4);
  column->addWidget(content);
  QSize room = QGuiApplication::primaryScreen()->availableGeometry().size() * 9 / 10;
  QFontMetrics metrics = window->fontMetrics();
  window->resize(
      QSize(metrics.averageCharWidth() * letters, metrics.height() * lines).boundedTo(room));
}

}  // namespace

LetterWindow::LetterWindow(int64_t id, QWidget* parent) : QDialog(parent) {
  setObjectName("LetterWindow");
  auto* letter = new LetterView(this);
  SetUp(this, letter, 100, 36);
  letter->Show(id);
  setWindowTitle(tr("Letter"));
  auto* find = new QShortcut(QKeySequence::Find, this);
  connect(find, &QShortcut::activated, letter, &LetterView::BeginFind);
}

SourceWindow::SourceWindow(const QString& title, const std::string& text, QWidget* parent)
    : QDialog(parent) {
  setObjectName("SourceWindow");
  setWindowTitle(title);
  auto* view = new QPlainTextEdit(this);
  view->setObjectName("Source");
  view->setAccessibleName(title);
  view->setReadOnly(true);
  view->setUndoRedoEnabled(false);
  view->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  view->setLineWrapMode(QPlainTextEdit::NoWrap);
  view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  view->setPlainText(repository::ReadableText(text));
  SetUp(this, view, 110, 36);
}

}  // namespace tarnwick::reading
