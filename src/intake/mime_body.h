// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What follows a message's headers: one body, or the parts of a multipart message.
//
// A multipart message is walked as a flat run of lines: a line that holds any boundary declared so
// far, or begins with "content-type", ends the part before it and begins the next. So the parts of
// nested containers and of attached messages are found without a tree, to any depth and in damaged
// messages. Text parts are joined to one body, HTML parts to another, attachments give their names,
// anything else is passed over. Memory and time are proportional to the message.
#pragma once

#include <string_view>

#include "intake/content_type.h"
#include "intake/line_cursor.h"
#include "intake/message_draft.h"

namespace tarnwick::intake {

// True when a boundary of the draft stands anywhere in the line.
bool HoldsBoundary(std::string_view line, const MessageDraft& draft);

// Reads all parts to the end of the file. The current line is the one that ended the headers.
void TakeMultipartBody(LineCursor& cursor, MessageDraft& draft);

// Reads a body that is not multipart to the end of the file: into the HTML when it is declared as
// such, else into the plain text. Files that stand in the text uuencoded are written out and leave
// it. header: what the message's own headers declare. The current line is the first of the body.
void obxTakeBodyWithoutContent(LineCursor& cursor, const PartDescription& header,
                               MessageDraft& draft);

}  // namespace tarnwick::intake
