// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A text of a letter: plain, or HTML that CleanHtml has made. It shows no picture but those of the
// letter itself, opens nothing by itself, and asks before a link is followed. Words can be marked
// and gone through.
#pragma once

#include <QImage>
#include <QStringList>
#include <QTextBrowser>
#include <map>
#include <memory>

#include "takeout/attachments.h"

namespace tarnwick::reading {

// The letter's pictures by the names that its HTML has for them; decoded when they are asked for,
// within bounds.
class LetterPictures {
 public:
  explicit LetterPictures(std::shared_ptr<const takeout::MessageAttachments> files = nullptr);
  // A null image for one that there is not, or that is none.
  QImage Find(const QString& contentId);

 private:
  std::shared_ptr<const takeout::MessageAttachments> files_;
  std::map<QString, QImage> decoded_;
};

class LetterTextView : public QTextBrowser {
  Q_OBJECT

 public:
  explicit LetterTextView(QWidget* parent = nullptr);

  void ShowPlain(const std::string& text);
  // html comes from CleanHtml.
  void ShowFormatted(const std::string& html,
                     std::shared_ptr<const takeout::MessageAttachments> files);

  // Marks every occurrence of the words, without regard to case, and gives their number; of very
  // many only the first are marked.
  int Mark(const QStringList& words);
  // Goes to the next or previous mark, round the end. False without any.
  bool GoToMark(bool forward);
  int CurrentMark() const { return current_; }  // from 0; -1 before the first was gone to

  QVariant loadResource(int type, const QUrl& name) override;

 private:
  void PaintMarks();
  void AskAndOpen(const QUrl& link);

  LetterPictures pictures_;
  QList<QTextCursor> marks_;
  int current_ = -1;
};

}  // namespace tarnwick::reading
