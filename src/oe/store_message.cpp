// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The bytes of a message: its info object and its chain of blocks. Sections "Message info" and
// "Message text".
#include <algorithm>
#include <bit>
#include <optional>
#include <utility>

#include "core/guard.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/store_walk.h"
#include "oe/text_keeper.h"
#include "platform/clock.h"
#include "platform/error.h"

namespace tarnwick::oe {

namespace {

constexpr size_t kFirstBlockPlace = 25;  // the value of the fourth index entry
constexpr size_t kTimeSize = 8;
// A first block below this can't be one: the texts of the file's own head stand there.
constexpr uint64_t kFirstPlausibleBlock = 16000;
// A fourth entry below this is a place in the data area.
constexpr uint64_t kFirstOffset = 255;

constexpr size_t kBlockHead = 16;

// False where less is left.
bool TakeOff(uint64_t& left, uint64_t size) {
  if (size > left) return false;
  left -= size;
  return true;
}

// The index being read, and how far it has come.
struct Reading {
  MessageReading& message;
  const intake::ReadingRules& rules;
  uint64_t* infoBudget = nullptr;  // of the walk
  Step step = kOpening;

  // True where an object of the walk may be looked at: those that do not overlap are no longer
  // together than their file.
  bool MayLook(uint64_t size) const { return infoBudget == nullptr || TakeOff(*infoBudget, size); }

  // False, with the reason for the account.
  bool GiveUp(const std::string& reason) const {
    message.fault = {Fault::Kind::kReason, reason};
    return false;
  }
};

// The error being handled.
Fault CurrentFault(Step step) {
  Error error = core::CurrentError();
  return {Fault::Kind::kError, error.Description(), error.Number(), step};
}

struct Info {
  uint32_t bodyLength = 0;
  int entryCount = 0;
  uint32_t firstBlock = 0;
  uint32_t indexedBlock = 0;  // what the index says where the fourth entry is a place; 0 for none
  DateTime date;
  bool isFreed = false;

  // Bytes from the object's beginning to its data area.
  uint64_t DataPlace() const { return kInfoHead + 4 * static_cast<uint64_t>(entryCount); }
};

// The object's head.
std::optional<Info> ReadInfoHead(ByteReader& file, uint32_t offset) {
  std::string_view head = file.Read(offset, kMinInfoSize);
  if (head.size() < kMinInfoSize || Get32(head, 0) != offset) return std::nullopt;
  Info info;
  info.bodyLength = Get32(head, 4);
  info.entryCount = Get8(head, 10);
  info.firstBlock = Get24(head, kFirstBlockPlace);
  // Fewer bytes than the head and four entries, or more than the file has: no object.
  if (info.bodyLength < kMinInfoSize ||
      uint64_t{offset} + kInfoHead + info.bodyLength > file.Size()) {
    throw Error(ErrorNumber::kSubscript, "Subscript out of range");
  }
  return info;
}

// A timestamp of the index; 0 without one.
uint64_t IndexedTime(ByteReader& file, const InfoIndex& index, uint8_t number, uint32_t offset) {
  std::optional<uint64_t> place = PlaceOf(index, number, offset, kTimeSize);
  if (!place) return 0;
  std::string_view bytes = file.Read(*place, kTimeSize);
  return bytes.size() < kTimeSize ? 0 : Get64(bytes, 0);
}

// The local time of a timestamp; nullopt where it is none that mail can have.
std::optional<DateTime> LocalTime(uint64_t fileTime) {
  DateTime utc = FileTimeToDate(fileTime, true);
  if (!intake::IsSoundDate(utc)) return std::nullopt;
  return platform::LocalFromUnix(utc.Seconds());
}

// What the flags say of a message. Section "Flags".
intake::MessageState StateOfFlags(std::optional<uint32_t> flags) {
  intake::MessageState state;
  if (!flags) return state;
  auto has = [&](MessageFlag flag) { return (*flags & flag) != 0; };
  state.isKnown = true;
  state.isRead = has(kReadFlag);
  state.isAnswered = has(kAnsweredFlag);
  state.isForwarded = has(kForwardedFlag);
  state.isFlagged = has(kFlaggedFlag);
  state.isDraft = has(kDraftFlag);
  return state;
}

// What complete reading takes of the index: times, first block and, where a search finds none that
// is within the designed years, the date that is a part of the key. False when the object has been
// looked at too often.
bool ReadByIndex(ByteReader& file, uint32_t offset, bool hasDate, InfoIndex& index, Info& info,
                 Reading& reading) {
  if (!reading.MayLook(kInfoHead + uint64_t{info.bodyLength})) {
    return reading.GiveUp("its info object overlaps others");
  }
  uint64_t sent = IndexedTime(file, index, kSentTime, offset);
  uint64_t received = IndexedTime(file, index, kReceivedTime, offset);
  uint64_t arrived = IndexedTime(file, index, kArrivedTime, offset);
  intake::StoreFacts& facts = reading.message.facts;
  facts.sent = LocalTime(sent);
  facts.received = LocalTime(received);
  facts.arrived = LocalTime(arrived);
  if (!hasDate) {
    index.fileTime = sent != 0 ? sent : received != 0 ? received : arrived;
    info.date = FileTimeToDate(index.fileTime, true);
  }
  if (reading.rules.indexedText) {
    info.firstBlock = NumberOf(file, index, kFirstBlock, offset).value_or(0);
    info.indexedBlock = 0;
    if (info.firstBlock == 0) return reading.GiveUp("its text is not in the file");
  }
  return true;
}

// Takes date and first block by the timestamp at a place behind the object's head; gives where the
// texts go on in the file.
uint64_t ReadDate(ByteReader& file, uint32_t offset, size_t place, InfoIndex& index, Info& info,
                  Reading& reading) {
  uint64_t behind = uint64_t{offset} + kInfoHead + place;
  index.fileTime = Get64(file.Read(behind, kTimeSize), 0);
  info.date = FileTimeToDate(index.fileTime, false);
  behind += kTimeSize;

  reading.step = kTexts;
  if (uint64_t{info.firstBlock} + 1 < kFirstOffset) {
    std::string_view word = file.Read(behind, 4);
    if (word.size() < 4) throw Error(ErrorNumber::kSubscript, "Subscript out of range");
    uint64_t indexedPlace = uint64_t{offset} + info.DataPlace() + info.firstBlock;
    info.firstBlock = Get32(word, 0);
    behind += 4;
    std::string_view indexed = file.Read(indexedPlace, 4);
    if (indexed.size() == 4) info.indexedBlock = Get32(indexed, 0);
  }
  return behind;
}

// Reads what the object tells: date, texts, first block. False when it has no date, and for what
// complete reading finds missing.
bool ReadInfo(ByteReader& file, uint32_t offset, Info& info, Reading& reading) {
  reading.step = kDate;
  size_t place = FindInfoDate(file, offset, info.entryCount);
  bool hasDate = place != 0;
  if (!hasDate && !reading.rules.anyDate) {
    return reading.GiveUp("its date is missing, before 1990 or after 2009");
  }
  InfoIndex index = ReadIndex(file, offset, info.bodyLength, info.entryCount);
  if (info.isFreed && index.entries.size() > 1) {
    // A link of the list of freed objects stands in the place of the flags.
    index.entries[1] = {kDirectFlag | kFlags, 0};
  } else {
    reading.message.facts.state = StateOfFlags(NumberOf(file, index, kFlags, offset));
  }
  uint64_t dataStart = uint64_t{offset} + info.DataPlace();
  uint64_t behind = dataStart;
  if (hasDate) behind = ReadDate(file, offset, place, index, info, reading);
  if (reading.rules.anyDate && !ReadByIndex(file, offset, hasDate, index, info, reading)) {
    return false;
  }
  // The timestamp may be found in the index itself; then the texts are those of the data area.
  behind = std::max(behind, dataStart);
  index.firstByte = static_cast<size_t>(behind - dataStart);
  size_t count = std::min<size_t>(info.bodyLength - kMinInfoSize, ByteReader::kMaxPiece);
  reading.message.info = ParseMessageInfo(file.Read(behind, count), info.date, index);
  return true;
}

bool IsBlock(ByteReader& file, uint32_t offset) {
  std::string_view head = file.Read(offset, kBlockHead);
  return head.size() == kBlockHead && Get32(head, 0) == offset;
}

// Where the text begins. In one of three thousand info objects other words pass for the timestamp;
// the word behind them is no block then, and the index's own word is looked at.
uint32_t FirstBlock(ByteReader& file, const MessageReading& message, uint32_t lastChainEnd,
                    const intake::ReadingRules& rules) {
  uint32_t offset = message.firstBlock;
  if (rules.indexedText) return offset;
  if (uint64_t{offset} + 1 < kFirstPlausibleBlock) offset = lastChainEnd;
  bool isRescued =
      message.indexedBlock != 0 && !IsBlock(file, offset) && IsBlock(file, message.indexedBlock);
  return isRescued ? message.indexedBlock : offset;
}

// Tells a chain of blocks that comes back to itself, and one that is longer than its file can hold
// (alone, or together with the other messages of the walk).
class ChainGuard {
 public:
  explicit ChainGuard(uint64_t most) : left_(most) {}

  bool MayVisit(uint32_t offset, uint64_t size) {
    // Brent's cycle test: the offset of step 1, 2, 4, 8, ... is remembered.
    if (steps_ > 0 && offset == remembered_) return false;
    if (std::has_single_bit(++steps_)) remembered_ = offset;
    return TakeOff(left_, size);
  }

 private:
  uint64_t left_;
  uint64_t steps_ = 0;
  uint32_t remembered_ = 0;
};

// Reads the chain that begins at offset; gives why it can't, "" where it can.
const char* ReadChain(ByteReader& file, uint32_t offset, uint64_t most, TextKeeper& keeper,
                      TextReading& text) {
  ChainGuard guard(std::min(most, file.Size()));
  for (;;) {
    std::string_view head = file.Read(offset, kBlockHead);
    if (head.size() < kBlockHead || Get32(head, 0) != offset) {
      return "a block of its text is damaged";
    }
    uint32_t bodySize = Get32(head, 4);
    uint64_t length = Get32(head, 8);
    uint32_t next = Get32(head, 12);
    text.chainEnd = next != 0 ? next : offset + bodySize + uint32_t{kBlockHead};
    uint64_t place = uint64_t{offset} + kBlockHead;
    if (place + length > file.Size()) return "a block of its text passes the file's end";
    if (!guard.MayVisit(offset, kBlockHead + length)) {
      return "the blocks of its text return to themselves";
    }
    text.chainSize += kBlockHead + length;
    for (uint64_t behind = place + length; place < behind;) {
      size_t piece = static_cast<size_t>(std::min<uint64_t>(behind - place, ByteReader::kMaxPiece));
      std::string_view bytes = file.Read(place, piece);
      if (bytes.empty()) return "the file became shorter";
      keeper.Add(bytes);
      place += bytes.size();
    }
    if (next == 0) return "";
    offset = next;
  }
}

// What the object tells; false where it can't be read.
bool ReadWholeInfo(ByteReader& file, uint32_t offset, Reading& reading) {
  MessageReading& message = reading.message;
  if (file.Size() == 0) return reading.GiveUp("the file is empty");
  reading.step = kInfo;
  std::optional<Info> info = ReadInfoHead(file, offset);
  if (!info) {
    message.fault = {Fault::Kind::kNoMessage, "its info object is damaged"};
    return false;
  }
  if (!ReadInfo(file, offset, *info, reading)) return false;
  message.firstBlock = info->firstBlock;
  message.indexedBlock = info->indexedBlock;
  message.entryKey = MakeEntryKey(message.info.keyText, message.info.date);
  return true;
}

}  // namespace

std::optional<PeekedMessage> PeekMessage(ByteReader& file, uint32_t infoOffset, int entryCount) {
  try {
    std::string_view head = file.Read(infoOffset, kMinInfoSize);
    if (head.size() < kMinInfoSize || Get32(head, 0) != infoOffset) return std::nullopt;
    std::optional<Info> info = ReadInfoHead(file, infoOffset);
    MessageReading message;
    Reading reading{message, intake::kComplete};
    if (info && entryCount != 0) {
      info->entryCount = entryCount;
      info->isFreed = true;
    }
    if (!info || !ReadInfo(file, infoOffset, *info, reading)) return std::nullopt;
    return PeekedMessage{std::move(message.info), message.facts, info->firstBlock};
  } catch (const Error&) {
    return std::nullopt;
  }
}

ByteReader& StoreReading::File() {
  if (!file_) file_.emplace(fileName_);
  return *file_;
}

MessageReading StoreReading::ReadAt(uint32_t infoOffset) {
  MessageReading message;
  message.infoOffset = infoOffset;
  Reading reading{message, rules_, infoBudget_ ? &*infoBudget_ : nullptr};
  try {
    ReadWholeInfo(File(), infoOffset, reading);
  } catch (...) {
    message.fault = CurrentFault(reading.step);
    file_.reset();
  }
  return message;
}

TextReading StoreReading::ReadText(const MessageReading& message, const TextTurn& turn,
                                   const ByteSink& longText) {
  TextReading text;
  TextKeeper keeper(text, longText);
  try {
    uint32_t first = FirstBlock(File(), message, turn.lastChainEnd, rules_);
    std::string fault = ReadChain(File(), first, turn.mostBytes, keeper, text);
    if (!fault.empty()) text.fault = {Fault::Kind::kReason, fault};
  } catch (const TextTooLong&) {
    throw;
  } catch (...) {
    text.fault = CurrentFault(kBlocks);
    file_.reset();
  }
  return text;
}

}  // namespace tarnwick::oe
