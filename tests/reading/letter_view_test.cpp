// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/letter_view.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QBuffer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

#include "board/load_command.h"
#include "platform/shell.h"
#include "reading/print_view.h"
#include "repository/repository.h"
#include "support/program_fixture.h"
#include "support/window_checks.h"

namespace tarnwick::reading {
namespace {

class LetterPane : public testing::ProgramFixture {
 protected:
  // Stores a letter and shows it.
  void Show(const std::string& headers, const std::string& body) {
    ++stored_;
    std::string file =
        WriteTemp("letter" + std::to_string(stored_) + ".eml",
                  "From: Ann Lee <ann@example.org>\r\nSubject: Plan for May\r\n"
                  "Date: Mon, 5 Jan 2004 10:20:3" +
                      std::to_string(stored_) + " +0000\r\n" + headers + "\r\n" + body);
    ASSERT_EQ(board::TakeTextFiles({file}).stored, 1);
    view_.resize(700, 500);
    view_.show();
    view_.Show(Query("SELECT Max(ID) AS Last FROM Email").AsInt());
    QApplication::processEvents();
  }
  std::string Text() { return view_.Text().toPlainText().toStdString(); }
  std::string Head() { return view_.Head().toPlainText().toStdString(); }

  int stored_ = 0;
  LetterView view_;
};

TEST_F(LetterPane, ShowsWhoWroteToWhomAndFoldsVeryManyRecipients) {
  std::string to = "To: Bob <bob@example.org>";
  for (int i = 1; i < 5000; ++i) to += ",\r\n p" + std::to_string(i) + "@example.org";
  Show(to + "\r\nCc: Carol <carol@example.org>\r\n", "Words.\r\n");
  EXPECT_THAT(Head(), ::testing::HasSubstr("Ann Lee <ann@example.org>"));
  EXPECT_THAT(Head(), ::testing::HasSubstr("Carol"));
  EXPECT_THAT(Head(), ::testing::HasSubstr("more"));
  EXPECT_THAT(Head(), ::testing::Not(::testing::HasSubstr("p40@example.org")));
  EXPECT_LT(view_.Head().height(), view_.height() / 2);
  emit view_.Head().anchorClicked(QUrl("all"));
  EXPECT_THAT(Head(), ::testing::HasSubstr("p40@example.org"));
  EXPECT_EQ(Text(), "Words.\n");
  testing::CheckControls(view_);
  view_.Show(0);
  EXPECT_EQ(Text() + Head(), "");
}

TEST_F(LetterPane, AFormattedLetterShowsItsOwnPicturesAndAsksForNoOthers) {
  QImage picture(3, 2, QImage::Format_RGB32);
  picture.fill(Qt::red);
  QByteArray png;
  QBuffer buffer(&png);
  ASSERT_TRUE(picture.save(&buffer, "PNG"));
  Show("MIME-Version: 1.0\r\nContent-Type: multipart/related; boundary=B\r\n",
       "--B\r\nContent-Type: text/html\r\n\r\n<html><body>Look: <img src=\"cid:red@x\">"
       "<img src=\"http://127.0.0.1:9/track.gif\"><a href=\"http://evil.example\">www.bank.example"
       "</a></body></html>\r\n--B\r\nContent-Type: image/png; name=red.png\r\n"
       "Content-ID: <red@x>\r\nContent-Transfer-Encoding: base64\r\n\r\n" +
           png.toBase64().toStdString() + "\r\n--B--\r\n");
  auto own = view_.Text().loadResource(QTextDocument::ImageResource, QUrl("cid:red@x"));
  EXPECT_EQ(own.value<QImage>().size(), QSize(3, 2));
  for (const char* other : {"http://127.0.0.1:9/track.gif", "file:///etc/hostname", "cid:none",
                            "qrc:/icons", "/etc/hostname"}) {
    EXPECT_FALSE(view_.Text().loadResource(QTextDocument::ImageResource, QUrl(other)).isValid())
        << other;
    EXPECT_FALSE(view_.Text().loadResource(QTextDocument::HtmlResource, QUrl(other)).isValid());
  }
  QString warning = view_.findChild<QLabel*>("LetterWarning")->text();
  EXPECT_TRUE(warning.contains("1 link(s)")) << warning.toStdString();
  EXPECT_TRUE(warning.contains("1 picture(s)")) << warning.toStdString();
  EXPECT_THAT(Text(), ::testing::HasSubstr("[leads to evil.example]"));
  // A link is followed after a question only, which names the place.
  ui_.yesNo = {false};
  emit view_.Text().anchorClicked(QUrl("http://evil.example"));
  EXPECT_THAT(ui_.Shown("question").back(), ::testing::HasSubstr("leads to evil.example"));
  view_.findChild<QToolButton*>("Formatted")->setChecked(false);
  EXPECT_THAT(Text(), ::testing::HasSubstr("www.bank.example"));
}

TEST_F(LetterPane, WhatWasSearchedForIsMarkedAndGoneThrough) {
  Show("To: bob@example.org\r\n", "one may\r\ntwo MAY\r\nthree\r\n");
  auto* found = view_.findChild<QLabel*>("FoundInLetter");
  view_.SetWords({"may"}, {"plan"});
  EXPECT_EQ(found->text(), "1 of 2");
  EXPECT_EQ(view_.Head().extraSelections().size(), 1);
  view_.findChild<QToolButton*>("NextMark")->click();
  EXPECT_EQ(found->text(), "2 of 2");
  view_.findChild<QToolButton*>("NextMark")->click();
  EXPECT_EQ(found->text(), "1 of 2");
  view_.SetWords({"absent"}, {"plan"});
  EXPECT_EQ(found->text(), "") << "the list found it elsewhere";
  view_.findChild<QLineEdit*>("FindInLetter")->setText("absent");
  EXPECT_EQ(found->text(), "not found");
  EXPECT_TRUE(view_.Text().extraSelections().isEmpty());
}

TEST_F(LetterPane, AProgramIsNeverOpenedAndAPictureStaysInTheProgram) {
  std::vector<std::string> opened;
  platform::SetShellHook([&](const std::string& path) {
    opened.push_back(path);
    return platform::ShellResult::kOpened;
  });
  takeout::MessageAttachments files(
      "Content-Type: multipart/mixed; boundary=B\r\n\r\n--B\r\nContent-Type: image/png; "
      "name=\"photo.png.exe\"\r\n\r\nMZ\r\n--B\r\nContent-Type: text/plain; name=\"notes.txt\"\r\n"
      "Content-Disposition: attachment\r\n\r\nnotes\r\n--B--\r\n");
  ASSERT_EQ(files.List().size(), 2U);
  takeout::OpenAttachment(files, 0, nullptr);
  EXPECT_TRUE(opened.empty());
  EXPECT_THAT(ui_.Shown("box").back(), ::testing::HasSubstr("It is not opened."));
  takeout::OpenAttachment(files, 1, nullptr);
  ASSERT_EQ(opened.size(), 1U);
  EXPECT_THAT(opened[0], ::testing::EndsWith(".txt"));
  platform::SetShellHook({});
}

TEST_F(LetterPane, LettersBecomeAPdfAndTheirSourceIsShown) {
  Show("To: bob@example.org\r\n", "text\r\n");
  Show("To: bob@example.org\r\nContent-Type: text/html\r\n", "<html><body><b>x</b></body></html>");
  int64_t last = view_.Id();
  QString path = QString::fromStdString(folder_.File("letters.pdf"));
  ASSERT_TRUE(SaveAsPdf({last - 1, last}, path));
  QFile pdf(path);
  ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
  QByteArray bytes = pdf.readAll();
  EXPECT_TRUE(bytes.startsWith("%PDF"));
  EXPECT_TRUE(bytes.contains("/Count 2")) << "a page each";
  EXPECT_THAT(HeadersOf(last), ::testing::EndsWith("Content-Type: text/html"));
  EXPECT_THAT(SourceOf(last), ::testing::HasSubstr("<b>x</b>"));
}

}  // namespace
}  // namespace tarnwick::reading
