// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Takes in one raw Internet message: has it read into a MailMessage (prepared_message.h), settles
// direction, correspondent and key, and hands the record to the storing step.
#pragma once

#include <string>
#include <string_view>

#include "intake/mail_message.h"
#include "intake/outcome.h"
#include "intake/prepared_message.h"
#include "intake/raw_message.h"
#include "intake/reading_rules.h"

namespace tarnwick::intake {

class TextReader;

// Where a message came from; copied into Folder, Parent and Application.
struct SourceDescriptor {
  std::string folder;
  std::string parent;
  std::string application;
};

// What the caller knows of a message beside its bytes.
struct KnownOfMessage {
  const std::string& key;  // its unique key, or ""
  bool isKeyNew = false;   // it was asked for just now, and nothing is stored or ignored by it
  const ReadingRules& rules;
  const StoreFacts& facts;              // what its store says, for rules that ask
  PreparedMessage* prepared = nullptr;  // read ahead by these rules; it is used up
  TextReader* texts = nullptr;          // reads it otherwise
};

// True when the message was handed to the storing step; false when it was skipped as already
// stored, was no message, or failed. ending tells what became of it.
bool TakeInMessage(const RawMessage& raw, const SourceDescriptor& source,
                   const std::string& identity, const KnownOfMessage& known, Ending& ending);
// The same of a file, as a rule.
bool dbxParseMessage(const RawMessage& raw, const SourceDescriptor& source,
                     const std::string& identity, const std::string& entryKey,
                     Ending* ending = nullptr, const ReadingRules& rules = kDesigned,
                     const StoreFacts& facts = {});

// Fills in what the reading of a message leaves open: where it comes from, direction,
// correspondent and, unless key is one, its key. False when it has neither a correspondent nor a
// subject. isFromMe answers the own-address test.
bool SettleMessage(PreparedMessage& prepared, const SourceDescriptor& source,
                   bool (*isFromMe)(const std::string& address), std::string key);

// Everything up to the storing step, without looking at the repository: what a fuzzer drives.
// False and isFromMe as above. Throws Error for a file that can't be read.
bool ParseMessageFile(const RawMessage& raw, const SourceDescriptor& source,
                      bool (*isFromMe)(const std::string& address), MailMessage& message,
                      const ReadingRules& rules = kDesigned, const StoreFacts& facts = {});

// Header codes, see header_parser.cpp for the keys.
enum class HeaderCode {
  kOther = 0,
  kSubject = 1,
  kDate = 2,
  kMessageId = 3,
  kTo = 4,
  kFrom = 5,
  kImportance = 6,
  kContentType = 7,
  kCc = 8,
  kBcc = 9,
  kComment = 10,
  kReceived = 11,
};
// The code of a header line; unless it is kOther the line is replaced by the header's value.
HeaderCode ClassifyHeader(std::string& line);

// True for a line that begins with a header's name and a colon, known here or not. A line of
// addresses begins otherwise, even one whose display name holds a colon: names are in quotation
// marks then, or go on behind a blank.
bool BeginsHeader(std::string_view line);

// "Name <address>", a bare address or a name alone. Of several "@" the one in angle brackets
// counts, else the last: a display name may be an address itself. A text without "@" is a name;
// where bare addresses are kept, what stands between angle brackets is one, and so is a single
// word.
AddressPair SplitAddress(std::string_view text, bool keepsBareAddresses = false);

}  // namespace tarnwick::intake
