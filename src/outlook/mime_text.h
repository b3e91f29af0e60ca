// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The people and bodies of an item in the forms that Internet messages carry them in (RFC 2045,
// 5322). Texts are UTF-8. Nothing here throws.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::outlook {

// "Name <address>", the name quoted or encoded as it needs; a name equal to the address, or a
// missing one, is left out, and without an Internet address the name stands alone.
std::string HeaderAddress(const std::string& name, const std::string& address);

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
