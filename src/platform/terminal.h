// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A password typed at the terminal that the program was started from.
#pragma once

#include <optional>
#include <string>

#include "platform/secret.h"

namespace tarnwick::platform {

// Shows the prompt and reads a line that is not shown. nullopt: there is no terminal, or the person
// gave up (Ctrl+C, Ctrl+D). At most a thousand bytes.
std::optional<Secret> ReadHidden(const std::string& prompt);

// The first line of a file, of a pipe as well, without its end; at most as long. Throws Error.
Secret ReadSecretLine(const std::string& path);

}  // namespace tarnwick::platform
