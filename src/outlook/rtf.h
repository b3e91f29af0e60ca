// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The rich-text body of an Outlook message: packed ([MS-OXRTFCP]), and often no rich text at all
// but HTML or plain text dressed up as such ([MS-OXRTFEX]), which is taken out again. Nothing here
// throws; time and memory are proportional to the input.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::outlook {

// nullopt when the bytes are not in that format. A body cut short gives what there is of it.
std::optional<std::string> UnpackRtf(std::string_view packed);

struct RtfContent {
  enum class Kind {
    kHtml,      // the HTML that was dressed up
    kText,      // the plain text that was
    kRichText,  // real rich text: its text without the formatting
  };
  Kind kind = Kind::kRichText;
  std::string text;  // UTF-8, lines end with CR LF
};
RtfContent ReadRtf(std::string_view rtf);

}  // namespace tarnwick::outlook
