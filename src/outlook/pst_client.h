// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The program's end of the channel to tarnwick-reader, for one store. The reader is started
// when the first request is made, and again for the request behind one that ended it. Nothing it
// says is trusted: frames, lengths and sums are checked, and every request has its time.
//
// Items can be asked for ahead of their time: the reader gets them ready while the program is busy
// with others, so that neither waits for the other at each item.
//
// A request that fails throws Error 75; those behind it are answered. A reader that fell or hung
// too often costs the rest of the store: each further request then throws at once (GivenUp).
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "intake/reader_channel.h"
#include "intake/reader_link.h"
#include "outlook/pst_protocol.h"
#include "outlook/raw_row.h"

namespace tarnwick::outlook {

struct ReaderLimits {
  int64_t openMilliseconds = 10 * 60 * 1000;   // a request that comes first opens the store
  int64_t requestMilliseconds = 60 * 1000;     // without a frame
  int64_t wastedMilliseconds = 5 * 60 * 1000;  // spent on requests that ended the reader
  int restarts = 1000;
};

using intake::ReaderProgram;

// Everything that an answer held.
struct RawAnswer {
  RawRow properties;
  std::vector<RawRow> recipients;
  std::vector<RawRow> attachments;
  std::map<size_t, std::string> attachmentBytes;  // by row, of items that came ahead
  std::vector<uint32_t> folders;
  std::vector<uint32_t> items;
  std::vector<uint32_t> otherItems;  // of the items, those known to be no mail
  std::set<std::string> lost;        // what of it is damaged; a few of many
  bool isReaderShutIn = true;        // of the store: false where the system has no means to
};

inline constexpr size_t kMaxItemsAhead = 32;

// An item that a search of the whole store found.
struct FoundItem {
  uint32_t node = 0;
  uint32_t folder = 0;  // that it lay in
  LostHow how = LostHow::kUnlisted;
  uint64_t data = 0;
};

class PstClient {
 public:
  // How requests are answered: by the store's own index, or by what a search of all of it finds.
  enum class Way { kByIndex, kBySearch };

  PstClient(std::string storePath, std::string program, ReaderLimits limits = {},
            Way way = Way::kByIndex);

  using Numbers = std::vector<uint32_t>;

  // Has the reader get ready items that will be asked for next, in this order; what it can't is
  // read when it is asked for. At most kMaxItemsAhead lie ready, and a few megabytes.
  void ReadAhead(const std::vector<Numbers>& items);
  RawAnswer Ask(char kind, const Numbers& numbers);
  // The pieces of an answer of bytes go to sink. What of it is damaged is added to lost.
  void AskBytes(const Numbers& numbers, const std::function<void(std::string_view)>& sink,
                std::set<std::string>& lost);

  // Has the store searched, or gives what the search found. tell: how far it has come, in percent.
  // REQUIRES: the way is kBySearch.
  std::vector<FoundItem> FindLost(const std::function<void(int)>& tell);

  bool GivenUp() const { return givenUp_; }
  uint64_t StoreSize() const { return storeSize_; }
  // How much one answer may hold.
  uint64_t AnswerBudget() const;
  int64_t ProcessId() const { return channel_ ? channel_->ProcessId() : 0; }

 private:
  using FrameSink = std::function<void(char kind, std::string_view payload)>;
  void Start(char kind);
  void Request(char kind, const Numbers& numbers, const FrameSink& sink);
  // The frames of the answer that comes next.
  void Receive(uint64_t budget, int64_t timeout, const FrameSink& sink);
  // Moves answers to items asked for ahead from the channel to ready_, up to the one wanted.
  void ReceiveAhead(const Numbers* wanted);
  std::optional<RawAnswer> TakeReady(const Numbers& numbers);
  void Send(std::string_view frames, int64_t timeout);
  [[noreturn]] void Lose(const std::string& why);

  std::string storePath_;
  std::string program_;
  ReaderLimits limits_;
  Way way_;
  uint64_t storeSize_ = 0;
  std::unique_ptr<intake::ReaderChannel> channel_;
  std::deque<Numbers> expected_;  // asked ahead, the answers still to come
  std::map<Numbers, RawAnswer> ready_;
  size_t readyBytes_ = 0;
  int oneByOne_ = 0;  // items yet to be asked for in their time only, behind a loss
  int64_t requestBegan_ = 0;
  int64_t wasted_ = 0;
  int losses_ = 0;
  bool givenUp_ = false;
};

}  // namespace tarnwick::outlook
