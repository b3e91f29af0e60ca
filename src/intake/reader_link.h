// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The program's end of a conversation with tarnwick-reader about the messages of one store, which
// the reader goes over from the first to the last. It is a process of its own, shut in, which is
// handed the open store: whatever a store does to it costs a message and not the program, and while
// the program stores a message, it reads the next ones. docs/reliability.md says what that wall
// holds back.
//
// Both directions are frames (platform/frames.h).
//
// Requests
//   'l' opening                               comes first: LetterOpening of letter_record.h
//   'n' how                                   the next message; with its text (kWithText), unless
//                                             that is too long to be held
//   'p' bytes                                 of messages that are sent: a piece of the next one
//   't' which...                              the text of a message
//   'c'                                       go on behind a message that halted
// Answers, one to each request but 'c'
//   'b' bytes                                 a piece of a text too long to be held
//   'r' record...                             the answer itself, last
//   'h' record...                             the same, of a message whose text is too long: the
//                                             'n' requests that have come already are forgotten
//   'w' number                                how far it has come with what takes long: percent, or
//                                             steps (32 bits)
//   'u'                                       the reader is not shut in: the system has no means
//
// What a record holds is the conversation's business; record_bytes.h reads it. Nothing that comes
// from the reader is trusted. Requests are sent ahead, so that neither waits for the other.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "intake/letter_record.h"
#include "intake/reader_channel.h"

namespace tarnwick::intake {

namespace letter_frame {
inline constexpr char kOpen = 'l';
inline constexpr char kNext = 'n';
inline constexpr char kText = 't';
inline constexpr char kGoOn = 'c';
inline constexpr char kPiece = 'p';
inline constexpr char kBytes = 'b';
inline constexpr char kRecord = 'r';
inline constexpr char kHalted = 'h';
inline constexpr char kProgress = 'w';
inline constexpr char kNotShutIn = 'u';
}  // namespace letter_frame

// Why a message is unreadable that the reader was lost over.
inline constexpr const char* kReaderLost = "the reader of its store ended or did not answer";

struct LinkLimits {
  int64_t openMilliseconds = 10 * 60 * 1000;   // without a byte, of a store that is being opened,
  int64_t silentMilliseconds = 60 * 1000;      // and of any other answer
  int64_t wastedMilliseconds = 5 * 60 * 1000;  // spent on answers that did not come
  int losses = 1000;
  int64_t patienceMilliseconds = 50;  // without a look at the window
};
// For tests; those that were before.
LinkLimits SetLinkLimits(const LinkLimits& limits);

// The reader that the program reads through, registry files too; "" where it reads everything
// itself.
void SetReader(std::string program);
const std::string& Reader();
// The one beside the running program, or TARNWICK_READER.
std::string ReaderProgram();

// Records that all links have brought, for the tests.
int64_t RecordsRead();

class ReaderLink {
 public:
  using ByteSink = std::function<void(std::string_view)>;

  // nullptr where the program reads itself: none is set, or it can't be started, even at the second
  // try, which is logged once; each store tries anew, until three have failed. storePath: "" where
  // messages are sent. Throws Error for a store that can't be opened.
  static std::unique_ptr<ReaderLink> Begin(const std::string& storePath, Conversation conversation,
                                           const ReadingRules& rules, std::string opening);
  // The same of a store that the program can't read itself, and whose opening may take long: throws
  // Error where the reader can't be started.
  static std::unique_ptr<ReaderLink> Open(const std::string& program, const std::string& storePath,
                                          Conversation conversation, const ReadingRules& rules);

  // --- Of a store that is walked.

  // The record of the next message, valid until the next call; nullopt where the reader ended or
  // fell silent over it: then it goes on behind it.
  // Throws Error 75 when it did so too often, as all of these do.
  std::optional<std::string_view> Next(bool withText);
  // The answer to a request for a text; nullopt where the reader was lost over it. longText may
  // have had pieces then. Throws what that throws.
  std::optional<std::string_view> Text(std::string_view which, const ByteSink& longText);

  // --- Of messages that are sent, and what a store is asked for.

  // Whether one of so many bytes can be sent without waiting for the reader.
  bool MayAsk(size_t size) const;
  void Ask(std::string_view message, std::string_view how);
  // The record of the first one that is not answered; nullopt where the reader was lost over it.
  // What belongs to the answer beside its record goes to sink, and from its beginning once more
  // behind each loss that again is told of. isAlone: no other request was sent with it, and it is
  // not asked for once more, unless again gives another way to do so. Throws what these throw.
  using Again = std::function<std::optional<std::string>(bool isAlone)>;
  std::optional<std::string_view> Answer(const ByteSink& sink = {}, const Again& again = {});

  // Whom to tell how far the reader has come; where it is nobody, none is to say so.
  void TellProgress(std::function<void(int)> tell) { progress_ = std::move(tell); }

  // An answer made no sense: another reader goes on behind it.
  void Distrust();
  uint64_t StoreSize() const { return storeSize_; }
  int64_t ProcessId() const { return channel_ ? channel_->ProcessId() : 0; }

 private:
  using Lost = ReaderChannel::Lost;
  ReaderLink(std::string storePath, std::string program, LetterOpening opening);
  void Start();
  void Send(std::string_view requests);
  void AskAhead(bool withText);
  std::string_view ReceiveRecord(const ByteSink& longText);
  void ReceiveAsked();
  void SetMost(uint64_t bytes);
  void DropFirst();
  void Leave();
  void CountLoss();
  void RequireHope() const;

  std::string storePath_;
  std::string program_;
  LetterOpening opening_;
  uint64_t storeSize_ = 0;
  uint64_t mostBytes_ = 0;   // of an answer,
  uint64_t mostPieces_ = 0;  // and of what goes to a sink beside it
  std::function<void(int)> progress_;
  std::unique_ptr<ReaderChannel> channel_;
  bool isOpenedSlowly_ = false;
  bool isOpening_ = false;  // nothing has come since the reader was started
  std::deque<bool> asked_;  // with text or not: requests that are not answered
  size_t mostAsked_;
  std::deque<std::string> messages_;  // that were asked about, as they were sent
  size_t messagesSent_ = 0;           // of these, to this reader
  size_t messageBytes_ = 0;
  std::deque<std::string> waiting_;  // records that came before a text
  std::string handedOut_;            // the last of them
  uint64_t done_ = 0;                // messages whose records were handed out, or lost
  bool isHalted_ = false;
  int oneByOne_ = 0;  // messages yet to be asked for in their turn only, behind a loss
  int64_t askedAt_ = 0;
  int64_t wasted_ = 0;
  int losses_ = 0;
};

}  // namespace tarnwick::intake
