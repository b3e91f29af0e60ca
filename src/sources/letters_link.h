// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A mailbox read by tarnwick-reader (intake/reader_link.h). A mailbox that is a file is handed over
// as it is, and the reader finds its letters. Of one that is a folder the program opens each
// letter's file and sends its bytes: the reader can open nothing, and to hand it hundreds of files
// would take more than their bytes do.
#pragma once

#include <memory>
#include <string_view>

#include "intake/letter_service.h"
#include "intake/reading_rules.h"
#include "sources/letter_walk.h"
#include "sources/mailbox.h"

namespace tarnwick::sources {

// nullptr where the program reads itself. Throws Error for a mailbox that can't be opened.
std::unique_ptr<LetterWalk> OpenLettersLink(const Mailbox& mailbox,
                                            const intake::ReadingRules& rules);

// The reader's ends; opening: what OpenLettersLink told it. Throws Error 75.
std::unique_ptr<intake::LetterService> MakeMailboxService(const intake::ReadingRules& rules,
                                                          std::string_view opening);
std::unique_ptr<intake::LetterService> MakeLetterFileService(const intake::ReadingRules& rules,
                                                             std::string_view opening);

}  // namespace tarnwick::sources
