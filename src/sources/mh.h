// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// MH folders (MH, nmh, Sylpheed, Claws Mail): each letter a file whose name is a number, and beside
// them a file .mh_sequences that tells of some which sequences they are in. docs/mail-formats.md,
// section "MH".
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "intake/message_state.h"
#include "platform/folder_search.h"

namespace tarnwick::sources {

// Whether a file's name is that of a letter: a number without a 0 in front.
bool IsMhName(std::string_view name);

// A folder with numbered files beside .mh_sequences, or with nothing else that is not hidden; the
// first of them begins with headers.
bool IsMhFolder(const std::string& folder, const platform::FolderContent& content);

// Paths of the letters, by their numbers. folder: with its separator.
std::vector<std::string> MhFiles(const std::string& folder);

// "Claws Mail", "Sylpheed" or "MH", by what lies beside the letters.
std::string ProgramOfMh(const platform::FolderContent& content);

// What .mh_sequences tells: whoever is in "unseen" was not read, "replied" and "flagged" say so,
// too. A folder without any of these says nothing.
class MhSequences {
 public:
  // text: of the file; "" where there is none.
  explicit MhSequences(std::string_view text);
  intake::MessageState StateOf(std::string_view name) const;

 private:
  struct Range {
    uint64_t first = 0;
    uint64_t last = 0;
  };
  using Ranges = std::vector<Range>;
  static Ranges RangesOf(std::string_view text);
  bool Holds(const std::string& sequence, uint64_t number) const;

  std::map<std::string, Ranges, std::less<>> sequences_;  // those that tell a state
};
// The text of that file in a folder with its separator.
std::string SequencesIn(const std::string& folder);

}  // namespace tarnwick::sources
