// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Uuencoded files in the text of a message: a line with "begin", a mode and a name, encoded lines,
// "end".
#pragma once

#include <functional>
#include <string_view>

#include "intake/line_cursor.h"
#include "intake/message_draft.h"

namespace tarnwick::intake {

// If the current line holds "begin" (in any case) and encoded lines up to an "end" line follow it,
// writes the file out as an attachment, passes all its lines and gives true. Otherwise nothing is
// an inline file: false, the current line as it was, or, where lines were read ahead in vain, true
// with those lines given to ordinary, in order, and passed. So no text is read twice, however many
// lines say "begin". REQUIRES: a current line.
bool TakeInlineFile(LineCursor& cursor, MessageDraft& draft,
                    const std::function<void(std::string_view)>& ordinary);

}  // namespace tarnwick::intake
