// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The program's end of the channel to tarnwick-pst-reader, for one store. The reader is started
// when the first request is made, and again for the request behind one that ended it. Nothing it
// says is trusted: frames, lengths and sums are checked, and every request has its time.
//
// A request that fails throws Error 75; those behind it are answered. A reader that fell or hung
// too often costs the rest of the store: each further request then throws at once (GivenUp).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/child_process.h"

namespace tarnwick::outlook {

struct ReaderLimits {
  int64_t openMilliseconds = 10 * 60 * 1000;   // a request that comes first opens the store
  int64_t requestMilliseconds = 60 * 1000;     // without a frame
  int64_t wastedMilliseconds = 5 * 60 * 1000;  // spent on requests that ended the reader
  int restarts = 1000;
};

// The reader beside the running program, or TARNWICK_PST_READER.
std::string ReaderProgram();

// A value as it came: MAPI number and type, and the store's bytes.
struct RawProperty {
  uint16_t number = 0;
  uint16_t type = 0;
  std::string bytes;
};
using RawRow = std::vector<RawProperty>;

// Everything that an answer held.
struct RawAnswer {
  RawRow properties;
  std::vector<RawRow> recipients;
  std::vector<RawRow> attachments;
  std::vector<uint32_t> folders;
  std::vector<uint32_t> items;
};

class PstClient {
 public:
  PstClient(std::string storePath, std::string program, ReaderLimits limits = {});

  RawAnswer Ask(char kind, const std::vector<uint32_t>& numbers);
  // The pieces of an answer of bytes go to sink.
  void AskBytes(const std::vector<uint32_t>& numbers,
                const std::function<void(std::string_view)>& sink);

  bool GivenUp() const { return givenUp_; }
  uint64_t StoreSize() const { return storeSize_; }
  // How much one answer may hold.
  uint64_t AnswerBudget() const;
  int64_t ProcessId() const { return child_ ? child_->Id() : 0; }

 private:
  using FrameSink = std::function<void(char kind, std::string_view payload)>;
  void Request(char kind, const std::vector<uint32_t>& numbers, const FrameSink& sink);
  void ReadFully(size_t count, int64_t timeout);
  [[noreturn]] void Lose(const std::string& why);

  std::string storePath_;
  std::string program_;
  ReaderLimits limits_;
  uint64_t storeSize_ = 0;
  std::unique_ptr<platform::ChildProcess> child_;
  std::string buffer_;  // read and not yet used, from position_ on
  size_t position_ = 0;
  int64_t requestBegan_ = 0;
  int64_t wasted_ = 0;
  int losses_ = 0;
  bool givenUp_ = false;
};

}  // namespace tarnwick::outlook
