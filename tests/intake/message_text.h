// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Raw messages as tests write them.
#pragma once

#include <initializer_list>
#include <string>

namespace tarnwick::testing {

// The lines, each ended by CR LF.
inline std::string Lines(std::initializer_list<std::string> lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

}  // namespace tarnwick::testing
