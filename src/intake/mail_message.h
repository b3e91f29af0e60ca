// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One message being taken in. Lists have fixed capacities with explicit counts; what does not fit
// is dropped by the Append routines, which say so where it matters.
//
// All texts are UTF-8 by the time the record reaches dbSaveMesage. While a message is being parsed,
// header texts may still hold undecoded bytes; the parser keeps them apart (mixed_text.h).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/date_time.h"

namespace tarnwick::intake {

inline constexpr int kMaxRecipients =
    100;  // by design; complete reading (reading_rules.h) has more
inline constexpr int kMaxBoundaries = 10;
inline constexpr int kMaxAttachments = 20;

inline constexpr const char* kNoName = "no name";
inline constexpr const char* kNoAddress = "no address";

struct AddressPair {
  std::string Name;
  std::string Address;
  friend bool operator==(const AddressPair&, const AddressPair&) = default;
};

// Entries come into being as they are named: most messages have one or two of them.
class AddressList : public std::vector<AddressPair> {
 public:
  AddressPair& operator[](size_t place) {
    if (place >= size()) resize(place + 1);
    return vector::operator[](place);
  }
  const AddressPair& operator[](size_t place) const { return at(place); }
};

struct MailMessage {
  std::string Subject;
  int16_t SubjectConverted = 0;
  DateTime SentTime;
  DateTime ReceivedTime;
  std::string TimeText;
  std::string TimeShift;
  std::string MessageKey;
  int16_t ToCount = 0;
  AddressList To;
  int16_t ToConverted = 0;
  std::string FromAddress;
  std::string FromName;
  int16_t FromConverted = 0;
  std::string FromToAddress;
  std::string FromToName;
  int16_t CcCount = 0;
  AddressList Cc;
  int16_t CcConverted = 0;
  std::string Importance;
  std::string State;  // as StoredState (message_state.h) writes it
  int16_t IsMultipart = 0;
  std::string Charset;
  std::string Body;
  std::string HTMLBody;
  std::string Direction;  // "In" or "Out"
  std::string Folder;
  std::string Parent;
  std::string Application;
  std::string Identity;  // of Outlook Express, or the profile of Outlook
  std::string Encoding;
  std::array<std::string, kMaxBoundaries> Boundaries;
  int16_t BoundaryCount = 0;
  std::array<std::string, kMaxAttachments> Attachments;
  int16_t AttachCount = 0;
  std::string HTMLCharset;

  // Set when a message comes from another repository.
  std::string Notes;          // the user's note
  std::string Project;        // its project's name; when empty the folder is the project
  bool IsUnfinished = false;  // an error left only a part of it there, and so it is here
};

// Fills FromToAddress and FromToName by the direction: whom the person corresponds with, the sender
// or the first addressee.
void SetCorrespondent(MailMessage& message);

// A plain body that is HTML all the same.
bool IsMarkup(const std::string& body);

// Makes the text of a letter that has none but HTML: its plain part is missing, nothing but blanks
// or markup itself. Body and HTMLBody stay as they are where a browser would show no text either.
void SettleBody(MailMessage& message);

}  // namespace tarnwick::intake
