// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-pst-reader FILE: reads one Outlook store for the program that started it (the protocol
// is pst_protocol.h, the channel is standard input). A process of its own, because the store
// library meets whatever a damaged or hostile file holds: it may fall, but takes nothing with it.
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "outlook/pst_protocol.h"
#include "outlook/reader/answer.h"
#include "outlook/reader/store_file.h"
#include "platform/child_process.h"

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
  constexpr size_t kPlace = 3;  // folder, index, node
  std::vector<uint32_t> n;
  std::vector<uint32_t> path;
  if (kind == frame::kFolder) n = Numbers(payload, 1);
  if (kind == frame::kItem || kind == frame::kAttachment || kind == frame::kEmbedded) {
    n = Numbers(payload, kPlace);
    path.assign(n.begin() + kPlace, n.end());
  }
  switch (kind) {
    case frame::kStore:
      return store.DescribeStore(answer);
    case frame::kFolder:
      return store.DescribeFolder(n[0], answer);
    case frame::kItem:
      return store.DescribeItem(n[0], n[1], n[2], answer);
    case frame::kAttachment:
      return store.SendAttachment(n[0], n[1], n[2], path, answer);
    case frame::kEmbedded:
      return store.DescribeEmbedded(n[0], n[1], n[2], path, answer);
    default:
      throw ReadError("request");
  }
}

int Run(const std::string& path) {
  Answer answer;
  std::string payload;
  tarnwick::platform::LimitProcessorTime(kOpenSeconds);
  try {
    StoreFile store(path);
    while (true) {
      char kind = reader::ReadRequest(payload);
      tarnwick::platform::LimitProcessorTime(kRequestSeconds);
      try {
        Serve(store, kind, payload, answer);
        answer.Frame(frame::kDone, {});
      } catch (const std::exception& error) {
        answer.Frame(frame::kFailed, error.what());
      }
      answer.Flush();
    }
  } catch (const reader::ChannelClosed&) {
    return 0;
  } catch (const std::exception& error) {
    // The store can't be opened: the first request is told so.
    try {
      reader::ReadRequest(payload);
      answer.Frame(frame::kFailed, error.what());
      answer.Flush();
    } catch (const reader::ChannelClosed&) {
    }
    return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  tarnwick::platform::ConfineThisProcess(kMaxMemory);
  return Run(argv[1]);
}
