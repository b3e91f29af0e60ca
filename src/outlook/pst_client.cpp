// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/pst_client.h"

#include <algorithm>
#include <cassert>

#include "outlook/pst_protocol.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/frames.h"

namespace tarnwick::outlook {

namespace {

constexpr size_t kMaxRows = 200'000;
constexpr size_t kMaxLost = 10;
constexpr size_t kMostReady = size_t{8} << 20;  // bytes kept of items that came ahead
constexpr size_t kMaxLostText = 100;
// Behind a reader that fell over an item asked for ahead, so that the next one is known for itself.
constexpr int kOneByOne = 2 * kMaxItemsAhead;
constexpr uint64_t kMaxAnswer = uint64_t{1} << 30;

Error Damaged(const std::string& what) {
  return Error(ErrorNumber::kPathAccess, "The Outlook store can't be read here: " + what);
}

std::vector<uint32_t> TakeNodes(std::string_view payload) {
  std::vector<uint32_t> nodes;
  for (size_t i = 0; i + 4 <= payload.size(); i += 4) nodes.push_back(TakeNumber(payload, i));
  return nodes;
}

std::string RequestFor(char kind, const std::vector<uint32_t>& numbers) {
  std::string payload;
  for (uint32_t number : numbers) PutNumber(payload, number);
  return platform::FrameOf(kind, payload);
}

// What may be large of an answer that came ahead.
size_t SizeOf(const RawAnswer& answer) {
  size_t bytes = 0;
  for (const RawProperty& property : answer.properties) bytes += property.bytes.size();
  for (const auto& [row, attached] : answer.attachmentBytes) bytes += attached.size();
  return bytes;
}

void AddLost(std::set<std::string>& lost, std::string_view what) {
  if (lost.size() < kMaxLost) lost.emplace(what.substr(0, kMaxLostText));
}

// Puts an answer together from its frames.
class AnswerReader {
 public:
  explicit AnswerReader(RawAnswer& answer) : answer_(answer), row_(&answer.properties) {}

  void Take(char kind, std::string_view payload) {
    if (kind == frame::kProperty) {
      BeginProperty(payload);
    } else if (kind == frame::kContinued) {
      Append(payload);
    } else if (kind == frame::kRecipientRow) {
      BeginRow(answer_.recipients);
    } else if (kind == frame::kAttachmentRow) {
      BeginRow(answer_.attachments);
    } else if (kind == frame::kFolders || kind == frame::kItems || kind == frame::kOtherItems) {
      std::vector<uint32_t> nodes = TakeNodes(payload);
      auto& list = kind == frame::kFolders ? answer_.folders
                   : kind == frame::kItems ? answer_.items
                                           : answer_.otherItems;
      list.insert(list.end(), nodes.begin(), nodes.end());
    } else if (kind == frame::kBytes && !answer_.attachments.empty()) {
      answer_.attachmentBytes[answer_.attachments.size() - 1] += payload;
    } else if (kind == frame::kNotShutIn) {
      answer_.isReaderShutIn = false;
    } else if (kind == frame::kLost) {
      AddLost(answer_.lost, payload);
    } else {
      throw Damaged("unknown answer");
    }
  }

 private:
  void BeginRow(std::vector<RawRow>& rows) {
    if (rows.size() >= kMaxRows) throw Damaged("too many rows");
    row_ = &rows.emplace_back();
    wanted_ = 0;
  }

  void BeginProperty(std::string_view payload) {
    if (payload.size() < kPropertyHeader) throw Damaged("short answer");
    RawProperty& property = row_->emplace_back();
    property.number = static_cast<uint16_t>(TakeNumber(payload, 0, 2));
    property.type = static_cast<uint16_t>(TakeNumber(payload, 2, 2));
    wanted_ = TakeNumber(payload, 4);
    Append(payload.substr(kPropertyHeader));
  }

  void Append(std::string_view bytes) {
    if (row_->empty() || bytes.size() > wanted_) throw Damaged("overlong answer");
    row_->back().bytes += bytes;
    wanted_ -= static_cast<uint32_t>(bytes.size());
  }

  RawAnswer& answer_;
  RawRow* row_;
  uint32_t wanted_ = 0;  // bytes of the last property still to come
};

}  // namespace

PstClient::PstClient(std::string storePath, std::string program, ReaderLimits limits, Way way)
    : storePath_(std::move(storePath)), program_(std::move(program)), limits_(limits), way_(way) {
  storeSize_ = platform::FileSize(storePath_);
}

uint64_t PstClient::AnswerBudget() const {
  // Values lie in the store as they are; the same block may serve several of them.
  return std::min<uint64_t>(kMaxAnswer, 4 * storeSize_ + (1 << 20));
}

// The reader is gone, or no longer to be believed.
void PstClient::Lose(const std::string& why) {
  channel_.reset();
  expected_.clear();
  oneByOne_ = kOneByOne;
  wasted_ += platform::TickMilliseconds() - requestBegan_;
  ++losses_;
  givenUp_ = wasted_ > limits_.wastedMilliseconds || losses_ > limits_.restarts;
  throw Damaged(why);
}

void PstClient::Send(std::string_view frames, int64_t timeout) {
  try {
    channel_->Send(frames, timeout);
  } catch (const intake::ReaderChannel::Lost& lost) {
    Lose(lost.why);
  }
}

// kind: of the request that comes first.
void PstClient::Start(char kind) {
  platform::InputFile store(storePath_);
  channel_ = std::make_unique<intake::ReaderChannel>(program_, &store);
  if (way_ == Way::kByIndex || kind == frame::kLostItems) return;
  Send(RequestFor(frame::kLostItems, {}), limits_.openMilliseconds);
  Receive(AnswerBudget(), limits_.openMilliseconds, [](char, std::string_view) {});
}

void PstClient::Request(char kind, const Numbers& numbers, const FrameSink& sink) {
  ReceiveAhead(nullptr);
  if (givenUp_) throw Damaged("given up");
  requestBegan_ = platform::TickMilliseconds();
  int64_t timeout = limits_.requestMilliseconds;
  if (!channel_) {
    Start(kind);
    timeout = limits_.openMilliseconds;
  }
  Send(RequestFor(kind, numbers), timeout);
  Receive(AnswerBudget(), timeout, sink);
}

void PstClient::Receive(uint64_t budget, int64_t timeout, const FrameSink& sink) {
  // A reader that sends on and on does so within its budget; one that stalls, within its time.
  int64_t deadline = requestBegan_ + limits_.openMilliseconds + limits_.requestMilliseconds;
  intake::ReaderChannel::Wait wait{timeout, deadline};
  while (true) {
    char answered = 0;
    std::string_view answer;
    try {
      auto [kind, payload] = channel_->Receive(std::min<uint64_t>(kMaxFrame, budget), wait);
      answered = kind;
      answer = payload;
    } catch (const intake::ReaderChannel::Lost& lost) {
      Lose(lost.why);
    }
    budget -= answer.size();
    if (answered == frame::kDone) return;
    if (answered == frame::kFailed) throw Damaged(std::string(answer));
    if (platform::TickMilliseconds() > deadline) Lose("the answer takes too long");
    try {
      sink(answered, answer);
    } catch (...) {
      // What is left of this answer must not be taken for the next one's.
      channel_.reset();
      expected_.clear();
      givenUp_ = ++losses_ > limits_.restarts;
      throw;
    }
  }
}

void PstClient::ReadAhead(const std::vector<Numbers>& items) {
  if (!channel_ || oneByOne_ > 0) return;
  if (ready_.size() >= kMaxItemsAhead) {  // of a walk that went elsewhere
    ready_.clear();
    readyBytes_ = 0;
  }
  std::string requests;
  for (const Numbers& numbers : items) {
    if (expected_.size() >= kMaxItemsAhead) break;
    requests += RequestFor(frame::kItemAhead, numbers);
    expected_.push_back(numbers);
  }
  try {
    requestBegan_ = platform::TickMilliseconds();
    Send(requests, limits_.requestMilliseconds);
  } catch (const Error&) {
    // Each is asked for again in its time.
  }
}

void PstClient::ReceiveAhead(const Numbers* wanted) {
  while (!expected_.empty()) {
    Numbers numbers = std::move(expected_.front());
    expected_.pop_front();
    size_t left = expected_.size();
    requestBegan_ = platform::TickMilliseconds();
    try {
      RawAnswer answer;
      AnswerReader reader(answer);
      Receive(2 * kMaxAhead, limits_.requestMilliseconds,
              [&](char kind, std::string_view payload) { reader.Take(kind, payload); });
      size_t bytes = SizeOf(answer);
      bool isWanted = wanted != nullptr && numbers == *wanted;
      bool isKept = isWanted || readyBytes_ + bytes <= kMostReady;
      if (isKept && ready_.try_emplace(numbers, std::move(answer)).second) readyBytes_ += bytes;
    } catch (const Error&) {
      // One that can't be had ahead; or the reader is gone, and with it those behind.
      if (expected_.size() != left) return;
    }
    if (wanted != nullptr && numbers == *wanted) return;
  }
}

std::optional<RawAnswer> PstClient::TakeReady(const Numbers& numbers) {
  if (oneByOne_ > 0) --oneByOne_;
  bool isExpected = std::find(expected_.begin(), expected_.end(), numbers) != expected_.end();
  if (isExpected) ReceiveAhead(&numbers);
  auto found = ready_.find(numbers);
  if (found == ready_.end()) return std::nullopt;
  RawAnswer answer = std::move(found->second);
  ready_.erase(found);
  readyBytes_ -= SizeOf(answer);
  return answer;
}

RawAnswer PstClient::Ask(char kind, const Numbers& numbers) {
  if (kind == frame::kItem) {
    if (auto ready = TakeReady(numbers)) return std::move(*ready);
  }
  RawAnswer answer;
  AnswerReader reader(answer);
  Request(kind, numbers,
          [&](char answered, std::string_view payload) { reader.Take(answered, payload); });
  return answer;
}

std::vector<FoundItem> PstClient::FindLost(const std::function<void(int)>& tell) {
  assert(way_ == Way::kBySearch);
  std::vector<FoundItem> items;
  Request(frame::kLostItems, {}, [&](char answered, std::string_view payload) {
    if (answered == frame::kProgress && payload.size() >= 4) {
      tell(static_cast<int>(std::min<uint32_t>(TakeNumber(payload, 0), 100)));
    } else if (answered == frame::kFoundItems) {
      for (size_t at = 0; at + kFoundItem <= payload.size(); at += kFoundItem) {
        auto how = std::min(TakeNumber(payload, at + 8), static_cast<uint32_t>(LostHow::kAlone));
        uint64_t data = TakeNumber(payload, at + 16);
        items.push_back({TakeNumber(payload, at), TakeNumber(payload, at + 4),
                         static_cast<LostHow>(how), data << 32 | TakeNumber(payload, at + 12)});
      }
    } else if (answered != frame::kLost) {
      throw Damaged("unknown answer");
    }
  });
  return items;
}

void PstClient::AskBytes(const Numbers& numbers, const std::function<void(std::string_view)>& sink,
                         std::set<std::string>& lost) {
  Request(frame::kAttachment, numbers, [&](char answered, std::string_view payload) {
    if (answered == frame::kLost) return AddLost(lost, payload);
    if (answered != frame::kBytes) throw Damaged("unknown answer");
    sink(payload);
  });
}

}  // namespace tarnwick::outlook
