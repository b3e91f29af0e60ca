// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What an Outlook store tells of itself: opened by the reader process and looked at, not read.
#pragma once

#include <string>
#include <vector>

#include "look/look.h"

namespace tarnwick::look {

// Fills in all but the user; gives the keys of a first and a last message, as they are stored.
std::vector<std::string> LookIntoStore(const std::string& path, FoundMail& mail);

}  // namespace tarnwick::look
