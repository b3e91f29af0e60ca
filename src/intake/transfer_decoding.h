// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Content transfer encodings (RFC 2045) and the encodings of encoded words (RFC 2047). Bytes in,
// bytes out: a charset is applied afterwards.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::intake {

// One text: "=" anywhere falls away, CR LF at the end too, and each four characters give three
// bytes. One or two left over give one byte, three give two. Characters outside the alphabet count
// as the value 0, so that what stands behind them keeps its place.
std::string DecodeBase64(std::string_view text);

// One text of an encoded word: "_" is a blank, "=XX" a byte; a malformed escape stays as it is.
std::string DecodeQ(std::string_view text);

// By the letter of an encoded word, B or Q in either case; any other leaves the text as it is.
std::string DecodeByLetter(std::string_view text, char letter);

// What a declared transfer encoding ("base64", "Quoted-Printable", "7bit", ...) asks for.
enum class TransferKind { kPlain, kBase64, kQuotedPrintable };
TransferKind TransferKindOf(std::string_view encoding);

// True for a line of base64 without a strange character in it; blank ends do not count.
bool IsBase64(std::string_view line);

// A body, line by line.
class BodyDecoder {
 public:
  // encoding: as declared ("base64", "Quoted-Printable", "7bit", ...); what is neither of the first
  // two leaves the lines as they are.
  explicit BodyDecoder(std::string_view encoding);

  // line: without its end. Lines that are not encoded or quoted-printable end with CR LF in the
  // result, except before a soft line break; base64 brings its own line ends. Characters of a
  // base64 line that do not fill four wait for the next line. A line among base64 that can't be
  // base64 (a footer that a mailing list has added) is kept as it stands.
  void Line(std::string_view line);
  bool Empty() const { return bytes_.empty(); }
  bool IsPlain() const { return kind_ == TransferKind::kPlain; }
  // What was decoded, to its end.
  std::string Take();

 private:
  void Base64Line(std::string_view line);
  void QuotedLine(std::string_view line);
  void FlushBase64();

  TransferKind kind_;
  std::string bytes_;
  std::string carry_;  // up to three characters of base64
};

// A file that was sent with a message, all of it in encoded; its bytes as they were. In base64
// characters outside the alphabet are passed over, and so are lines that can't be base64 and what
// stands behind the padding, unless that is whole base64 again. The line ends of a quoted-printable
// file stay as they are; one that is not encoded is given as it stands.
std::string DecodeFile(std::string_view encoded, std::string_view encoding);

}  // namespace tarnwick::intake
