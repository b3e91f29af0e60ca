// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The headers that say what a body or part is: Content-Type, Content-Disposition and
// Content-Transfer-Encoding (RFC 2045, 2183), with the parameter values of RFC 2231. Types are told
// by words that occur in them, so that "text / HTML" and a bare "plain" are understood; parameters
// may lack their semicolons, quotation marks their closing one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "intake/mixed_text.h"

namespace tarnwick::intake {

enum class PartKind : int16_t {
  kUndeclared = 0,  // no Content-Type: text
  kText = 1,
  kAttachment = 2,
  kHtml = 3,
  kOther = 4,  // skipped
  kContainer = 5,
};

struct PartDescription {
  PartKind type = PartKind::kUndeclared;  // by the Content-Type alone
  bool isUnknownText = false;             // kOther, but of type text
  bool isMessage = false;                 // a whole message, with headers of its own
  std::string charset;
  std::string encoding;
  std::string boundary;
  MixedText fileName;
  std::string mediaType;    // "image/jpeg", lower case; "" when none is declared
  bool isAttached = false;  // its disposition is "attachment"
  MixedText anyName;        // fileName, or the name that a part has which is not taken for a file
  std::string firstLine;    // text that was read in search of headers

  // A picture, a sound or a film: no text, however it is encoded.
  bool IsMedia() const;

  // With the disposition considered: a part with a file name that is no container is an attachment.
  PartKind Kind() const;

  bool isDisposed = false;  // a disposition "attachment" or "inline" gave the file name
};

// True for a line that begins one of the three.
bool IsContentHeader(std::string_view line);

// Takes in one header line, unfolded, if it is one of the three; false for any other line.
bool ReadContentHeader(std::string_view line, PartDescription& part);

// Takes in "Content-Type text/html", which lacks its colon; false for any other line.
bool ReadTypeWithoutColon(std::string_view line, PartDescription& part);

// "content-type" stands at the line's beginning, behind blanks at most; in any case.
bool BeginsWithContentType(std::string_view line);

}  // namespace tarnwick::intake
