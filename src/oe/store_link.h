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
#include "intake/reading_rules.h"
#include "oe/store_walk.h"

namespace tarnwick::oe {

// The walk from the root; nullptr where the program reads itself. Throws Error for a file that
// can't be opened.
std::unique_ptr<StoreWalk> OpenStoreLink(const std::string& fileName, uint32_t root,
                                         const intake::ReadingRules& rules);

// The reader's end; opening: what OpenStoreLink told it.
std::unique_ptr<intake::LetterService> MakeStoreService(const intake::ReadingRules& rules,
                                                        std::string_view opening);

}  // namespace tarnwick::oe
