// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The texts of messages that come one by one, each in a file or in memory, read by tarnwick-reader
// (reader_link.h): a message file, a signed letter within another. One reader serves many of them:
// a short one is sent to it. A long one is handed, as an open file, to a reader of its own.
#pragma once

#include <memory>
#include <string_view>

#include "intake/letter_service.h"
#include "intake/prepared_message.h"

namespace tarnwick::intake {

class ReaderLink;

class TextReader {
 public:
  TextReader();
  ~TextReader();
  TextReader(const TextReader&) = delete;
  TextReader& operator=(const TextReader&) = delete;

  // What ReadMessage gives, where there is no reader by ReadMessage itself; what is to be told of
  // the message has been told. Throws what ReadMessage throws, and Error 75 where the reader was
  // lost over it.
  PreparedMessage Read(const RawMessage& raw, const ReadingRules& rules, const StoreFacts& facts);

 private:
  std::unique_ptr<ReaderLink> link_;  // for those that are sent
};

// The reader's end: of texts that are sent, and of the one that it was handed.
std::unique_ptr<LetterService> MakeTextService();
std::unique_ptr<LetterService> MakeTextFileService(std::string_view opening);

}  // namespace tarnwick::intake
