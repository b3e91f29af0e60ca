// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What each driver begins with: texts of its kind, letters and registries from the builders of the
// tests, and patches to the sound files that some drivers make for themselves.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tarnwick::fuzz {

// By the driver's name without its ending.
std::map<std::string, std::vector<std::string>> Seeds();

}  // namespace tarnwick::fuzz
