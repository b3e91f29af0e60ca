// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Letters that are files of their own: the two folders of a Maildir, a folder of *.eml files,
// Apple's
// *.emlx files, Outlook's *.msg files. docs/mail-formats.md, sections "Maildir" and "Message
// files".
#pragma once

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

class LetterFiles : public LetterReader {
 public:
  // Paths of letter files; those of a Maildir are texts whatever their names are, and tell the
  // letter's state.
  explicit LetterFiles(std::vector<std::string> paths, bool isMaildir = false)
      : paths_(std::move(paths)), isMaildir_(isMaildir) {}

  bool Next(LetterEntry& letter) override;
  void Copy(const Sink& sink) override;

 private:
  void Look(LetterEntry& letter);

  std::vector<std::string> paths_;
  bool isMaildir_;
  size_t next_ = 0;
  std::unique_ptr<FileWindow> file_;  // the current one
  uint64_t begin_ = 0;
  uint64_t end_ = 0;
};

// The letters of a Maildir, the oldest first as far as their names tell.
std::vector<std::string> MaildirFiles(const std::string& folder);

// What the end of a Maildir file's name says: ":2," and letters.
intake::MessageState StateOfMaildirName(std::string_view name);

// The year in which a Maildir file came, by its name; 0 where that does not tell.
int YearOfMaildirName(std::string_view name);

}  // namespace tarnwick::sources
