// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What is read of a file that is searched for lost messages (lost_mail.h), without asking the
// repository or the person. The program reads so through tarnwick-reader, which is handed the file,
// or by itself where there is none; what either gives is the same.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "intake/letter_service.h"
#include "intake/reading_rules.h"
#include "oe/lost_mail.h"
#include "oe/store_walk.h"

namespace tarnwick::oe {

struct LostReading {
  bool isEnd = false;  // behind the last message
  LostMessage message;
  Fault fault;                       // of the message; at the end, of the rest
  std::vector<std::string> remarks;  // on what is behind, for the account
};

class LostWalk {
 public:
  virtual ~LostWalk() = default;

  // Throws Error where the rest can't be read.
  virtual LostReading Next() = 0;
  // As StoreWalk::ReadText.
  virtual TextReading ReadText(const LostMessage& lost, const StoreWalk::ByteSink& longText) = 0;
};

// Searches the file itself, when it is first needed.
class LostSearch : public LostWalk {
 public:
  // goOn: as FindObjects asks it. fileName outlives it.
  LostSearch(const std::string& fileName, bool isCopy, std::function<bool(int)> goOn)
      : fileName_(fileName), isCopy_(isCopy), goOn_(std::move(goOn)) {}

  LostReading Next() override;
  TextReading ReadText(const LostMessage& lost, const StoreWalk::ByteSink& longText) override;

 private:
  const std::string& fileName_;
  bool isCopy_;
  std::function<bool(int)> goOn_;
  std::optional<std::vector<FoundObjects>> pieces_;
  size_t piecesDone_ = 0;
  std::optional<LostMail> mail_;     // of the piece come to
  std::optional<ByteReader> texts_;  // of the piece that a text was read of
  int64_t textsOrigin_ = 0;
};

// "1 byte", "17 bytes"
std::string BytesText(uint64_t bytes);

// Through the reader, or here. isCopy, goOn: as above.
std::unique_ptr<LostWalk> OpenLostWalk(const std::string& fileName, bool isCopy,
                                       const intake::ReadingRules& rules,
                                       const std::function<bool(int)>& goOn);

// The reader's end; tell: how far the search has come, in percent.
std::unique_ptr<intake::LetterService> MakeLostService(const intake::ReadingRules& rules,
                                                       std::string_view opening,
                                                       const std::function<void(int)>& tell);

}  // namespace tarnwick::oe
