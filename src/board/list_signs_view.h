// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The small signs of the message list, drawn in the colours of the palette: not every font has
// them.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

#include "intake/message_state.h"

namespace tarnwick::board {

// A red that stands out on the palette's background, be it light or dark.
QColor MarkColor();

QPixmap Paperclip();

// An arrow back for a message that was replied to, one on for a forwarded one, and a flag; a null
// pixmap where there is nothing to show.
QPixmap StateSigns(const intake::MessageState& state);
// What they and the bold letters say, in words; "" for a message that was read and no more.
QString StateText(const intake::MessageState& state);

}  // namespace tarnwick::board
