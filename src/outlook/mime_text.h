// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Texts and bytes in the forms that Internet messages carry them in (RFC 2045, 2047, 2231, 5322).
// Input is UTF-8 where it is text. Nothing here throws.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::outlook {

// Fit to stand in a header behind its name, whatever the text holds: control characters become
// blanks, what is not plain ASCII becomes encoded words, folded.
std::string HeaderText(std::string_view text);
// "Name <address>", the name quoted or encoded as it needs; a name equal to the address, or a
// missing one, is left out, and without an Internet address the name stands alone.
std::string HeaderAddress(const std::string& name, const std::string& address);
// ; name="value", or its encoded form.
std::string HeaderParameter(std::string_view name, std::string_view value);
// "Tue, 5 Mar 2002 13:07:00 +0000".
std::string HeaderDate(int64_t unixSeconds);

// Base64 in lines of 76 characters, piece by piece.
class Base64Lines {
 public:
  std::string Add(std::string_view bytes);
  std::string End();

 private:
  void Encode(std::string_view bytes, std::string& text);
  std::string rest_;  // fewer bytes than fill a line
};

// A body's text in the transfer encoding that suits it. The result never holds "=_".
struct EncodedBody {
  std::string encoding;  // "7bit", "quoted-printable" or "base64"
  std::string text;      // ends with CR LF
};
EncodedBody EncodeBody(std::string_view utf8);

}  // namespace tarnwick::outlook
