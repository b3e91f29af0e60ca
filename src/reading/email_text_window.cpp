// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/email_text_window.h"

#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <cassert>

#include "repository/grid_layout.h"
#include "repository/parameter_store.h"
#include "repository/plain_text_view.h"
#include "repository/repository.h"

namespace tarnwick::reading {

namespace {

constexpr const char* kForm = "frmEmailText";
constexpr int kTwips = repository::kTwipsPerPixel;
constexpr int kTitleBar = 32;  // about what a desktop adds above a window
// The subject as it is. A folded one is in one line again, and "[*]", by which a window marks what
// is not saved yet, is written as the toolkit wants it for itself.
QString Caption(const std::string& subject) {
  QString caption = QString::fromStdString(subject);
  caption.remove(u'\r').replace("\n\t", " ").replace("\n ", " ");
  for (QChar& c : caption) {
    if (c.category() == QChar::Other_Control) c = u' ';
  }
  return caption.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}

}  // namespace

frmEmailText::frmEmailText(QWidget* parent)
    : QDialog(parent),
      text_(new QPlainTextEdit(this)),
      attachments_(new takeout::AttachmentsView(this)) {
  assert(repository::RepositoryDb().IsOpen());
  setObjectName(kForm);
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  setAttribute(Qt::WA_ShowWithoutActivating);
  text_->setObjectName("EmailText");
  text_->setAccessibleName(tr("Message text"));
  text_->setReadOnly(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text_->setUndoRedoEnabled(false);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(text_, 1);
  column->addWidget(attachments_);
  RestorePlace();
}

void frmEmailText::ShowText(const EmailText& email) {
  setWindowTitle(Caption(email.subject));
  text_->setPlainText(
      repository::ReadableText(email.text, tr("Show Email shows the whole message.")));
  attachments_->Show(email.id == 0 ? nullptr : takeout::OpenAttachments(email.id));
  show();
}

void frmEmailText::Clear() {
  setWindowTitle({});
  text_->clear();
  attachments_->Show(nullptr);
}

void frmEmailText::RestorePlace() {
  QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  resize(QSize(fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 28)
             .boundedTo(screen.size() * 8 / 10));
  auto place = repository::RestoreFormPosition(kForm, true, screen.bottom() * kTwips,
                                               screen.right() * kTwips);
  if (!place) {
    // Beside the list where there is room, else over as little of it as can be.
    if (const QWidget* list = parentWidget()) {
      QRect around = list->window()->frameGeometry();
      int left = std::min(around.right() + 1, screen.right() - width());
      int top = std::min(around.bottom(), screen.bottom()) - height() - kTitleBar;
      move(std::max(left, screen.left()), std::max(top, screen.top()));
    }
    return;
  }
  resize(QSize(place->width / kTwips, place->height / kTwips)
             .boundedTo(screen.size())
             .expandedTo(minimumSizeHint()));
  move(place->left / kTwips, place->top / kTwips);
}

void frmEmailText::hideEvent(QHideEvent* event) {
  QDialog::hideEvent(event);
  if (event->spontaneous() || isMaximized()) return;
  repository::SaveFormPosition(kForm,
                               {y() * kTwips, x() * kTwips, height() * kTwips, width() * kTwips});
}

}  // namespace tarnwick::reading
