// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A message file read by tarnwick-reader (intake/reader_link.h): what the program's end gives is
// what StoreReading would, and the reader's end is StoreReading itself.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "intake/letter_service.h"
#include "intake/reader_link.h"
#include "intake/reading_rules.h"
#include "oe/store_walk.h"

namespace tarnwick::oe {

// The walk from the root; asksForSenders: who sent each message is to be said with its text.
// nullptr where the program reads itself. Throws Error for a file that can't be opened.
std::unique_ptr<StoreWalk> OpenStoreLink(const std::string& fileName, uint32_t root,
                                         const intake::ReadingRules& rules, bool asksForSenders);

// The text that a request is for, as StoreWalk::ReadText gives it; mostBytes: no text is longer.
TextReading AskForText(intake::ReaderLink& link, std::string_view request, uint64_t mostBytes,
                       const StoreWalk::ByteSink& longText);
// The answer to it: what was read of the text, all of it held, and what is made of it.
std::string AnswerWithText(TextReading& text, const intake::ReadingRules& rules,
                           const intake::StoreFacts& facts,
                           const intake::LetterService::ByteSink& longText);

// The reader's end; opening: what OpenStoreLink told it.
std::unique_ptr<intake::LetterService> MakeStoreService(const intake::ReadingRules& rules,
                                                        std::string_view opening);

}  // namespace tarnwick::oe
