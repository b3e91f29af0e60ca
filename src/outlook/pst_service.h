// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The reader's end of the conversation about a store of Outlook's (pst_record.h): it makes what the
// store holds into records and messages.
#pragma once

#include <functional>
#include <memory>

#include "intake/letter_service.h"
#include "outlook/reader/store_file.h"

namespace tarnwick::outlook {

// open: opens the file that was handed over; what it throws is the answer to each request. tell:
// each step, below 0.
std::unique_ptr<intake::LetterService> MakePstService(
    const std::function<std::unique_ptr<reader::StoreFile>(platform::InputFile&)>& open,
    const intake::ProgressTeller& tell);

}  // namespace tarnwick::outlook
