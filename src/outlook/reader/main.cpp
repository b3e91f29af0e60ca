// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-pst-reader: reads one Outlook store for the program that started it and handed it the
// open file (the protocol is pst_protocol.h, the channel is standard input). A process of its own,
// because the store library meets whatever a damaged or hostile file holds: it may fall, but takes
// nothing with it; and shut in, because it may be taken over, but gives nothing away.
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "outlook/pst_protocol.h"
#include "outlook/reader/answer.h"
#include "outlook/reader/store_file.h"
#include "platform/confinement.h"
#include "platform/files.h"

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

int Run(tarnwick::platform::InputFile& file, bool isShutIn) {
  reader::Channel channel;
  Answer answer([&](std::string_view bytes) { channel.Write(bytes); });
  std::string payload;
  std::unique_ptr<StoreFile> store;
  try {
    while (true) {
      if (!channel.HasMore()) answer.Flush();
      char kind = channel.ReadRequest(payload);
      tarnwick::platform::LimitProcessorTime(store ? kRequestSeconds : kOpenSeconds);
      if (!store) store = Open(file, kind, answer);
      if (kind == frame::kStore && !isShutIn) answer.Frame(frame::kNotShutIn, {});
      Reply(*store, kind, payload, answer);
    }
  } catch (const reader::ChannelClosed&) {
    return 0;
  } catch (const std::exception& error) {
    // The store can't be opened.
    try {
      answer.Frame(frame::kFailed, error.what());
      answer.Flush();
    } catch (const reader::ChannelClosed&) {
    }
    return 1;
  }
}

}  // namespace

int main() {
  try {
    tarnwick::platform::InputFile file = tarnwick::platform::InputFile::Handed();
    return Run(file, tarnwick::platform::ConfineThisProcess(kMaxMemory).HasAny());
  } catch (const std::exception&) {
    return 2;  // started by hand
  }
}
