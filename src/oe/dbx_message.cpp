// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a load does with a message of a store file that was read (store_walk.h): it is looked up in
// the repository, and a new one goes to TempMessageFile.
#include <optional>
#include <utility>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/late_state.h"
#include "intake/sender_rules.h"
#include "intake/stored_file.h"
#include "oe/dbx_read.h"
#include "oe/state.h"
#include "oe/store_walk.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/locale.h"

namespace tarnwick::oe {

namespace {

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

// The scratch file of a walk.
class Scratch {
 public:
  explicit Scratch(WalkFiles& files) : files_(files) {}

  void Write(std::string_view text) {
    // Not emptied first: a file system that has to keep a replaced file's bytes safe (ext4) would
    // write each message to the disk before the next one.
    if (!files_.scratch) {
      files_.scratch.emplace(core::State().TempMessageFile,
                             platform::OutputFile::Replace::kInPlace);
    }
    files_.scratch->Write(text);
  }
  // The next text is written over it; one that is in the file alone has to end there.
  void Finish(bool isHeld) {
    if (isHeld) return files_.scratch->Complete();
    files_.scratch->Close();
    files_.scratch.reset();
  }

 private:
  WalkFiles& files_;
};

// A message being taken, and how far it has come.
struct Taking {
  StoreWalk& walk;
  MessageReading& read;
  ReadMessage& message;
  const std::string& fileName;
  WalkFiles& files;
  Step step = kOpening;

  // False, with what the account is to say of it. An error is thrown.
  bool GiveUp(const Fault& fault) {
    message.ending = {intake::Outcome::kUnreadable, fault.reason};
    if (fault.kind == Fault::Kind::kNoMessage && MayReport()) core::ReportUnknownFormat(fileName);
    if (fault.kind != Fault::Kind::kError) return false;
    step = static_cast<Step>(fault.step);
    throw Error(fault.number, fault.reason);
  }
};

// The text, into the scratch file.
bool CopyText(Taking& taking) {
  Scratch scratch(taking.files);
  uint64_t& budget = taking.files.chainBudget;
  std::unique_ptr<TextReading> ahead = taking.walk.Ahead();
  // What goes beyond the bounds is read once more, to be given up where they end.
  if (ahead && (ahead->fault || ahead->chainSize > budget)) ahead.reset();
  TextReading text;
  if (ahead) {
    text = std::move(*ahead);
  } else {
    taking.step = kBlocks;
    text = taking.walk.ReadText(taking.read, {State().LastChainEnd, budget},
                                [&](std::string_view piece) { scratch.Write(piece); });
  }
  budget -= std::min(budget, text.chainSize);
  if (text.chainEnd) State().LastChainEnd = *text.chainEnd;
  if (text.fault) {
    taking.files.scratch.reset();  // a part of the text may stand there
    return taking.GiveUp(text.fault);
  }
  taking.step = kScratch;
  if (text.held) scratch.Write(*text.held);
  scratch.Finish(text.held.has_value());
  const std::string& path = core::State().TempMessageFile;
  taking.message.raw =
      text.held ? intake::RawMessage(path, std::move(*text.held)) : intake::RawMessage(path);
  taking.message.prepared = std::move(text.prepared);
  taking.message.sender = std::move(text.sender);
  return true;
}

bool CopyMessage(Taking& taking) {
  ReadMessage& message = taking.message;
  message.info = std::move(taking.read.info);
  message.facts = taking.read.facts;
  if (taking.read.fault) return taking.GiveUp(taking.read.fault);
  message.entryKey = std::move(taking.read.entryKey);
  message.name = DatedSubject(message.info);
  core::LogProgress("*****Email = " + message.name);
  taking.step = kDuplicate;
  if (intake::IsEmailExist(message.entryKey)) return GiveUpKnown(message.entryKey, message);
  FormerKey former = FindFormerKey(message.info);
  if (former.isThisLetter) return GiveUpKnown(former.key, message);
  if (former.key.empty()) core::State().NewMessageFlag = true;
  if (!CopyText(taking)) return false;
  if (!former.key.empty() && intake::IsStoredFile(former.key, *message.raw)) {
    return GiveUpKnown(former.key, message);
  }
  core::State().NewMessageFlag = true;
  return true;
}

}  // namespace

std::string DatedSubject(const MessageInfo& info) {
  return platform::FormatDate(info.date, "General Date") + " " + core::LoggedMailText(info.subject);
}

bool dbxMessageToFile(uint32_t infoOffset, const std::string& fileName, ReadMessage& message,
                      const intake::ReadingRules& rules) {
  StoreReading reading(fileName, rules, {});
  MessageReading read = reading.ReadAt(infoOffset);
  WalkFiles files;
  return TakeMessage(reading, read, fileName, message, files);
}

bool TakeMessage(StoreWalk& walk, MessageReading& read, const std::string& fileName,
                 ReadMessage& message, WalkFiles& files) {
  message = {};
  uint32_t infoOffset = read.infoOffset;
  Taking taking{walk, read, message, fileName, files};
  try {
    return CopyMessage(taking);
  } catch (...) {
    files.scratch.reset();
    message.ending = {intake::Outcome::kUnreadable, core::CurrentError().Description()};
    if (!MayReport()) return false;
    core::ReportCurrentException(
        "dbxMessageToFile", core::Report::kShow,
        " idStep = " + std::to_string(taking.step) + " " + std::to_string(infoOffset));
    message.ending.reason = core::State().LastReportedError;
    return false;
  }
}

}  // namespace tarnwick::oe
