// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The small signs of the message list, drawn in the colours of the palette: not every font has
// them.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>
#include <cstdint>

#include "intake/message_state.h"

namespace tarnwick::board {

// A red that stands out on the palette's background, be it light or dark.
QColor MarkColor();

QPixmap Paperclip();

// How a subject is set off in a list that is grouped by conversations; with a triangle for one that
// can be opened or is open.
enum class Indent : uint8_t { kNone, kOne, kTwo, kClosed, kOpen };

// What stands before a subject: what the list's groups want, with a count of letters, if any; an
// arrow back for a message that was replied to, one on for a forwarded one, and a flag. A null
// pixmap where there is nothing to show.
QPixmap SubjectSign(const intake::MessageState& state, Indent indent = Indent::kNone,
                    const QString& count = {});
// So wide is the triangle, from the left.
inline constexpr int kSignWidth = 12;

// What the state's signs and the bold letters say, in words; "" for a message that was read and no
// more.
QString StateText(const intake::MessageState& state);

}  // namespace tarnwick::board
