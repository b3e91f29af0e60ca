// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Reads the mail stores of Outlook Express: message files (one a folder) and folder lists, both
// *.dbx. docs/dbx-format.md describes the format; comments in the sources name its sections.
//
// The designed reader is simple on purpose. It walks the first two levels of a message tree, finds
// a message's date by looking for a plausible timestamp (after 1 January 1990 and before 1 January
// 2010), and trusts an object that holds its own offset. The rules of complete reading
// (intake/reading_rules.h) widen each of these. Files are not read whole: each object is reached by
// its offset. Whatever a file claims, a walk takes time and disk in proportion to the file.
//
// Public routines report their own errors. Texts are UTF-8; offsets are those of the file.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "intake/outcome.h"
#include "intake/prepared_message.h"
#include "intake/raw_message.h"
#include "intake/reading_rules.h"
#include "oe/byte_reader.h"
#include "oe/info_index.h"
#include "platform/date_time.h"
#include "platform/files.h"

namespace tarnwick::oe {

// The folder that messages are read from, handed through to the parser.
struct FolderRecord {
  std::string label;  // stored as the message's folder
  std::string fullName;
  std::string userName;
};

// What is done with each message copied to TempMessageFile (import.h).
inline constexpr std::string_view kMsgToDb = "MsgToDB";
inline constexpr std::string_view kMsgToFiles = "MsgToFiles";
inline constexpr std::string_view kMeAddress = "MeAddress";

// Section "Header": sizes and places.
inline constexpr size_t kHeaderSize = 240;
inline constexpr size_t kItemCountPlace = 0xC4;
inline constexpr size_t kMinInfoSize = 28;

struct DbxHeader {
  uint8_t kind = 0;
  uint32_t folderRoot = 0;
  uint32_t itemCount = 0;
  uint32_t messageRoot = 0;
};

struct MessageInfo {
  DateTime date;
  std::string subject;
  std::string keyText;  // with the date it tells the message from every other
  // What former versions took for it, "" where that is the same.
  std::string formerKeyText;
  uint32_t length = 0;  // of the message in bytes, as far as the index knows; 0: it does not
  // What its text can be known by; "" where the index has none.
  std::string messageId;
  std::string senderAddress;
};

// Fills State().Header from the first 240 bytes; what a shorter file lacks is 0.
void ReadDbxHeader(const std::string& fileName);

// True exactly when the fifth byte is 0xC6. A file that can't be read gives false.
bool IsFolderTreeFile(const std::string& fileName);

// Performs the operation for every message of the file that can be reached and is not in the
// repository. A missing file is an empty folder.
void ReadMessageTree(const std::string& fileName, std::string_view operation,
                     const FolderRecord& folder,
                     const intake::ReadingRules& rules = intake::kDesigned);

// The same for the entries of one node, without descending.
void ReadTreeNode(const std::string& fileName, uint32_t nodeOffset, std::string_view operation,
                  const FolderRecord& folder);

// Date and subject, as the log and the account name a message.
std::string DatedSubject(const MessageInfo& info);

// What the first From line and the first Subject line of a text say, decoded: those of its header,
// not those of a letter that it quotes.
struct SenderLines {
  std::string subject;
  intake::AddressPair sender;  // "no address" where there is none
};
SenderLines ReadSender(const intake::RawMessage& raw);

// What was read of one message.
struct ReadMessage {
  MessageInfo info;
  std::string name;  // its DatedSubject, where it came so far as to be logged
  std::string entryKey;
  intake::Ending ending;  // of one that was not copied
  intake::StoreFacts facts;
  // Of one that was copied: its bytes, where they are in memory, and what was made of them ahead.
  std::optional<intake::RawMessage> raw;
  std::unique_ptr<intake::PreparedMessage> prepared;
  std::optional<SenderLines> sender;  // where it was asked for, of one that the reader read
};

class StoreWalk;
struct MessageReading;

// What a walk of messages keeps from one message to the next.
struct WalkFiles {
  std::optional<platform::OutputFile> scratch;  // opened when it is first needed
  uint64_t chainBudget = UINT64_MAX;            // bytes of blocks that it may still follow
};

// True when a message that the repository does not hold stands whole in TempMessageFile; where it
// is in memory, too, the file is cut to it only when files.scratch is let go of.
bool dbxMessageToFile(uint32_t infoOffset, const std::string& fileName, ReadMessage& message,
                      const intake::ReadingRules& rules = intake::kDesigned);
// The same of one that a walk has come to; read is used up.
bool TakeMessage(StoreWalk& walk, MessageReading& read, const std::string& fileName,
                 ReadMessage& message, WalkFiles& files);

// What the index of a message tells.
struct PeekedMessage {
  MessageInfo info;
  intake::StoreFacts facts;
  uint32_t firstBlock = 0;
};

// Looks at the index and does nothing else; nullopt where it can't be read or knows no text.
// entryCount: of an object that has lost the number of its entries.
std::optional<PeekedMessage> PeekMessage(ByteReader& file, uint32_t infoOffset, int entryCount = 0);

// Place of the timestamp behind the 12-byte head of an info object; 0 when there is none.
size_t FindInfoDate(ByteReader& file, uint32_t infoOffset, int entryCount);

// What the bytes behind the timestamp and the index tell.
MessageInfo ParseMessageInfo(std::string_view infoBytes, DateTime date, const InfoIndex& index);

// FNV-1a. Part of stored keys: do not change.
uint64_t Hash(std::string_view text, uint64_t hash = 0xCBF29CE484222325ULL);
// Sixteen digits.
std::string HexText(uint64_t number);

// A FILETIME (tenths of microseconds since 1601, UTC) as civil time, without a zone. Years before
// 1901 and from 2050 on give 1 January 1900. One that the system refuses gives that too when
// lenient, else throws Error 200.
DateTime FileTimeToDate(uint64_t fileTime, bool lenient);

// Key text, "_" and the date as "yyyymmddhhmmss". Stored with every message: do not change.
std::string MakeEntryKey(const std::string& keyText, DateTime date);

// Add the folders of the j-th folder list of State().FolderFiles (from 0) to State().Folders. What
// of the list is damaged is passed over; State().IsListDamaged tells.
void ReadFolderTree(int folderFileIndex, const intake::ReadingRules& rules = intake::kDesigned);

}  // namespace tarnwick::oe
