// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What is read of a message file, without asking the repository or the person: its messages in the
// order of its tree, and the text of each. The program reads so through the reader (store_link.h),
// or by itself where there is none; what either gives is the same.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/tellings.h"
#include "intake/prepared_message.h"
#include "intake/reading_rules.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/state.h"
#include "oe/tree_node.h"
#include "oe/tree_walk.h"

namespace tarnwick::oe {

// Why a message, or its text, can't be read.
struct Fault {
  enum class Kind : uint8_t {
    kNone,
    kReason,     // the reason is all that is told
    kNoMessage,  // no message stands there, which is reported
    kError       // an error, which is reported
  };
  Kind kind = Kind::kNone;
  std::string reason;  // of an error its description
  int32_t number = 0;  // of an error
  int32_t step = 0;    // at which it came

  explicit operator bool() const { return kind != Kind::kNone; }
};
inline constexpr size_t kFaultKinds = 4;

// Steps named in the log when one fails.
enum Step : uint8_t { kOpening = 1, kInfo, kDate, kTexts, kDuplicate, kScratch, kBlocks };

struct MessageReading {
  bool isEnd = false;  // behind the last message, or the walk ends here by an error: its fault
  std::vector<core::Telling> tellings;  // until now
  uint32_t infoOffset = 0;
  MessageInfo info;
  std::string entryKey;
  intake::StoreFacts facts;
  Fault fault;  // of its index
  uint32_t firstBlock = 0;
  uint32_t indexedBlock = 0;  // what the index says where the fourth entry is a place; 0 for none
};

// The text of one.
struct TextReading {
  Fault fault;
  std::optional<std::string> held;  // nothing where it was handed to a sink
  uint64_t size = 0;
  uint64_t chainSize = 0;                             // of the blocks visited
  std::optional<uint32_t> chainEnd;                   // behind the last of them
  std::unique_ptr<intake::PreparedMessage> prepared;  // where it was made elsewhere
  std::optional<SenderLines> sender;                  // likewise, where it was asked for
};

// A text in its turn.
struct TextTurn {
  uint32_t lastChainEnd = 0;        // where the message before ended
  uint64_t mostBytes = UINT64_MAX;  // of blocks that may still be visited
};

// Thrown by a sink that wants no more.
struct TextTooLong {};

class StoreWalk {
 public:
  using ByteSink = std::function<void(std::string_view)>;
  // What is told on the way: kinds kPlace and kUnknownFile, and those of messages.
  using Teller = std::function<void(const core::Telling&)>;

  virtual ~StoreWalk() = default;

  // The next message. wantsText: its text comes with it where it can be had ahead of its turn
  // (Ahead below). Throws Error where the rest can't be read.
  virtual MessageReading Next(bool wantsText) = 0;
  // What came with the last message, nullptr for nothing.
  virtual std::unique_ptr<TextReading> Ahead() { return nullptr; }
  // The text of a message, in pieces to longText from the first on where it is longer than
  // intake::kMostHeld; without a sink all of it is held.
  virtual TextReading ReadText(const MessageReading& message, const TextTurn& turn,
                               const ByteSink& longText) = 0;
};

// Reads the file itself.
class StoreReading : public StoreWalk {
 public:
  // fileName outlives it.
  StoreReading(const std::string& fileName, const intake::ReadingRules& rules, Teller tell);

  // Begin a walk: of the two upper levels or, by rules that say so, of all; or of one node alone.
  // One from the root has bounds: what it looks at is no longer together than twice the file.
  void EnterRoot(uint32_t offset);
  void EnterNode(uint32_t offset) { steps_ = {{.offset = offset, .isNode = true}}; }

  // The offset of the next message's info object; nullopt behind the last.
  std::optional<uint32_t> NextOffset();
  MessageReading ReadAt(uint32_t infoOffset);

  MessageReading Next(bool wantsText) override;
  TextReading ReadText(const MessageReading& message, const TextTurn& turn,
                       const ByteSink& longText) override;

 private:
  // A step of the walk: a message, or a node of the second level.
  struct WalkStep {
    uint32_t offset = 0;
    bool isNode = false;
    bool isEmpty = false;  // an entry that has no message
  };
  ByteReader& File();
  void Begin(uint32_t root);
  std::optional<TreeNode> ReadNodeOnce(uint32_t offset);
  void EnterSecondLevel(uint32_t offset);
  void Note(const char* reason);
  void ReportBadNode();

  const std::string& fileName_;
  intake::ReadingRules rules_;
  Teller tell_;
  std::optional<ByteReader> file_;      // opened when it is first needed, and anew after a failure
  std::optional<uint64_t> infoBudget_;  // bytes of info objects that may still be looked at
  std::optional<uint32_t> root_;        // not entered yet
  std::optional<TreeWalk> walk_;        // of every level; the rest is of two
  std::set<uint32_t> nodesRead_;
  std::vector<WalkStep> steps_;
  size_t stepsDone_ = 0;
  std::vector<TreeEntry> entries_;  // of the node of the second level that is being read
  size_t entriesDone_ = 0;
  std::set<std::string_view> noted_;  // each is told once
  int reportsLeft_ = kMostReports;
};

}  // namespace tarnwick::oe
