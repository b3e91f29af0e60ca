// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Stores the mail of a store that its folders do not lead to: what was deleted, what lies in places
// that Outlook does not show, and whatever is left of a store without an index. Each goes to the
// folder "Recovered from" and its former folder's name, or the file's where that is not known, with
// a note of how it was found and what of it is missing.
//
// What is stored already is not stored again: under its key; with the same text under another; and,
// of a part, a message of the same second, sender and subject.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "intake/reading_rules.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

// A set of many keys in a few bytes each. Others may seem to be in it, one in some billions.
class KeyMarks {
 public:
  void Add(const std::string& key);
  // REQUIRES: Sort was called behind the last Add.
  bool Has(const std::string& key) const;
  void Sort();

 private:
  std::vector<uint64_t> marks_;
};

// settled: items that the ordinary reading has come to. isOwners: asks whether a store that has a
// password may be read; none where that was asked already. True when there was any mail. Reports
// its own errors.
bool ReadLostItems(Namespace& outlook, const std::string& location, KeyMarks settled,
                   bool (*isOwners)(const std::string& location),
                   const intake::ReadingRules& rules);

}  // namespace tarnwick::outlook
