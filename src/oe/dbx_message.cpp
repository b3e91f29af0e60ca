// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One message of a store file: from its info object through its chain of blocks to TempMessageFile.
// Sections "Message info" and "Message text".
#include <algorithm>
#include <bit>
#include <optional>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/late_state.h"
#include "intake/sender_rules.h"
#include "intake/stored_file.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/state.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/locale.h"

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

// Steps named in the log when one fails.
enum Step { kOpening = 1, kInfo, kDate, kTexts, kDuplicate, kScratch, kBlocks };

// The message being read, and how far it has come.
struct Reading {
  ReadMessage& message;
  const intake::ReadingRules& rules;
  AheadMessage* ahead = nullptr;  // set: the walk has not come to it, and nothing may be told
  Step step = kOpening;

  // True where an object of the walk may be looked at: those that do not overlap are no longer
  // together than their file.
  bool MayLook(uint64_t size) const {
    if (ahead != nullptr) ahead->infoSize += size;
    return ahead != nullptr || !State().IsWalking || TakeOff(State().InfoBudget, size);
  }

  // False, with the reason for the account.
  bool GiveUp(const std::string& reason) const {
    message.ending = {intake::Outcome::kUnreadable, reason};
    return false;
  }
};

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

// False, for a message that is stored or ignored for good under this key.
bool GiveUpKnown(const std::string& key, ReadMessage& message) {
  message.ending = {intake::OutcomeOfKnown(key), {}};
  intake::FillState(key, message.facts.state);
  core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), message.info.subject);
  return false;
}

// A key of former versions stood for every letter of one Message-ID and second. What is stored
// under it is this letter when its text is.
struct FormerKey {
  std::string key;  // "" when nothing is stored under one
  bool isThisLetter = false;
};

FormerKey FindFormerKey(const MessageInfo& info) {
  if (info.formerKeyText.empty() || !State().MayKnowFormerKeys) return {};
  std::string key = MakeEntryKey(info.formerKeyText, info.date);
  if (!intake::IsEmailExist(key)) return {};
  // An ignored one left nothing to tell it by. Of two letters of one length the texts would have to
  // be compared at every load.
  bool isThisLetter = intake::IsMessageIgnored(key) || info.length == 0 ||
                      intake::StoredFileLength(key) == info.length;
  return {std::move(key), isThisLetter};
}

bool IsBlock(ByteReader& file, uint32_t offset) {
  std::string_view head = file.Read(offset, kBlockHead);
  return head.size() == kBlockHead && Get32(head, 0) == offset;
}

// Where the text begins. In one of three thousand info objects other words pass for the timestamp;
// the word behind them is no block then, and the index's own word is looked at.
uint32_t FirstBlock(ByteReader& file, const Info& info, const intake::ReadingRules& rules) {
  uint32_t offset = info.firstBlock;
  if (rules.indexedText) return offset;
  if (uint64_t{offset} + 1 < kFirstPlausibleBlock) offset = State().LastChainEnd;
  bool isRescued =
      info.indexedBlock != 0 && !IsBlock(file, offset) && IsBlock(file, info.indexedBlock);
  return isRescued ? info.indexedBlock : offset;
}

// Tells a chain of blocks that comes back to itself, and one that is longer than its file can hold
// (alone, or together with the other messages of the walk).
class ChainGuard {
 public:
  ChainGuard(uint64_t fileSize, AheadMessage* ahead) : left_(fileSize), ahead_(ahead) {}

  bool MayVisit(uint32_t offset, uint64_t size) {
    // Brent's cycle test: the offset of step 1, 2, 4, 8, ... is remembered.
    if (steps_ > 0 && offset == remembered_) return false;
    if (std::has_single_bit(++steps_)) remembered_ = offset;
    if (size > left_) return false;
    if (ahead_ != nullptr) {
      ahead_->chainSize += size;
    } else if (State().IsWalking && !TakeOff(State().ChainBudget, size)) {
      return false;
    }
    left_ -= size;
    return true;
  }

 private:
  uint64_t left_;
  AheadMessage* ahead_;
  uint64_t steps_ = 0;
  uint32_t remembered_ = 0;
};

// Where the text of a message goes: it is held while it is short, and a longer one goes on in the
// scratch file.
class TextKeeper {
 public:
  // files: nullptr for a text that is only held.
  explicit TextKeeper(WalkFiles* files) : files_(files) {}

  // False for a text that is too long to be held.
  bool Add(std::string_view text) {
    if (isHeld_ && held_.size() + text.size() <= intake::kMostHeld) {
      held_ += text;
      return true;
    }
    if (files_ == nullptr) return false;
    if (isHeld_) Scratch().Write(held_);
    isHeld_ = false;
    Scratch().Write(text);
    return true;
  }

  intake::RawMessage Finish() {
    const std::string& path = core::State().TempMessageFile;
    if (files_ != nullptr) {
      if (isHeld_) {
        Scratch().Write(held_);
        Scratch().Complete();
      } else {
        Scratch().Close();
        files_->scratch.reset();
      }
    }
    return isHeld_ ? intake::RawMessage(path, std::move(held_)) : intake::RawMessage(path);
  }

 private:
  platform::OutputFile& Scratch() {
    // Not emptied first: a file system that has to keep a replaced file's bytes safe (ext4) would
    // write each message to the disk before the next one.
    if (!files_->scratch) {
      files_->scratch.emplace(core::State().TempMessageFile,
                              platform::OutputFile::Replace::kInPlace);
    }
    return *files_->scratch;
  }

  WalkFiles* files_;
  std::string held_;
  bool isHeld_ = true;
};

// Reads the chain that begins at offset.
bool ReadChain(ByteReader& file, uint32_t offset, TextKeeper& text, Reading& reading) {
  reading.step = kBlocks;
  ChainGuard guard(file.Size(), reading.ahead);
  for (;;) {
    std::string_view head = file.Read(offset, kBlockHead);
    if (head.size() < kBlockHead || Get32(head, 0) != offset) {
      return reading.GiveUp("a block of its text is damaged");
    }
    uint32_t bodySize = Get32(head, 4);
    uint64_t length = Get32(head, 8);
    uint32_t next = Get32(head, 12);
    uint32_t& end = reading.ahead != nullptr ? reading.ahead->chainEnd : State().LastChainEnd;
    end = next != 0 ? next : offset + bodySize + uint32_t{kBlockHead};
    uint64_t place = uint64_t{offset} + kBlockHead;
    if (place + length > file.Size()) {
      return reading.GiveUp("a block of its text passes the file's end");
    }
    if (!guard.MayVisit(offset, kBlockHead + length)) {
      return reading.GiveUp("the blocks of its text return to themselves");
    }
    for (uint64_t behind = place + length; place < behind;) {
      size_t piece = static_cast<size_t>(std::min<uint64_t>(behind - place, ByteReader::kMaxPiece));
      std::string_view bytes = file.Read(place, piece);
      if (bytes.empty()) return reading.GiveUp("the file became shorter");
      if (!text.Add(bytes)) return false;
      place += bytes.size();
    }
    if (next == 0) return true;
    offset = next;
  }
}

// Takes over what was read ahead, where the walk's bounds allow it.
bool TakeAhead(AheadMessage& ahead, Reading& reading) {
  OeState& state = State();
  if (ahead.infoSize > state.InfoBudget || ahead.chainSize > state.ChainBudget) return false;
  state.InfoBudget -= ahead.infoSize;
  reading.message = std::move(ahead.message);
  return true;
}

// The object's index, by which the message is known; nullopt where it can't be read.
std::optional<Info> ReadWholeInfo(uint32_t offset, const std::string& fileName, WalkFiles& files,
                                  Reading& reading) {
  if (!files.store) files.store.emplace(fileName);
  ByteReader& file = *files.store;
  auto giveUp = [&](const char* reason) {
    reading.GiveUp(reason);
    return std::nullopt;
  };
  if (file.Size() == 0) return giveUp("the file is empty");
  reading.step = kInfo;
  std::optional<Info> info = ReadInfoHead(file, offset);
  if (!info) {
    if (MayReport()) core::ReportUnknownFormat(fileName);
    return giveUp("its info object is damaged");
  }
  if (!ReadInfo(file, offset, *info, reading)) return std::nullopt;
  reading.message.entryKey = MakeEntryKey(reading.message.info.keyText, reading.message.info.date);
  return info;
}

// The text, into the scratch file.
bool CopyText(const std::optional<Info>& info, const AheadMessage* ahead, WalkFiles& files,
              Reading& reading) {
  TextKeeper text(&files);
  if (ahead != nullptr) {
    reading.step = kScratch;
    State().ChainBudget -= ahead->chainSize;
    State().LastChainEnd = ahead->chainEnd;
    text.Add(*reading.message.raw->Held());
  } else if (!ReadChain(*files.store, FirstBlock(*files.store, *info, reading.rules), text,
                        reading)) {
    files.scratch.reset();  // a part of the text may stand there
    return false;
  }
  reading.step = kScratch;
  reading.message.raw = text.Finish();
  return true;
}

bool CopyMessage(uint32_t offset, const std::string& fileName, WalkFiles& files,
                 AheadMessage* ahead, Reading& reading) {
  ReadMessage& message = reading.message;
  std::optional<Info> info;
  if (ahead != nullptr && !TakeAhead(*ahead, reading)) ahead = nullptr;
  if (ahead == nullptr) {
    info = ReadWholeInfo(offset, fileName, files, reading);
    if (!info) return false;
  }
  message.name = DatedSubject(message.info);
  core::LogProgress("*****Email = " + message.name);
  reading.step = kDuplicate;
  if (intake::IsEmailExist(message.entryKey)) return GiveUpKnown(message.entryKey, message);
  FormerKey former = FindFormerKey(message.info);
  if (former.isThisLetter) return GiveUpKnown(former.key, message);
  if (former.key.empty()) core::State().NewMessageFlag = true;
  if (!CopyText(info, ahead, files, reading)) return false;
  if (!former.key.empty() && intake::IsStoredFile(former.key, *message.raw)) {
    return GiveUpKnown(former.key, message);
  }
  core::State().NewMessageFlag = true;
  return true;
}

}  // namespace

std::optional<PeekedMessage> PeekMessage(ByteReader& file, uint32_t infoOffset, int entryCount) {
  try {
    std::string_view head = file.Read(infoOffset, kMinInfoSize);
    if (head.size() < kMinInfoSize || Get32(head, 0) != infoOffset) return std::nullopt;
    std::optional<Info> info = ReadInfoHead(file, infoOffset);
    ReadMessage message;
    AheadMessage ahead;
    Reading reading{message, intake::kComplete, &ahead};
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

std::string DatedSubject(const MessageInfo& info) {
  return platform::FormatDate(info.date, "General Date") + " " + core::LoggedMailText(info.subject);
}

size_t AheadMessage::Cost() const {
  size_t cost = sizeof *this;
  if (message.raw) cost += message.raw->Held()->size();
  return message.prepared ? cost + message.prepared->Cost() : cost;
}

std::optional<AheadMessage> ReadAhead(ByteReader& file, uint32_t infoOffset,
                                      const intake::ReadingRules& rules) {
  if (!rules.anyDate || !rules.indexedText) return std::nullopt;
  try {
    AheadMessage ahead;
    ahead.infoOffset = infoOffset;
    ReadMessage& message = ahead.message;
    Reading reading{message, rules, &ahead};
    TextKeeper text(nullptr);
    std::optional<Info> info = ReadInfoHead(file, infoOffset);
    if (!info || !ReadInfo(file, infoOffset, *info, reading)) return std::nullopt;
    if (!ReadChain(file, FirstBlock(file, *info, rules), text, reading)) return std::nullopt;
    message.entryKey = MakeEntryKey(message.info.keyText, message.info.date);
    message.raw = text.Finish();
    message.prepared = intake::PrepareAhead(*message.raw, rules, message.facts);
    return ahead;
  } catch (const std::exception&) {
    return std::nullopt;  // told in its turn
  }
}

bool dbxMessageToFile(uint32_t infoOffset, const std::string& fileName, ReadMessage& message,
                      const intake::ReadingRules& rules) {
  WalkFiles files;
  return dbxMessageToFile(infoOffset, fileName, message, rules, files);
}

bool dbxMessageToFile(uint32_t infoOffset, const std::string& fileName, ReadMessage& message,
                      const intake::ReadingRules& rules, WalkFiles& files,
                      std::optional<AheadMessage> ahead) {
  message = {};
  Reading reading{message, rules};
  try {
    return CopyMessage(infoOffset, fileName, files, ahead ? &*ahead : nullptr, reading);
  } catch (...) {
    files.store.reset();
    files.scratch.reset();
    if (!MayReport()) return reading.GiveUp(core::CurrentError().Description());
    core::ReportCurrentException(
        "dbxMessageToFile", core::Report::kShow,
        " idStep = " + std::to_string(reading.step) + " " + std::to_string(infoOffset));
    return reading.GiveUp(core::State().LastReportedError);
  }
}

}  // namespace tarnwick::oe
