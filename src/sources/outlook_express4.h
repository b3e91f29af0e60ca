// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The folders of Outlook Express 4: letters in a *.mbx file, what is known of them in an *.idx file
// beside it. docs/mail-formats.md, section "Outlook Express 4".
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "sources/file_window.h"
#include "sources/letter_reader.h"

namespace tarnwick::sources {

// True for the first bytes of a file of letters.
bool IsOutlookExpress4(std::string_view head);
// How many letters it says that it holds, deleted ones included; at most what its size can hold.
int64_t CountOutlookExpress4(const intake::RawMessage& file);

// The bytes of the index beside a store of letters, of a long one so many; "" where there is none.
inline constexpr size_t kMostIndex = size_t{64} << 20;
std::string IndexBeside(const std::string& path, size_t most = kMostIndex);

// What an index says of letters; nothing where it is missing or damaged.
class OutlookExpress4States {
 public:
  explicit OutlookExpress4States(const std::string& index);
  // Of the letter whose text lies there.
  intake::MessageState StateAt(LetterSpan span) const;

 private:
  std::map<uint32_t, uint32_t> flags_;  // by a letter's place
};

class OutlookExpress4Reader : public LetterReader {
 public:
  // Bytes in memory outlive it. Throws Error for a file that can't be read.
  OutlookExpress4Reader(const intake::RawMessage& file, const std::string& index);

  bool Next(LetterEntry& letter) override;
  void Copy(const Sink& sink) override;
  LetterSpan Span() const override { return {begin_, end_}; }
  void GoTo(LetterSpan span) override {
    begin_ = span.begin;
    end_ = span.end;
  }
  std::string Damage() const override { return damage_; }

 private:
  bool FindMark();

  FileWindow file_;
  OutlookExpress4States states_;
  std::string damage_;
  uint64_t next_;
  uint64_t begin_ = 0;
  uint64_t end_ = 0;
};

}  // namespace tarnwick::sources
