// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/letter_service.h"

#include <algorithm>

#include "intake/reader_link.h"
#include "platform/confinement.h"
#include "platform/frames.h"

namespace tarnwick::intake {

namespace {

constexpr size_t kMostUnsent = size_t{64} * 1024;
constexpr size_t kLong = size_t{16} * 1024;
constexpr int64_t kOpenSeconds = 600;
constexpr int64_t kRequestSeconds = 60;

class Frames {
 public:
  explicit Frames(const LetterChannel& channel) : channel_(channel) {}

  void Add(char kind, std::string_view payload) {
    platform::BeginFrame(bytes_, kind, payload.size());
    if (payload.size() >= kLong) {  // not copied once more
      Send();
      return channel_.write(payload);
    }
    bytes_ += payload;
    if (bytes_.size() >= kMostUnsent) Send();
  }
  void AddText(std::string_view text) {
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), kMostUnsent))) {
      Add(letter_frame::kBytes, text.substr(0, kMostUnsent));
    }
  }
  void Send() {
    if (!bytes_.empty()) channel_.write(bytes_);
    bytes_.clear();
  }

 private:
  const LetterChannel& channel_;
  std::string bytes_;
};

}  // namespace

void ServeLetters(const LetterChannel& channel, bool isShutIn,
                  const std::function<std::unique_ptr<LetterService>(const ProgressTeller&)>& open,
                  uint64_t skip) {
  Frames frames(channel);
  if (!isShutIn) frames.Add(letter_frame::kNotShutIn, {});
  frames.Add(letter_frame::kRecord, {});
  frames.Send();
  platform::LimitProcessorTime(kOpenSeconds);
  std::unique_ptr<LetterService> service = open([&](int32_t come) {
    frames.Add(letter_frame::kProgress, BytesOf(come));
    frames.Send();
    platform::LimitProcessorTime(kOpenSeconds);  // of each step
  });
  service->Skip(skip);
  auto addText = [&](std::string_view text) { frames.AddText(text); };
  bool isHalted = false;
  uint64_t texts = 0;
  // Two are at work: what takes the most time is left to the program while it is the faster. Some
  // it is never left, so that neither course is a rare one.
  constexpr uint64_t kAlwaysPacked = 4;
  for (std::string payload;;) {
    bool isLast = !channel.hasMore();
    if (isLast) frames.Send();
    char kind = channel.request(payload);
    if (isLast) platform::LimitProcessorTime(kRequestSeconds);  // of all that have come
    if (kind == letter_frame::kPiece) {
      service->Take(payload);
    } else if (kind == letter_frame::kGoOn) {
      isHalted = false;
    } else if (kind == letter_frame::kText) {
      std::string record = service->Text(payload, addText);
      frames.Add(letter_frame::kRecord, record);
    } else if (kind == letter_frame::kNext && !isHalted) {
      bool isBehind = channel.hasMore() && channel.isProgramFaster();
      bool packs = !isBehind || ++texts % kAlwaysPacked == 0;
      LetterService::Answer answer = service->Next(payload, packs, addText);
      isHalted = answer.halts;
      frames.Add(isHalted ? letter_frame::kHalted : letter_frame::kRecord, answer.record);
    }
  }
}

}  // namespace tarnwick::intake
