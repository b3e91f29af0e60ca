// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Letters that are files of their own: the two folders of a Maildir, numbered files (mh.h), a
// folder of *.eml files, Apple's *.emlx files, Outlook's *.msg files. docs/mail-formats.md,
// sections "Maildir", "MH" and "Message files".
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sources/file_window.h"
#include "sources/letter_reader.h"

namespace tarnwick::sources {

enum class LetterFileKind {
  kNone,
  kText,    // *.eml
  kApple,   // *.emlx: the letter's length on a line of its own, the letter, its state
  kRecord,  // *.msg, unless it is text all the same
};
// By its name.
LetterFileKind KindOfLetterFile(std::string_view name);

// The letters among a folder's files, in the order of their names.
std::vector<std::string> LetterFilesIn(const std::vector<std::string>& files);

// What a letter's file tells beside the letter.
struct LetterFrame {
  LetterSpan span;             // of the letter
  intake::MessageState state;  // of an Apple letter
  bool isRecord = false;
  std::string fault;  // why it can't be read; "" when it can
};
LetterFrame FrameOf(FileWindow& file, LetterFileKind kind);

class LetterFiles : public LetterReader {
 public:
  using StateOf = std::function<intake::MessageState(const std::string& path)>;
  // Paths of letter files. With stateOf, which tells the state of each, they are texts whatever
  // their names are.
  // isWhole: what an Apple file holds besides is taken as a part of the letter.
  explicit LetterFiles(std::vector<std::string> paths, StateOf stateOf = {}, bool isWhole = false)
      : paths_(std::move(paths)), stateOf_(std::move(stateOf)), isWhole_(isWhole) {}

  bool Next(LetterEntry& letter) override;
  void Copy(const Sink& sink) override;
  LetterSpan Span() const override { return {begin_, end_}; }
  void GoTo(LetterSpan span) override {
    begin_ = span.begin;
    end_ = span.end;
  }

 private:
  void Look(LetterEntry& letter);

  std::vector<std::string> paths_;
  StateOf stateOf_;
  bool isWhole_;
  size_t next_ = 0;
  std::unique_ptr<FileWindow> file_;  // the current one
  uint64_t begin_ = 0;
  uint64_t end_ = 0;
};

// The letters of a Maildir, the oldest first as far as their names tell.
std::vector<std::string> MaildirFiles(const std::string& folder);

// The state of one of them.
intake::MessageState StateInMaildir(const std::string& path);
// What the end of a Maildir file's name says: ":2," (or another mark in place of
// the colon) and letters.
intake::MessageState StateOfMaildirName(std::string_view name);

// The year in which a Maildir file came, by its name; 0 where that does not tell.
int YearOfMaildirName(std::string_view name);

}  // namespace tarnwick::sources
