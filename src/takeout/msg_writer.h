// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A stored message as the file that Outlook keeps one in, *.msg ([MS-OXMSG]; property numbers by
// [MS-OXPROPS]).
#pragma once

#include <string>
#include <string_view>

#include "takeout/stored_message.h"

namespace tarnwick::takeout {

// file: the message's stored file, of which the headers and the attachments come; texts, people and
// dates are those of the repository. Attached messages are attached as .eml files. Throws Error 75
// for a message beyond 2 GB.
std::string MsgFileBytes(const StoredMessage& message, std::string_view file);

}  // namespace tarnwick::takeout
