// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a person types into the search box, read into terms. All of them narrow; their order means
// nothing.
//
//   query  = terms, parted by blanks
//   term   = ["-"] [field ":"] text      "-": the messages that the rest does not fit
//   text   = word | "words in quotation marks", which stand together as they are typed
//   field  = from | to | subject | file | in | before | after | has | is
//
// A word without a field is looked for in subject and text, in the names and addresses of sender
// and recipients, in those that the contact book has for them, and in the names of attached files.
// An address or a part of one, such as @example.org, is a word like any other. "to:" is about all
// recipients, "in:" about the folder of the mail program, "has:file" asks for attachments.
// "is:" asks for what the mail program knew: read, unread, replied, forwarded, flagged, draft;
// where it knew nothing, a message is neither read nor unread. "before:" and "after:" take a date
// as the locale writes it, yyyy-mm-dd, yyyy-mm or yyyy; "before:2004" ends with 31 December 2003,
// "after:2004" begins with 1 January 2005.
//
// A person types one letter after the other, so nothing is an error: a field with nothing behind it
// and a date or a state that is none yet narrow nothing, an unended quotation ends with the query,
// and what is no field ("http://x") is a word. Upper and lower case are one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/date_time.h"

namespace tarnwick::search {

// Further terms narrow nothing.
inline constexpr size_t kMostTerms = 24;

enum class Field : uint8_t { kAny, kFrom, kTo, kSubject, kFile, kFolder, kState };

struct Term {
  Field field = Field::kAny;
  std::string text;  // not empty; of kState a word of intake::kStateMarks
  bool excluded = false;
  friend bool operator==(const Term&, const Term&) = default;
};

struct Query {
  std::vector<Term> terms;
  std::optional<DateTime> from;  // whole days, both included
  std::optional<DateTime> to;
  std::optional<bool> hasFile;
  bool IsEmpty() const { return terms.empty() && !from && !to && !hasFile; }
  friend bool operator==(const Query&, const Query&) = default;
};

Query ParseQuery(std::string_view typed);

// A term as a person would type it, in quotation marks where it needs them.
std::string TermText(std::string_view field, std::string_view text);

}  // namespace tarnwick::search
