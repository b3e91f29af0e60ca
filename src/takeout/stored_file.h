// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The files of the open repository's messages. Failures throw Error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarnwick::takeout {

// The message's file, byte for byte; nullopt when none is stored.
std::optional<std::string> ReadStoredFile(int64_t id);

}  // namespace tarnwick::takeout
