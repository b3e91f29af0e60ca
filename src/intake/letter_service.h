// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The reader's end of the conversation that reader_link.h describes. What reads a kind of store
// answers for its messages.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tarnwick::intake {

// How a message is asked for: with its text, or without.
inline constexpr std::string_view kWithText = "t";
inline constexpr std::string_view kWithoutText = "o";

class LetterService {
 public:
  using ByteSink = std::function<void(std::string_view)>;
  struct Answer {
    std::string record;
    bool halts = false;  // its text is too long to be held
  };

  virtual ~LetterService() = default;

  // Passes over so many messages, of which it looks at nothing.
  virtual void Skip(uint64_t /*messages*/) {}
  // Of the next message; how: as it was asked for. packs: what is stored of its text, which the
  // program does else. What belongs to the answer beside its record goes to sink.
  virtual Answer Next(std::string_view how, bool packs, const ByteSink& sink) = 0;
  // Of a text; what is too long to be held goes to longText.
  virtual std::string Text(std::string_view which, const ByteSink& longText) = 0;
  // A piece of what is to be read next, of messages that are sent.
  virtual void Take(std::string_view /*piece*/) {}
};

// A conversation whose messages are sent.
class SentMessages : public LetterService {
 public:
  void Take(std::string_view piece) override { bytes_ += piece; }
  std::string Text(std::string_view /*which*/, const ByteSink& /*longText*/) override { return {}; }

 protected:
  // The one that has come.
  std::string Taken() { return std::exchange(bytes_, {}); }

 private:
  std::string bytes_;
};

// The channel to the program: the next request and its payload, whether another one has come, bytes
// to it, and whether it has to wait for them.
struct LetterChannel {
  std::function<char(std::string& payload)> request;
  std::function<bool()> hasMore;
  std::function<void(std::string_view)> write;
  std::function<bool()> isProgramFaster = [] { return false; };
};

// Tells the program how far the service has come with what takes long, in percent or in steps.
using ProgressTeller = std::function<void(int)>;

// Answers until the channel ends, which it says by what it throws. open makes the service, when
// the program has been told that the reader is there; skip: messages to pass over.
void ServeLetters(const LetterChannel& channel, bool isShutIn,
                  const std::function<std::unique_ptr<LetterService>(const ProgressTeller&)>& open,
                  uint64_t skip);

}  // namespace tarnwick::intake
