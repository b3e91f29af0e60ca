// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/reader_link.h"

#include <algorithm>
#include <utility>

#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/letter_service.h"
#include "intake/record_bytes.h"
#include "intake/registry_link.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/frames.h"

namespace tarnwick::intake {

namespace {

// Requests sent ahead: few at first and behind a loss, then so many that the reader works on while
// the program is at its commits.
constexpr size_t kFirstAsked = 32;
constexpr size_t kMostAsked = 512;
// Behind a reader that was lost over a message asked for ahead, so that it is known which.
constexpr int kOneByOne = 2 * kFirstAsked;
// Of an answer: what a text is made into, and packed besides.
constexpr uint64_t kBytesOfByte = 16;
constexpr uint64_t kLeastMost = uint64_t{4} << 20;
constexpr uint64_t kLeastPieces = uint64_t{64} << 20;
constexpr uint64_t kMostMost = uint64_t{1} << 30;

LinkLimits& Limits() {
  static LinkLimits limits;
  return limits;
}

std::string& Program() {
  static std::string program;
  return program;
}

int64_t& Records() {
  static int64_t records = 0;
  return records;
}

void TellNotShutIn() {
  static bool isTold = false;
  if (std::exchange(isTold, true)) return;
  core::WriteLog(
      "Mail stores are read without the protection of the system: it can confine no process.");
}

// A machine that is out of processes for a moment costs one store the wall, and not all of them.
constexpr int kMostFailures = 3;

std::string RequestFor(std::string_view message, std::string_view how) {
  constexpr size_t kPieceSize = size_t{32} * 1024;
  std::string frames;
  for (size_t place = 0; place < message.size(); place += kPieceSize) {
    frames += platform::FrameOf(letter_frame::kPiece, message.substr(place, kPieceSize));
  }
  return frames + platform::FrameOf(letter_frame::kNext, how);
}

int& Failures() {
  static int failures = 0;
  return failures;
}

void TellFailure(const char* what, const std::string& why) {
  if (++Failures() > 1) return;
  core::WriteLog(std::string("The reader of mail stores ") + what +
                 "; the program reads them itself." + why);
}

}  // namespace

LinkLimits SetLinkLimits(const LinkLimits& limits) {
  return std::exchange(Limits(), limits);
}

void SetReader(std::string program) {
  Program() = std::move(program);
  Failures() = 0;
  platform::SetRegistryFileReader(Program().empty() ? platform::RegistryFileReader()
                                                    : OpenRegistryLink);
}

const std::string& Reader() {
  return Program();
}

std::string ReaderProgram() {
  std::string given = platform::EnvironmentText("TARNWICK_READER").value_or("");
  if (!given.empty()) return given;
  return platform::FolderOf(platform::ProgramPath()) + "tarnwick-reader" +
         std::string(platform::kProgramEnding);
}

int64_t RecordsRead() {
  return Records();
}

std::unique_ptr<ReaderLink> ReaderLink::Begin(const std::string& storePath,
                                              Conversation conversation, const ReadingRules& rules,
                                              std::string opening) {
  if (Program().empty() || Failures() >= kMostFailures) return nullptr;
  if (!storePath.empty()) platform::InputFile readable(storePath);  // or its error is told
  LetterOpening told{conversation, !storePath.empty(), 0, ConditionsOf(rules), std::move(opening)};
  std::unique_ptr<ReaderLink> link(new ReaderLink(storePath, Program(), std::move(told)));
  // What keeps it from starting may be gone a moment later.
  for (bool isSecond : {false, true}) {
    try {
      link->Start();
      return link;
    } catch (const Lost&) {
      if (isSecond) TellFailure("does not answer", {});
    } catch (const Error& error) {
      if (isSecond) TellFailure("can't be started", " " + core::OneLogLine(error.Description()));
    }
  }
  return nullptr;
}

std::unique_ptr<ReaderLink> ReaderLink::Open(const std::string& program,
                                             const std::string& storePath,
                                             Conversation conversation, const ReadingRules& rules) {
  LetterOpening told{conversation, true, 0, ConditionsOf(rules), {}};
  std::unique_ptr<ReaderLink> link(new ReaderLink(storePath, program, std::move(told)));
  link->isOpenedSlowly_ = true;
  try {
    link->Start();
    return link;
  } catch (const Lost&) {
    throw Error(ErrorNumber::kPathAccess, kReaderLost);
  }
}

ReaderLink::ReaderLink(std::string storePath, std::string program, LetterOpening opening)
    : storePath_(std::move(storePath)),
      program_(std::move(program)),
      opening_(std::move(opening)),
      mostAsked_(kFirstAsked) {}

// It answers once to say that it is there, before it looks at the store.
void ReaderLink::Start() {
  std::optional<platform::InputFile> store;
  if (!storePath_.empty()) store.emplace(storePath_);
  storeSize_ = store ? store->Size() : 0;
  SetMost(storeSize_);
  channel_ = std::make_unique<ReaderChannel>(program_, store ? &*store : nullptr);
  opening_.skip = done_ + waiting_.size();
  Send(platform::FrameOf(letter_frame::kOpen, BytesOf(opening_)));
  ReceiveRecord({});
  isOpening_ = isOpenedSlowly_;
}

// bytes: that the answers are about.
void ReaderLink::SetMost(uint64_t bytes) {
  mostBytes_ = std::min(kMostMost, kBytesOfByte * bytes + kLeastMost);
  mostPieces_ = kBytesOfByte * bytes + kLeastPieces;
}

void ReaderLink::Send(std::string_view requests) {
  channel_->Send(requests, Limits().silentMilliseconds);
}

void ReaderLink::AskAhead(bool withText) {
  size_t most = oneByOne_ > 0 ? 1 : mostAsked_;
  if (2 * asked_.size() > most) return;
  std::string requests;
  if (std::exchange(isHalted_, false)) requests += platform::FrameOf(letter_frame::kGoOn, {});
  while (asked_.size() < most) {
    requests += platform::FrameOf(letter_frame::kNext, withText ? kWithText : kWithoutText);
    asked_.push_back(withText);
  }
  Send(requests);
  if (most > 1) mostAsked_ = std::min(2 * mostAsked_, kMostAsked);
}

std::optional<std::string_view> ReaderLink::Next(bool withText) {
  if (!waiting_.empty()) {
    handedOut_ = std::move(waiting_.front());
    waiting_.pop_front();
    ++done_;
    return handedOut_;
  }
  RequireHope();
  // No store holds a message in fewer bytes.
  constexpr uint64_t kLeastBytes = 4;
  if (done_ > storeSize_ / kLeastBytes) {
    throw Error(ErrorNumber::kPathAccess, "the reader tells of more than its store can hold");
  }
  for (;;) {
    try {
      if (!channel_) Start();
      AskAhead(withText);
      std::string_view record = ReceiveRecord({});
      ++done_;
      if (oneByOne_ > 0) --oneByOne_;
      return record;
    } catch (const Lost&) {
      bool isAlone = asked_.size() == 1;
      bool isLeast = isAlone && !asked_.front();
      auto asked = static_cast<int>(asked_.size());
      CountLoss();
      oneByOne_ = std::max(kOneByOne, asked);
      if (core::IsLoadStopped()) return std::nullopt;
      if (isLeast) {
        ++done_;
        return std::nullopt;
      }
      // Which message it was shows when it is asked for alone; what can be had of it at all, when
      // its text is left out.
      if (isAlone) withText = false;
    }
  }
}

std::optional<std::string_view> ReaderLink::Text(std::string_view which, const ByteSink& longText) {
  RequireHope();
  for (;;) {
    try {
      if (!channel_) Start();
      // A long request is sent when the reader has nothing more to say, or each would wait for the
      // other to take what it sends.
      constexpr size_t kMostBlind = size_t{16} * 1024;
      if (which.size() > kMostBlind) ReceiveAsked();
      Send(platform::FrameOf(letter_frame::kText, which));
      ReceiveAsked();
      return ReceiveRecord(longText);
    } catch (const Lost&) {
      auto asked = static_cast<int>(asked_.size());
      bool isAnothers = asked > 0;
      CountLoss();
      oneByOne_ = std::max(kOneByOne, asked);
      if (!isAnothers || core::IsLoadStopped()) return std::nullopt;
    } catch (...) {
      Leave();  // in the middle of an answer
      throw;
    }
  }
}

void ReaderLink::ReceiveAsked() {
  while (!asked_.empty()) waiting_.emplace_back(ReceiveRecord({}));
}

// Neither end may wait for the other to take what it sends: so much fits into the channel.
bool ReaderLink::MayAsk(size_t size) const {
  constexpr size_t kMostSent = size_t{48} * 1024;
  return messages_.empty() || messageBytes_ + size <= kMostSent;
}

void ReaderLink::Ask(std::string_view message, std::string_view how) {
  std::string& frames = messages_.emplace_back(RequestFor(message, how));
  messageBytes_ += frames.size();
  // Behind one that a reader was lost over, each waits for its turn.
  if (!channel_ || messagesSent_ + 1 < messages_.size()) return;
  try {
    Send(frames);
    ++messagesSent_;
  } catch (const Lost&) {
    CountLoss();
  }
}

void ReaderLink::DropFirst() {
  messageBytes_ -= messages_.front().size();
  messages_.pop_front();
  if (messagesSent_ > 0) --messagesSent_;
}

std::optional<std::string_view> ReaderLink::Answer(const ByteSink& sink, const Again& again) {
  RequireHope();
  for (;;) {
    bool isAlone = messagesSent_ <= 1;
    try {
      if (!channel_) Start();
      if (messagesSent_ == 0) {
        Send(messages_.front());
        messagesSent_ = 1;
      }
      SetMost(std::max<uint64_t>(messages_.front().size(), storeSize_));
      std::string_view record = ReceiveRecord(sink);
      DropFirst();
      return record;
    } catch (const Lost&) {
      CountLoss();
      std::optional<std::string> how;
      if (again) how = again(isAlone);
      if (how) {
        DropFirst();
        messages_.push_front(RequestFor({}, *how));
        messageBytes_ += messages_.front().size();
      }
      if ((how || !isAlone) && !core::IsLoadStopped()) continue;
      DropFirst();
      return std::nullopt;
    } catch (...) {
      Leave();  // in the middle of an answer
      DropFirst();
      throw;
    }
  }
}

void ReaderLink::Distrust() {
  askedAt_ = platform::TickMilliseconds();
  CountLoss();
}

void ReaderLink::Leave() {
  channel_.reset();
  asked_.clear();
  messagesSent_ = 0;
  mostAsked_ = kFirstAsked;
  isHalted_ = false;
}

// The reader is gone, or no longer to be believed.
void ReaderLink::CountLoss() {
  Leave();
  wasted_ += platform::TickMilliseconds() - askedAt_;
  ++losses_;
  RequireHope();
}

void ReaderLink::RequireHope() const {
  bool isGivenUp = losses_ > Limits().losses || wasted_ > Limits().wastedMilliseconds;
  if (isGivenUp) throw Error(ErrorNumber::kPathAccess, std::string(kReaderLost) + " too often");
}

// The pieces of a text go to longText on the way; where none may come, nothing is set there.
std::string_view ReaderLink::ReceiveRecord(const ByteSink& longText) {
  askedAt_ = platform::TickMilliseconds();
  const LinkLimits& limits = Limits();
  constexpr int64_t kMostSilences = 10;
  int64_t silent = isOpening_ ? limits.openMilliseconds : limits.silentMilliseconds;
  ReaderChannel::Wait wait{silent, askedAt_ + silent + kMostSilences * limits.silentMilliseconds,
                           limits.patienceMilliseconds};
  // What says how far it is may go over all of a large file, on a slow disk, and more than once.
  constexpr uint64_t kSlowestBytesAMillisecond = 512;
  if (progress_) {
    wait.deadline += static_cast<int64_t>(storeSize_ / kSlowestBytesAMillisecond);
  }
  constexpr Lost kSenseless{"the answer makes no sense"};
  uint64_t pieces = mostPieces_;
  for (uint64_t left = mostBytes_;;) {
    ReaderChannel::Frame frame = channel_->Receive(left, wait);
    wait.silentMilliseconds = limits.silentMilliseconds;
    isOpening_ = false;
    if (frame.kind == letter_frame::kBytes) {
      if (!longText || frame.payload.size() > pieces) throw kSenseless;
      pieces -= frame.payload.size();
      longText(frame.payload);
      continue;
    }
    if (frame.payload.size() > left) throw kSenseless;
    left -= frame.payload.size();
    switch (frame.kind) {
      case letter_frame::kProgress:
        if (!progress_ || frame.payload.size() != sizeof(int32_t)) throw kSenseless;
        progress_(RecordOf<int32_t>(frame.payload));
        break;
      case letter_frame::kNotShutIn:
        TellNotShutIn();
        break;
      case letter_frame::kRecord:
      case letter_frame::kHalted:
        ++Records();
        if (!asked_.empty()) asked_.pop_front();
        if (frame.kind == letter_frame::kHalted) {
          asked_.clear();
          isHalted_ = true;
        }
        return frame.payload;
      default:
        throw kSenseless;
    }
  }
}

}  // namespace tarnwick::intake
