// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/secret.h"

namespace tarnwick::platform {

// Windows writes none unless its owner asks for them, and there are no such passwords there yet.
NoMemoryImage::NoMemoryImage() = default;
NoMemoryImage::~NoMemoryImage() = default;

}  // namespace tarnwick::platform
