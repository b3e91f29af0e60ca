// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The body of a message behind its header block: one plain body, or parts between boundary lines
// (RFC 2045, 2046, 2183, 2231). Deviations that real mail asks for, on purpose:
//   - a line that begins with "content-type" starts a part even without a boundary line before it;
//   - a line is a boundary line when it holds a boundary anywhere;
//   - nested parts are read as they come, all boundaries open at once;
//   - an HTML part goes on over a boundary line that holds "</html>".
#pragma once

#include <string>
#include <string_view>

#include "intake/parse_state.h"

namespace tarnwick::intake {

// Adds one header ("Content-Type: ...", unfolded) to what is known of a part; a header that says
// nothing about the body is passed over. A declared boundary is kept in the record.
void ApplyContentHeader(std::string_view header, PartDescription& part, MailMessage& record);

// Reads the Content-* header in the current line with the folded lines behind it and applies it;
// the first unread line becomes current.
void ReadContentHeader(ParseState& state, PartDescription& part);

// True when the line holds one of the record's boundaries, exactly.
bool HoldsBoundary(std::string_view line, const MailMessage& record);

// Both read from the current line to the end of the file and fill body, htmlBody and the record's
// attachments.
void ReadMultipartBody(ParseState& state);
void obxTakeBodyWithoutContent(ParseState& state);

}  // namespace tarnwick::intake
