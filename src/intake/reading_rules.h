// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The two ways to read old mail. Designed reading takes what the program was designed to take;
// complete reading takes whatever a store holds. Both are one reader: these rules are all that they
// differ in, and they are handed down from the load command to the stores' reader and to the header
// and date parser. A message has the same key under both, so that a load of one kind knows what a
// load of the other has stored.
#pragma once

#include <cstdint>
#include <optional>

#include "intake/message_state.h"
#include "platform/date_time.h"

namespace tarnwick::intake {

struct ReadingRules {
  // --- Which stores and folders are read.

  // Every store that can be found is read: of an identity whose store root is missing, has no "\"
  // at its end or lies on a drive that is not there, the store is looked for in the likely places;
  // stores below the profile that the registry does not lead to, and files that no folder list
  // names, are read as well. Nothing that is missing or damaged ends the search, nothing is asked,
  // and the limits of identities, folder lists and folders are beyond what anybody has.
  bool everyStore = false;
  // Folders that are left out otherwise, with all that lies in them.
  bool drafts = false;
  bool deletedItems = false;
  bool outbox = false;

  // --- What is read of a store's file.

  // Message trees and folder lists are read whatever their depth, left to right, and a damaged node
  // costs what hangs on it alone. Otherwise two levels of a message tree are, and one of a list.
  bool everyTreeLevel = false;
  // Messages of any date are read, those whose date is missing too. Otherwise those from 1990 to
  // 2009.
  bool anyDate = false;
  // Where a message's text begins is what its index says, and one without such an entry has none.
  // Otherwise an implausible beginning is taken to be where the message before ended.
  bool indexedText = false;

  // When a store has been read, messages that nothing in it leads to any more are looked for as
  // well: deleted ones, what a broken file still holds, copies left by compacting. They are stored
  // in folders of their own.
  bool lostMail = false;

  // --- How a message's headers are read.

  // The time of sending is the first that is sound: of the Date header, the store's times of
  // sending and receiving, the Received headers, the store's time of arrival. Where none is, it is
  // 1 January 1990. Otherwise what a Date header lacks is taken from today.
  bool soundDates = false;
  // A folded subject keeps a blank where it was folded, and a subject its own quotation marks.
  bool wholeSubjects = false;
  // A comma between quotation marks does not end a recipient.
  bool quotedCommas = false;
  // An address without "@" is kept: what stands between angle brackets, or a word that stands
  // alone.
  bool bareAddresses = false;
  // So many recipients of each kind are taken.
  int16_t mostRecipients = 100;
};

inline constexpr ReadingRules kDesigned{};
inline constexpr ReadingRules kComplete{.everyStore = true,
                                        .everyTreeLevel = true,
                                        .anyDate = true,
                                        .indexedText = true,
                                        .soundDates = true,
                                        .wholeSubjects = true,
                                        .quotedCommas = true,
                                        .bareAddresses = true,
                                        .mostRecipients = INT16_MAX};

// The options beside repository::kCompleteReadingOption: the folders that are left out otherwise.
inline constexpr const char* kDraftsOption = "ReadDrafts";
inline constexpr const char* kDeletedItemsOption = "ReadDeletedItems";
inline constexpr const char* kOutboxOption = "ReadOutbox";

// Which reading the options say, and the rules of either with the folders that they say.
bool IsCompleteStored();
ReadingRules StoredRules(bool isComplete = IsCompleteStored());

// What a store says of a message beside its text. Times are local civil ones.
struct StoreFacts {
  std::optional<DateTime> sent;
  std::optional<DateTime> received;
  std::optional<DateTime> arrived;  // in the store
  MessageState state = {};
};

// False for a date that no mail can have: before 1971, and later than tomorrow.
bool IsSoundDate(DateTime date);

}  // namespace tarnwick::intake
