// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/letter_text_view.h"

#include <QDesktopServices>
#include <QTextBlock>
#include <algorithm>

#include "core/messages.h"
#include "reading/clean_html.h"
#include "repository/plain_text_view.h"
#include "takeout/attachments_view.h"

namespace tarnwick::reading {

namespace {

constexpr int kWidestPicture = 1600;
constexpr int kMostMarks = 1000;
// A text of many megabytes would take seconds to lay out.
constexpr size_t kMostPlain = 300000;

}  // namespace

LetterPictures::LetterPictures(std::shared_ptr<const takeout::MessageAttachments> files)
    : files_(std::move(files)) {}

QImage LetterPictures::Find(const QString& contentId) {
  auto known = decoded_.find(contentId);
  if (known != decoded_.end()) return known->second;
  QImage picture;
  const std::string sought = contentId.toStdString();
  for (size_t i = 0; files_ != nullptr && i < files_->List().size(); ++i) {
    if (files_->List()[i].contentId != sought) continue;
    picture = takeout::DecodePicture(files_->Bytes(i), kWidestPicture);
    break;
  }
  return decoded_.emplace(contentId, picture).first->second;
}

LetterTextView::LetterTextView(QWidget* parent) : QTextBrowser(parent) {
  setOpenLinks(false);
  setUndoRedoEnabled(false);
  setPlaceholderText(tr("Select a message to read it here."));
  setTextInteractionFlags(Qt::TextBrowserInteraction);
  connect(this, &QTextBrowser::anchorClicked, this, &LetterTextView::AskAndOpen);
  connect(this, &QTextBrowser::highlighted, this, [this](const QUrl& link) {
    setToolTip(repository::TipText(link.toString(QUrl::FullyEncoded)));
  });
}

void LetterTextView::ShowPlain(const std::string& text) {
  marks_.clear();
  current_ = -1;
  pictures_ = LetterPictures();
  setPlainText(
      repository::ReadableText(text.substr(0, kMostPlain)) +
      (text.size() > kMostPlain ? tr("\n[...]\nThe source shows the whole message.") : QString()));
}

void LetterTextView::ShowFormatted(const std::string& html,
                                   std::shared_ptr<const takeout::MessageAttachments> files) {
  marks_.clear();
  current_ = -1;
  pictures_ = LetterPictures(std::move(files));
  setHtml(QString::fromStdString(html));
}

// The letter's own pictures, and nothing else from anywhere.
QVariant LetterTextView::loadResource(int type, const QUrl& name) {
  if (type != QTextDocument::ImageResource || name.scheme() != "cid") return {};
  QImage picture = pictures_.Find(name.path(QUrl::FullyDecoded));
  return picture.isNull() ? QVariant() : QVariant(picture);
}

int LetterTextView::Mark(const QStringList& words) {
  marks_.clear();
  current_ = -1;
  for (const QString& word : words) {
    if (word.trimmed().isEmpty()) continue;
    QTextCursor found(document());
    while (marks_.size() < kMostMarks) {
      found = document()->find(word.trimmed(), found);
      if (found.isNull()) break;
      marks_.append(found);
    }
  }
  std::sort(marks_.begin(), marks_.end(), [](const QTextCursor& a, const QTextCursor& b) {
    return a.selectionStart() < b.selectionStart();
  });
  PaintMarks();
  return static_cast<int>(marks_.size());
}

bool LetterTextView::GoToMark(bool forward) {
  int count = static_cast<int>(marks_.size());
  if (count == 0) return false;
  current_ =
      current_ < 0 ? (forward ? 0 : count - 1) : (current_ + (forward ? 1 : count - 1)) % count;
  QTextCursor place = marks_[current_];
  place.setPosition(place.selectionStart());
  setTextCursor(place);
  ensureCursorVisible();
  PaintMarks();
  return true;
}

// Yellow under black reads on a light and a dark palette alike.
void LetterTextView::PaintMarks() {
  QList<ExtraSelection> selections;
  for (int i = 0; i < marks_.size(); ++i) {
    ExtraSelection selection;
    selection.cursor = marks_[i];
    selection.format.setBackground(i == current_ ? QColor(255, 150, 50) : QColor(255, 235, 100));
    selection.format.setForeground(Qt::black);
    selections.append(selection);
  }
  setExtraSelections(selections);
}

void LetterTextView::AskAndOpen(const QUrl& link) {
  const std::string target = link.toString(QUrl::FullyEncoded).toStdString();
  std::string place = PlaceOf(target);
  if (place.empty()) return;
  constexpr size_t kMostShown = 300;
  std::string shown = target.substr(0, kMostShown) + (target.size() > kMostShown ? "..." : "");
  if (core::AskBeforeLoss(
          "This link leads to " + place + ":\r\n" + shown + "\r\n\r\nDo you want to open it?",
          {})) {
    QDesktopServices::openUrl(link);
  }
}

}  // namespace tarnwick::reading
