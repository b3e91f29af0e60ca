// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-reader: reads one mail store for the program that started it and handed it the open file
// (the channel is standard input). Which of two protocols is spoken the first request tells: that
// of Outlook's stores (outlook/pst_protocol.h) or that of stores of letters (intake/reader_link.h).
// A process of its own, because what reads a store meets whatever a damaged or hostile file holds:
// it may fall, but takes nothing with it; and shut in, because it may be taken over, but gives
// nothing away.
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "intake/letter_record.h"
#include "intake/letter_service.h"
#include "intake/reader_link.h"
#include "oe/store_link.h"
#include "outlook/pst_protocol.h"
#include "outlook/reader/answer.h"
#include "outlook/reader/store_file.h"
#include "platform/confinement.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "sources/letters_link.h"

namespace {

using namespace tarnwick::outlook;
using reader::Answer;
using reader::ReadError;
using reader::StoreFile;

// The sanitizers reserve more address space than any limit.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARNWICK_SANITIZED
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define TARNWICK_SANITIZED
#endif
#if defined(TARNWICK_SANITIZED)
constexpr uint64_t kMaxMemory = 0;
#else
constexpr uint64_t kMaxMemory = uint64_t{2} << 30;
#endif
constexpr int64_t kOpenSeconds = 600;
constexpr int64_t kRequestSeconds = 60;

std::vector<uint32_t> Numbers(const std::string& payload, size_t atLeast) {
  std::vector<uint32_t> numbers;
  for (size_t i = 0; i + 4 <= payload.size(); i += 4) numbers.push_back(TakeNumber(payload, i));
  if (numbers.size() < atLeast) throw ReadError("request");
  return numbers;
}

void Serve(StoreFile& store, char kind, const std::string& payload, Answer& answer) {
  if (kind == frame::kStore) return store.DescribeStore(answer);
  if (kind == frame::kLostItems) return store.DescribeLost(answer);
  if (kind == frame::kFolder) return store.DescribeFolder(Numbers(payload, 1)[0], answer);
  constexpr size_t kPlace = 3;
  std::vector<uint32_t> n = Numbers(payload, kPlace);
  reader::ItemPlace place{n[0], n[1], n[2]};
  reader::AttachmentPath path(n.begin() + kPlace, n.end());
  switch (kind) {
    case frame::kItem:
    case frame::kItemAhead:
      return store.DescribeItem(place, kind == frame::kItemAhead, answer);
    case frame::kAttachment:
      return store.SendAttachment(place, path, answer);
    case frame::kEmbedded:
      return store.DescribeEmbedded(place, path, answer);
    default:
      throw ReadError("request");
  }
}

void Reply(StoreFile& store, char kind, const std::string& payload, Answer& answer) {
  bool isAhead = kind == frame::kItemAhead;
  answer.Begin(isAhead ? kMaxAhead : 0);
  try {
    Serve(store, kind, payload, answer);
    answer.Frame(frame::kDone, {});
  } catch (const reader::TooLong&) {
    answer.Drop();
    answer.Frame(frame::kFailed, "too long");
  } catch (const std::exception& error) {
    if (isAhead) answer.Drop();
    answer.Frame(frame::kFailed, error.what());
  }
  answer.Commit();
}

// By the way that the first request asks for.
std::unique_ptr<StoreFile> Open(tarnwick::platform::InputFile& file, char kind, Answer& answer) {
  if (kind != frame::kLostItems) return reader::OpenStore(file);
  return reader::OpenLostStore(file, answer);
}

// A request as it came.
struct Request {
  char kind = 0;
  std::string payload;
};

int ServeOutlook(reader::Channel& channel, Request request, bool isShutIn) {
  tarnwick::platform::InputFile file = tarnwick::platform::InputFile::Handed();
  Answer answer([&](std::string_view bytes) { channel.Write(bytes); });
  std::unique_ptr<StoreFile> store;
  try {
    for (;; request.kind = channel.ReadRequest(request.payload)) {
      tarnwick::platform::LimitProcessorTime(store ? kRequestSeconds : kOpenSeconds);
      if (!store) store = Open(file, request.kind, answer);
      if (request.kind == frame::kStore && !isShutIn) answer.Frame(frame::kNotShutIn, {});
      Reply(*store, request.kind, request.payload, answer);
      if (!channel.HasMore()) answer.Flush();
    }
  } catch (const std::exception& error) {
    // The store can't be opened.
    answer.Frame(frame::kFailed, error.what());
    answer.Flush();
    return 1;
  }
}

int ServeLetters(reader::Channel& channel, const tarnwick::intake::LetterOpening& opening,
                 bool isShutIn) {
  using namespace tarnwick;
  intake::LetterChannel letters{
      .request = [&](std::string& payload) { return channel.ReadRequest(payload); },
      .hasMore = [&] { return channel.HasMore(); },
      .write = [&](std::string_view bytes) { channel.Write(bytes); }};
  auto open = [&]() -> std::unique_ptr<intake::LetterService> {
    const intake::ReadingRules& rules = opening.conditions.rules;
    switch (opening.conversation) {
      case intake::Conversation::kMailbox:
        return sources::MakeMailboxService(rules, opening.store);
      case intake::Conversation::kLetterFiles:
        return sources::MakeLetterFileService(rules);
      case intake::Conversation::kDbx:
        break;
    }
    return oe::MakeStoreService(rules, opening.store);
  };
  intake::ServeLetters(letters, isShutIn, open, opening.skip);
  return 0;
}

// What is needed of the machine is had before the process shuts itself in, and nothing of the store
// is looked at.
int Run() {
  using namespace tarnwick;
  reader::Channel channel;
  Request request;
  request.kind = channel.ReadRequest(request.payload);
  bool isOfLetters = request.kind == intake::letter_frame::kOpen;
  intake::LetterOpening opening;
  if (isOfLetters) {
    opening = intake::RecordOf<intake::LetterOpening>(request.payload);
    intake::ReadUnder(opening.conditions);
  }
  bool isHandedOne = opening.conversation != intake::Conversation::kLetterFiles;
  if (isHandedOne) platform::InputFile::Handed();  // which asks for its size
  bool isShutIn = platform::ConfineThisProcess(kMaxMemory).HasAny();
  if (isOfLetters) return ServeLetters(channel, opening, isShutIn);
  return ServeOutlook(channel, std::move(request), isShutIn);
}

}  // namespace

int main() {
  tarnwick::platform::KeepFreedMemory();
  try {
    return Run();
  } catch (const reader::ChannelClosed&) {
    return 0;
  } catch (const std::exception&) {
    return 2;  // started by hand
  }
}
