// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The headers that a letter came with, as an item keeps them: a text that may begin with a line of
// Outlook's own, may go on into the body's part headers, and may end its lines in any way.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::outlook {

struct HeaderField {
  std::string lowerName;  // without the colon
  std::string text;       // whole, folded as it was, with CR LF at the end of each line
  // What stands after the colon, unfolded and trimmed.
  std::string Value() const;
};

// The fields up to the first empty line; lines that belong to no field are left out.
std::vector<HeaderField> ReadTransportHeaders(std::string_view headers);

}  // namespace tarnwick::outlook
