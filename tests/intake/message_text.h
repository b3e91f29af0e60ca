// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Raw messages as tests write them.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::testing {

// Lines with "|" between them, each ended by CR LF.
inline std::string Lines(std::string_view text) {
  std::string lines;
  for (char c : text) lines += c == '|' ? "\r\n" : std::string(1, c);
  return lines + "\r\n";
}

}  // namespace tarnwick::testing
