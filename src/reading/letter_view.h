// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A letter to read: who wrote it to whom and when, its text, formatted or plain, and its files.
// Nothing of it runs, and nothing is fetched for it.
#pragma once

#include <QStringList>
#include <QWidget>
#include <optional>

#include "reading/letter.h"
#include "reading/letter_text_view.h"
#include "takeout/attachments_view.h"

class QLabel;
class QLineEdit;
class QToolButton;

namespace tarnwick::reading {

// The lines over a letter, as HTML. Of very many recipients the first few, with a link "all",
// unless isUnfolded.
QString HeadOf(const Letter& letter, bool isUnfolded);

class LetterView : public QWidget {
  Q_OBJECT

 public:
  explicit LetterView(QWidget* parent = nullptr);

  // 0, and a message that has gone: nothing.
  void Show(int64_t id);
  int64_t Id() const { return letter_ ? letter_->message.id : 0; }

  // What a search looked for is marked in the texts to come, and in this one.
  void SetWords(const QStringList& inText, const QStringList& inSubject);
  // Puts the keyboard into the box for words.
  void BeginFind();

  LetterTextView& Text() { return *text_; }
  LetterTextView& Head() { return *head_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  QWidget* BuildBar();
  void ShowHead();
  void ShowText();
  void FitHead();
  void MarkWords();
  void Find(bool forward);
  void TellMarks();

  std::optional<Letter> letter_;
  bool unfolded_ = false;
  QStringList words_;
  QStringList subjectWords_;
  int marked_ = 0;

  LetterTextView* head_;
  QWidget* bar_ = nullptr;
  QToolButton* formatted_ = nullptr;
  QLabel* warning_ = nullptr;
  QLineEdit* find_ = nullptr;
  QLabel* found_ = nullptr;
  LetterTextView* text_;
  takeout::AttachmentsView* files_;
};

}  // namespace tarnwick::reading
