// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What is read of a folder list, without looking at the files that it names. The program reads so
// through tarnwick-reader, which is handed the list, or by itself where there is none.
#pragma once

#include <memory>
#include <vector>

#include "core/tellings.h"
#include "intake/letter_service.h"
#include "intake/reading_rules.h"
#include "oe/discovery.h"

namespace tarnwick::oe {

struct FolderListReading {
  std::vector<FolderRow> rows;  // without whose they are, and without full names
  bool isDamaged = false;
  std::vector<core::Telling> tellings;
};

// The reader's end.
std::unique_ptr<intake::LetterService> MakeFolderListService(const intake::ReadingRules& rules);

}  // namespace tarnwick::oe
