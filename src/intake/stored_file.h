// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a key has been stored for, told by the stored file. A key by which nothing is stored is
// answered with no. Failures throw Error.
#pragma once

#include <cstdint>
#include <string>

#include "intake/mail_message.h"
#include "intake/raw_message.h"

namespace tarnwick::intake {

// The length of the file of the message with this key, in bytes; -1 for none.
int64_t StoredFileLength(const std::string& key);

// Whether a message with this key was stored from just these bytes.
bool IsStoredFile(const std::string& key, const RawMessage& raw);

// The same under whatever key: looked for among the messages that were received at the same second.
bool IsStoredFile(DateTime received, const RawMessage& raw);
// Whether a message of the same second, sender and subject is stored, whatever else it holds.
bool IsLetterStored(const MailMessage& message);

}  // namespace tarnwick::intake
