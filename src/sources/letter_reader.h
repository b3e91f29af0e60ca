// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Letters one after the other, as a file or folder of a mail program keeps them: what every format
// of the room is read through.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "intake/message_state.h"

namespace tarnwick::sources {

using Sink = std::function<void(std::string_view)>;

// What is told of a letter before its text is read.
struct LetterEntry {
  std::string name;   // what is told of it: "message 17", or its file's name
  std::string fault;  // why it can't be read; "" when it can
  intake::MessageState state;
  std::string recordFile;  // of a letter that is no text: the file, to be read as a record
};

// What is known before that of a letter whose text is to be looked at.
inline bool HasText(const LetterEntry& letter) {
  return !letter.name.empty() && letter.fault.empty() && letter.recordFile.empty() &&
         !letter.state.isDeleted;
}

// Where a letter's text lies in its file.
struct LetterSpan {
  uint64_t begin = 0;
  uint64_t end = 0;
};

class LetterReader {
 public:
  virtual ~LetterReader() = default;

  // Goes to the next letter; false behind the last one. Throws Error where the rest can't be read.
  virtual bool Next(LetterEntry& letter) = 0;
  // Hands the current letter's raw bytes to sink, piece by piece; may be called again. Throws
  // Error. REQUIRES: it has neither a fault nor a recordFile.
  virtual void Copy(const Sink& sink) = 0;
  // Where the current letter's text lies, and back to the text of another: Copy is about that one
  // until Next.
  virtual LetterSpan Span() const = 0;
  virtual void GoTo(LetterSpan span) = 0;
  // Why the file is not whole, as far as was found so far; "" when nothing is wrong.
  virtual std::string Damage() const { return {}; }
};

// No letter is longer: what looks like one is no mail, or a file whose marks are lost.
inline constexpr uint64_t kMostLetterBytes = uint64_t{256} << 20;
inline constexpr const char* kTooLong = "it is longer than 256 MB";

}  // namespace tarnwick::sources
