// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/walk_ahead.h"

#include <exception>

namespace tarnwick::oe {

namespace {

int64_t& Taken() {
  static int64_t taken = 0;
  return taken;
}

}  // namespace

int64_t WalkAhead::MessagesTaken() {
  return Taken();
}

std::unique_ptr<WalkAhead> WalkAhead::Begin(const std::string& fileName, const TreeWalk& walk,
                                            const intake::ReadingRules& rules) {
  if (platform::WorkThreads() < 2 || !rules.indexedText || !rules.anyDate) return nullptr;
  try {
    return std::unique_ptr<WalkAhead>(
        new WalkAhead(std::make_shared<Reader>(fileName, walk, rules)));
  } catch (const std::exception&) {
    return nullptr;  // all is read in its turn
  }
}

std::optional<WalkAhead::Coming> WalkAhead::Reader::Next() noexcept {
  try {
    std::optional<uint32_t> value;
    do {
      value = walk.Next();
    } while (value == 0U);
    if (!value) return std::nullopt;
    return Coming{*value, ReadAhead(file, *value, rules)};
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::optional<AheadMessage> WalkAhead::Take(uint32_t infoOffset) {
  if (isAstray_) return std::nullopt;
  std::optional<Coming> coming = ahead_.Take();
  // Where the file was changed meanwhile, the two walks may have parted.
  isAstray_ = !coming || coming->infoOffset != infoOffset;
  if (isAstray_) return std::nullopt;
  if (coming->message) ++Taken();
  return std::move(coming->message);
}

}  // namespace tarnwick::oe
