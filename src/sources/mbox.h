// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Letters in one file, each behind a line "From sender date". docs/mail-formats.md, section "mbox".
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "sources/file_window.h"
#include "sources/letter_reader.h"

namespace tarnwick::sources {

// How lines of a text that begin with "From " are kept from looking like a separator.
enum class MboxKind {
  kQuoted,      // ">" before "From ", and one more before lines that have some already
  kOnceQuoted,  // ">" before "From " alone: Netscape and its heirs
  kPlain,       // not at all: Eudora
  kMeasured     // not at all, each letter tells its length
};

class MboxReader : public LetterReader {
 public:
  // Bytes in memory outlive it. Throws Error for a file that can't be read.
  explicit MboxReader(const intake::RawMessage& file);

  MboxKind Kind() const { return kind_; }
  bool Next(LetterEntry& letter) override;
  void Copy(const Sink& sink) override;
  LetterSpan Span() const override { return {textBegin_, textEnd_}; }
  void GoTo(LetterSpan span) override {
    textBegin_ = span.begin;
    textEnd_ = span.end;
  }
  // The current letter's place in the file, its separator line included.
  uint64_t Begin() const { return begin_; }
  uint64_t Size() const { return file_.Size(); }

 private:
  struct Line {  // a separator line
    uint64_t begin;
    uint64_t end;  // behind its line end
  };
  std::optional<Line> SeparatorAt(uint64_t place);
  std::optional<Line> FindSeparator(uint64_t from);
  bool FollowsEmptyLine(uint64_t place);
  std::optional<uint64_t> MeasuredEnd(std::string_view headers, uint64_t headersEnd);
  std::string Headers(uint64_t begin);
  void LeaveEmptyLine();
  bool IsQuoted(uint64_t place);
  void CopyUnquoted(const Sink& sink);

  FileWindow file_;
  FileWindow look_;  // for looks aside, so that the other keeps its place
  MboxKind kind_ = MboxKind::kQuoted;
  std::optional<Line> next_;
  uint64_t begin_ = 0;
  uint64_t textBegin_ = 0;
  uint64_t textEnd_ = 0;
  int64_t number_ = 0;
};

// True for the first bytes of a file that is one.
bool IsMbox(std::string_view head);

// How many letters a file holds; of one longer than limit, what its beginning lets expect.
struct MboxCount {
  int64_t letters = 0;
  bool isEstimate = false;
};
// goesOn is called now and then.
MboxCount CountMbox(const intake::RawMessage& file, uint64_t limit = UINT64_MAX,
                    const std::function<void()>& goesOn = {});

// The year of a date as a separator line or a header has it, in whatever order; 0 where there is no
// whole date.
int YearOfDate(std::string_view text);

}  // namespace tarnwick::sources
