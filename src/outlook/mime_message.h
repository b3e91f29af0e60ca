// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A mail item as an Internet message, complete with its attachments' bytes and the messages
// embedded in it, so that any mail program opens it: the headers it came with where it has them,
// its bodies as text/plain and text/html in UTF-8, attachments as they are. Signed and encrypted
// mail keeps the very bytes that were signed or encrypted.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "outlook/letter.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

struct MimeResult {
  int64_t attachmentsLost = 0;  // a note stands in their places
};

// Hands the message's bytes to sink, in order. budget: at most how many, reduced by what was
// written; beyond it Error 75 is thrown. An attachment that can't be read is replaced by a note and
// logged; what sink throws goes through.
MimeResult WriteMime(PropertyItem& item, const Letter& letter, uint64_t& budget,
                     const std::function<void(std::string_view)>& sink);

// Whether the letter's bodies lie inside its one attachment: signed or encrypted mail as a whole.
bool IsSecured(const Letter& letter, PropertyItem& item);

}  // namespace tarnwick::outlook
