// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/search_box_view.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

namespace tarnwick::search {

namespace {

constexpr int kPauseMilliseconds = 150;

}  // namespace

SearchBoxView::SearchBoxView(QWidget* parent) : QWidget(parent), box_(new QLineEdit(this)) {
  setObjectName("SearchView");
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  auto* label = new QLabel(tr("Search"), this);
  label->setBuddy(box_);
  box_->setObjectName("SearchBox");
  box_->setAccessibleName(tr("Search"));
  box_->setAccessibleDescription(
      tr("Finds messages by words of subject and text, by names and addresses, and by attached "
         "files"));
  box_->setPlaceholderText(tr("Words, names, addresses, files (Ctrl+K)"));
  box_->setToolTip(
      tr("<p>Words in any order, or \"words that stand together\".</p>"
         "<p>from:ann to:example.org subject:budget file:report in:inbox<br>"
         "before:2004 after:2003-05 has:file is:unread -word</p>"));
  box_->setClearButtonEnabled(true);
  box_->setMaxLength(2000);
  box_->installEventFilter(this);
  row->addWidget(label);
  row->addWidget(box_, 1);
  setFocusProxy(box_);
  pause_.setSingleShot(true);
  pause_.setInterval(kPauseMilliseconds);
  connect(&pause_, &QTimer::timeout, this, &SearchBoxView::Apply);
  connect(box_, &QLineEdit::textChanged, &pause_, qOverload<>(&QTimer::start));
}

QString SearchBoxView::Text() const {
  return box_->text();
}

void SearchBoxView::Search(const QString& text) {
  box_->setText(text);
  Apply();
}

void SearchBoxView::ShowText(const QString& text) {
  box_->setText(text);
  pause_.stop();
  applied_ = text;
}

void SearchBoxView::Enter() {
  box_->setFocus(Qt::ShortcutFocusReason);
  box_->selectAll();
}

void SearchBoxView::Apply() {
  pause_.stop();
  QString text = box_->text();
  // A blank behind a word, say, is no other search.
  if (text.trimmed() == applied_.trimmed()) return;
  applied_ = text;
  emit SearchAskedFor(text);
}

bool SearchBoxView::eventFilter(QObject* watched, QEvent* event) {
  bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
  if (!isKey) return QWidget::eventFilter(watched, event);
  int key = static_cast<QKeyEvent*>(event)->key();
  bool isEscape = key == Qt::Key_Escape && !box_->text().isEmpty();
  bool leaves = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Down;
  if (!isEscape && !leaves) return QWidget::eventFilter(watched, event);
  if (event->type() == QEvent::ShortcutOverride) {
    // The window's own Escape is to stop what runs.
    event->accept();
    return true;
  }
  if (isEscape) box_->clear();
  Apply();
  if (leaves) emit Left();
  return true;
}

}  // namespace tarnwick::search
