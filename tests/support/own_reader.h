// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A test program as its own reader, one that goes wrong in a way that the environment names.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "intake/letter_record.h"
#include "intake/letter_service.h"
#include "platform/child_process.h"
#include "platform/environment.h"
#include "platform/frames.h"

namespace tarnwick::testing {

inline constexpr const char* kReaderFault = "TARNWICK_TEST_READER_FAULT";
// A file follows, which the first start makes.
inline constexpr std::string_view kStartsOnlyWith = "starts only with ";

inline void ReadFromProgram(std::string& to, size_t count) {
  to.resize(count);
  for (size_t had = 0; had < count;) {
    size_t got = platform::ReadFromParent(to.data() + had, count - had);
    if (got == 0) std::_Exit(0);
    had += got;
  }
}

// Goes wrong over each answer: it dies, says nonsense, or half of it.
class WrongThroughout : public intake::LetterService {
 public:
  WrongThroughout(std::unique_ptr<intake::LetterService> sound, std::string fault)
      : sound_(std::move(sound)), fault_(std::move(fault)) {}

  void Take(std::string_view piece) override { sound_->Take(piece); }
  Answer Next(std::string_view how, bool packs, const ByteSink& sink) override {
    return {Wrong(sound_->Next(how, packs, sink).record)};
  }
  std::string Text(std::string_view which, const ByteSink& sink) override {
    return Wrong(sound_->Text(which, sink));
  }

 private:
  std::string Wrong(const std::string& record) const {
    if (fault_ == "dies") std::_Exit(1);
    return fault_ == "says half" ? record.substr(0, record.size() / 2) : std::string(100, '\xEE');
  }

  std::unique_ptr<intake::LetterService> sound_;
  std::string fault_;
};

using FaultyService = std::function<std::unique_ptr<intake::LetterService>(
    const std::string& fault, const intake::LetterOpening& opening,
    const intake::ProgressTeller& tell)>;

// Has the program serve, and end with that, before its first test.
class OwnReader : public ::testing::Environment {
 public:
  explicit OwnReader(FaultyService make) : make_(std::move(make)) {}

  void SetUp() override {
    std::string fault = platform::EnvironmentText(kReaderFault).value_or("");
    if (fault.empty()) return;
    auto request = [](std::string& payload) {
      std::string head;
      ReadFromProgram(head, platform::kFrameHead);
      ReadFromProgram(payload, platform::FrameLength(head));
      return head[0];
    };
    std::string opening;
    request(opening);
    if (fault == "is no reader") std::_Exit(1);
    if (fault.starts_with(kStartsOnlyWith) &&
        !std::ifstream(fault.substr(kStartsOnlyWith.size()))) {
      std::ofstream(fault.substr(kStartsOnlyWith.size())) << "was started";
      std::_Exit(1);
    }
    auto told = intake::RecordOf<intake::LetterOpening>(opening);
    intake::ReadUnder(told.conditions);
    auto hasMore = [] { return false; };
    intake::ServeLetters(
        {request, hasMore, [](auto bytes) { platform::WriteToParent(bytes); }}, true,
        [&](const auto& tell) { return make_(fault, told, tell); }, told.skip);
    std::_Exit(0);
  }

 private:
  FaultyService make_;
};

}  // namespace tarnwick::testing
