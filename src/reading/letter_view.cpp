// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/letter_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QResizeEvent>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/locale.h"

namespace tarnwick::reading {

namespace {

constexpr size_t kShownRecipients = 6;
// With more than these even the unfolded list ends: nobody reads on, and the source has them all.
constexpr size_t kMostRecipients = 2000;

QString Escaped(const std::string& text) {
  constexpr int kLongestLine = 1000;
  return QString::fromStdString(text).left(kLongestLine).simplified().toHtmlEscaped();
}

QString Row(const QString& title, const QString& html) {
  if (html.isEmpty()) return {};
  return "<tr><td align=\"right\"><b>" + title.toHtmlEscaped() + "&nbsp;</b></td><td>" + html +
         "</td></tr>";
}

QString People(const std::vector<intake::AddressPair>& people, bool isUnfolded) {
  size_t most = isUnfolded ? kMostRecipients : kShownRecipients;
  // A last one is shown rather than counted.
  size_t count = people.size() <= most + 1 ? people.size() : most;
  QString text;
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) text += ", ";
    text += Escaped(PersonText(people[i].Name, people[i].Address));
  }
  if (count == people.size()) return text;
  QString rest = LetterView::tr("and %L1 more").arg(people.size() - count);
  return text + ' ' + (isUnfolded ? rest : "<a href=\"all\">" + rest + "</a>");
}

QString Date(const std::optional<DateTime>& date) {
  return date ? Escaped(platform::FormatDate(*date, "ddddd hh:mm")) : QString();
}

QString Files(const Letter& letter) {
  if (letter.files == nullptr || letter.files->List().empty()) return {};
  return LetterView::tr("%L1, %2")
      .arg(letter.files->List().size())
      .arg(QString::fromStdString(takeout::SizeText(letter.files->TotalSize())));
}

QString Warning(const CleanedHtml& html) {
  QStringList parts;
  if (html.misleadingLinks > 0) {
    parts << LetterView::tr("Beware: %L1 link(s) lead elsewhere than they say.")
                 .arg(html.misleadingLinks);
  }
  if (html.remotePictures > 0) {
    parts << LetterView::tr("%L1 picture(s) of other places were not fetched.")
                 .arg(html.remotePictures);
  }
  if (html.isCut) parts << LetterView::tr("The rest is too much to show formatted.");
  return parts.join(' ');
}

}  // namespace

QString HeadOf(const Letter& letter, bool isUnfolded) {
  const takeout::StoredMessage& message = letter.message;
  QString subject = Escaped(message.subject);
  return "<table cellspacing=\"1\">" + Row(LetterView::tr("Subject:"), "<b>" + subject + "</b>") +
         Row(LetterView::tr("From:"), Escaped(PersonText(message.fromName, message.fromAddress))) +
         Row(LetterView::tr("To:"), People(message.to, isUnfolded)) +
         Row(LetterView::tr("Cc:"), People(message.cc, isUnfolded)) +
         Row(LetterView::tr("Date:"), Date(message.received)) +
         Row(LetterView::tr("Folder:"), Escaped(message.folder)) +
         Row(LetterView::tr("Attachments:"), Files(letter)) + "</table>";
}

LetterView::LetterView(QWidget* parent)
    : QWidget(parent),
      head_(new LetterTextView(this)),
      text_(new LetterTextView(this)),
      files_(new takeout::AttachmentsView(this)) {
  setObjectName("Letter");
  head_->setObjectName("LetterHead");
  head_->setAccessibleName(tr("Sender, recipients and subject"));
  head_->setFrameShape(QFrame::NoFrame);
  head_->setTabChangesFocus(true);
  head_->disconnect(SIGNAL(anchorClicked(QUrl)));
  connect(head_, &QTextBrowser::anchorClicked, this, [this] {
    unfolded_ = true;
    ShowHead();
  });
  text_->setObjectName("LetterText");
  text_->setAccessibleName(tr("Letter"));
  text_->setTabChangesFocus(true);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  column->addWidget(head_);
  bar_ = BuildBar();
  column->addWidget(bar_);
  column->addWidget(text_, 1);
  column->addWidget(files_);
  Show(0);
}

QWidget* LetterView::BuildBar() {
  auto* bar = new QWidget(this);
  auto* row = new QHBoxLayout(bar);
  row->setContentsMargins(0, 0, 0, 0);
  auto button = [&](const char* name, const QString& text, const QString& tip) {
    auto* made = new QToolButton(bar);
    made->setObjectName(name);
    made->setText(text);
    made->setToolTip(tip);
    return made;
  };
  formatted_ = button("Formatted", tr("Formatted"),
                      tr("Shows the letter with its headings, tables and own pictures"));
  formatted_->setCheckable(true);
  formatted_->setChecked(true);
  connect(formatted_, &QToolButton::toggled, this, &LetterView::ShowText);
  warning_ = new QLabel(bar);
  warning_->setObjectName("LetterWarning");
  warning_->setWordWrap(true);
  find_ = new QLineEdit(bar);
  find_->setObjectName("FindInLetter");
  find_->setAccessibleName(tr("Find in the letter"));
  find_->setPlaceholderText(tr("Find in the letter"));
  find_->setClearButtonEnabled(true);
  find_->setMaximumWidth(fontMetrics().averageCharWidth() * 30);
  found_ = new QLabel(bar);
  found_->setObjectName("FoundInLetter");
  auto* previous = button("PreviousMark", QStringLiteral("\u2191"), tr("The mark before this one"));
  auto* next = button("NextMark", QStringLiteral("\u2193"), tr("The next mark"));
  previous->setAccessibleName(tr("Previous mark"));
  next->setAccessibleName(tr("Next mark"));
  connect(previous, &QToolButton::clicked, this, [this] { Find(false); });
  connect(next, &QToolButton::clicked, this, [this] { Find(true); });
  connect(find_, &QLineEdit::textChanged, this, &LetterView::MarkWords);
  connect(find_, &QLineEdit::returnPressed, this, [this] { Find(true); });
  row->addWidget(formatted_);
  row->addWidget(warning_, 1);
  row->addWidget(found_);
  row->addWidget(find_);
  row->addWidget(previous);
  row->addWidget(next);
  return bar;
}

void LetterView::Show(int64_t id) {
  letter_ = id == 0 ? std::nullopt : ReadLetter(id);
  unfolded_ = false;
  head_->setVisible(letter_.has_value());
  bar_->setVisible(letter_.has_value());
  ShowHead();
  ShowText();
  files_->Show(letter_ ? letter_->files : nullptr);
}

void LetterView::ShowHead() {
  if (letter_) {
    head_->ShowFormatted(HeadOf(*letter_, unfolded_).toStdString(), nullptr);
  } else {
    head_->ShowPlain({});
  }
  head_->Mark(subjectWords_);
  FitHead();
}

void LetterView::ShowText() {
  bool hasHtml = letter_ && letter_->formatted;
  formatted_->setVisible(hasHtml);
  bool isFormatted = hasHtml && formatted_->isChecked();
  if (isFormatted) {
    text_->ShowFormatted(letter_->formatted->html, letter_->files);
  } else {
    text_->ShowPlain(letter_ ? letter_->text : std::string());
  }
  QString warning = isFormatted ? Warning(*letter_->formatted) : QString();
  warning_->setText(warning);
  MarkWords();
}

void LetterView::SetWords(const QStringList& inText, const QStringList& inSubject) {
  if (words_ == inText && subjectWords_ == inSubject) return;
  words_ = inText;
  subjectWords_ = inSubject;
  head_->Mark(subjectWords_);
  MarkWords();
}

void LetterView::BeginFind() {
  find_->setFocus(Qt::ShortcutFocusReason);
  find_->selectAll();
}

// What is typed here goes before what the list was searched for.
void LetterView::MarkWords() {
  QString typed = find_->text().trimmed();
  marked_ = text_->Mark(typed.isEmpty() ? words_ : QStringList{typed});
  if (marked_ > 0) text_->GoToMark(true);
  TellMarks();
}

void LetterView::Find(bool forward) {
  text_->GoToMark(forward);
  TellMarks();
}

void LetterView::TellMarks() {
  // What the list was searched for may stand in the subject, a name or a file.
  bool isTyped = !find_->text().trimmed().isEmpty();
  QString none = letter_ && isTyped ? tr("not found") : QString();
  found_->setText(!letter_ || marked_ == 0
                      ? none
                      : tr("%L1 of %L2").arg(text_->CurrentMark() + 1).arg(marked_));
}

// The head is as high as its lines, up to a third of the pane; more is scrolled to.
void LetterView::FitHead() {
  head_->document()->setTextWidth(head_->viewport()->width());
  int lines = static_cast<int>(head_->document()->size().height()) + 2;
  head_->setFixedHeight(
      std::clamp(lines, 0, std::max(height() * 2 / 5, fontMetrics().height() * 5)));
}

void LetterView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  FitHead();
}

}  // namespace tarnwick::reading
