// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What comes one by one, each in a file or in memory, read by tarnwick-reader (reader_link.h): a
// message file, a letter that lies signed within another, a file of Outlook. One reader serves many
// of them: a short one is sent to it. A long one is handed, as an open file, to a reader of its
// own.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "intake/letter_record.h"
#include "intake/letter_service.h"
#include "intake/prepared_message.h"

namespace tarnwick::intake {

class ReaderLink;
class ScratchLetter;

class SingleReader {
 public:
  // Takes the answer; sent: what was sent, nothing of what was handed. Throws Error for a record
  // that makes no sense.
  using TakeRecord =
      std::function<void(std::string_view record, const std::optional<std::string>& sent)>;

  // mostSent: bytes of a short one.
  explicit SingleReader(Conversation conversation, size_t mostSent = kMostHeld);
  ~SingleReader();
  SingleReader(const SingleReader&) = delete;
  SingleReader& operator=(const SingleReader&) = delete;

  // Asks about a short file before its turn, so that the reader is at work on some at once. False
  // where that has to wait: too much was asked that way, or there is no reader.
  bool AskAhead(const std::string& file, const ReadingRules& rules, const std::string& how);

  // Asks about one, unless that was done ahead; bytes that belong to the answer go to output, if
  // there may be any, before take is called. False where there is no reader. Throws Error 75 where
  // the reader was lost over it.
  bool Ask(const RawMessage& raw, const ReadingRules& rules, const std::string& how,
           ScratchLetter* output, const TakeRecord& take);

 private:
  struct Asked {
    std::string file;
    std::string how;
    std::string sent;
  };
  std::unique_ptr<ReaderLink> Begin(const std::string& file, const ReadingRules& rules) const;
  ReaderLink* Link(const ReadingRules& rules);
  std::optional<std::string> TakeAsked(const std::string& file, const std::string& how);

  Conversation conversation_;
  size_t mostSent_;
  std::unique_ptr<ReaderLink> link_;  // for those that are sent
  std::deque<Asked> ahead_;
};

// The reader's end.
class SingleService : public SentMessages {
 public:
  Answer Next(std::string_view how, bool packs, const ByteSink& sink) override;
  std::string Text(std::string_view which, const ByteSink& longText) override;

 protected:
  // The record; sink: as above.
  virtual std::string Read(const RawMessage& raw, std::string_view how, const ByteSink& sink) = 0;
};

// Texts of messages.
class TextReader {
 public:
  // What ReadMessage gives, where there is no reader by ReadMessage itself; what is to be told of
  // the message has been told. Throws what ReadMessage throws, and Error 75 as above.
  PreparedMessage Read(const RawMessage& raw, const ReadingRules& rules, const StoreFacts& facts);
  // Has the reader begin with a file that Read will be called for, in the order of these calls.
  // False where that has to wait.
  bool ReadAhead(const std::string& file, const ReadingRules& rules, const StoreFacts& facts);

 private:
  SingleReader reader_{Conversation::kText};
};
std::unique_ptr<LetterService> MakeTextService();

}  // namespace tarnwick::intake
