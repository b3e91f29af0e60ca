// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// HTML to text, for mail that has no plain part. The document is parsed and never rendered: no
// script runs and nothing is fetched.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::platform {

// The rendered text of the document's BODY, as a browser's innerText gives it: blocks and line
// breaks make lines (CR LF), runs of blanks are one, PRE keeps its own, list items and table cells
// are set apart, SCRIPT, STYLE and hidden content are left out, entities are undone. Empty when
// html is blank or holds no BODY element. A head that is not closed ends where its first element of
// the body begins. Time and memory grow with the input's size, whatever it nests.
//
// REQUIRES: html is valid UTF-8; a charset that the document declares is ignored.
std::string HtmlToPlainText(std::string_view html);

// The same for a document of any shape, as a browser shows it: one without a BODY is all body but
// for its head. For letters, which are often fragments, and whose words may not get lost.
std::string ShownText(std::string_view html);

}  // namespace tarnwick::platform
