// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/sample.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "sources/file_window.h"
#include "sources/letter_files.h"
#include "sources/letter_key.h"
#include "sources/mailbox_names.h"
#include "sources/mbox.h"
#include "sources/mh.h"

namespace tarnwick::sources {

namespace {

constexpr uint64_t kMostCounted = uint64_t{32} << 20;
constexpr size_t kPiece = size_t{64} * 1024;
constexpr size_t kMostFilesLookedInto = 8;

void AddYear(int year, MailboxSample& sample) {
  if (year == 0) return;
  sample.firstYear = sample.firstYear == 0 ? year : std::min(sample.firstYear, year);
  sample.lastYear = std::max(sample.lastYear, year);
}

// The years that separator lines or Date headers tell in some bytes.
void AddYears(std::string_view bytes, std::string_view mark, MailboxSample& sample) {
  for (size_t at = bytes.find(mark); at != std::string_view::npos; at = bytes.find(mark, at + 1)) {
    std::string_view line = bytes.substr(at + mark.size());
    line = line.substr(0, line.find('\n'));
    AddYear(YearOfDate(line), sample);
  }
}

// The years at both ends of a file of letters.
void LookAtEnds(const std::string& path, MailboxSample& sample) {
  constexpr std::string_view kDate = "\nDate: ";
  FileWindow file(path, kPiece);
  sample.bytes = file.Size();
  AddYears(file.Read(0, kPiece), kDate, sample);
  if (file.Size() > kPiece) AddYears(file.Read(file.Size() - kPiece, kPiece), kDate, sample);
}

void LookAtFiles(const std::vector<std::string>& paths, bool isMaildir, MailboxSample& sample) {
  sample.letters = static_cast<int64_t>(paths.size());
  for (const std::string& path : paths) {
    sample.bytes += platform::FileSize(path);
    if (isMaildir) AddYear(YearOfMaildirName(platform::FileNameOf(path)), sample);
  }
  if (isMaildir) return;
  size_t step = std::max<size_t>(1, paths.size() / kMostFilesLookedInto);
  for (size_t i = 0; i < paths.size(); i += step) {
    FileWindow file(paths[i], kPiece);
    std::string head = "\n";
    head += file.Read(0, kPiece);
    AddYears(head.substr(0, std::min(head.find("\n\n"), head.find("\n\r\n"))), "\nDate: ", sample);
  }
}

std::string KeyOfFirst(const Mailbox& mailbox) {
  constexpr int kMostTried = 20;
  std::unique_ptr<LetterReader> reader = OpenMailbox(mailbox);
  LetterEntry letter;
  for (int i = 0; i < kMostTried && reader->Next(letter); ++i, letter = {}) {
    if (letter.state.isDeleted || !letter.fault.empty()) continue;
    LetterKey key;
    if (!letter.recordFile.empty()) {
      FileWindow file(letter.recordFile);
      file.Copy(0, file.Size(), [&](std::string_view piece) { key.Add(piece); });
    } else {
      reader->Copy([&](std::string_view piece) { key.Add(piece); });
    }
    return key.Finish();
  }
  return {};
}

}  // namespace

MailboxSample SampleMailbox(const Mailbox& mailbox) {
  MailboxSample sample;
  try {
    if (mailbox.kind == MailboxKind::kMaildir) {
      LookAtFiles(MaildirFiles(mailbox.path), true, sample);
    } else if (mailbox.kind == MailboxKind::kMh) {
      LookAtFiles(MhFiles(mailbox.path), false, sample);
    } else if (mailbox.kind == MailboxKind::kLetterFiles) {
      LookAtFiles(LetterPathsIn(mailbox.path), false, sample);
    } else {
      LetterCount count = CountLetters(mailbox, kMostCounted);
      sample.letters = count.letters;
      sample.isEstimate = count.isEstimate;
      LookAtEnds(mailbox.path, sample);
    }
    sample.key = KeyOfFirst(mailbox);
  } catch (const Error&) {
    sample.isDamaged = true;
  }
  return sample;
}

}  // namespace tarnwick::sources
