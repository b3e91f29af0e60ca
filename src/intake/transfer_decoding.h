// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Transfer encodings: base64 (RFC 2045), quoted-printable (RFC 2045; as used in encoded words RFC
// 2047), and uuencode (POSIX). Bytes in, bytes out; nothing throws, and what is malformed is kept.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::intake {

// One text by its encoding letter: 'B' base64, 'Q' quoted-printable as in encoded words ("_" is a
// blank); any other letter leaves it as it is.
std::string DecodeTransfer(std::string_view text, char letter);

// Base64 of one text: every "=" and one CR LF at the end fall away, characters outside the alphabet
// are passed over. The 1, 2 or 3 characters left over at the end yield 1, 1 and 2 bytes.
std::string DecodeBase64(std::string_view text);

// Quoted-printable; "=" at the end of a line joins it with the next. isHeader: "_" is a blank.
std::string DecodeQuotedPrintable(std::string_view text, bool isHeader);

// The lines of a body part, one after another. Base64 lines that do not end at a group of four are
// joined with the next ones, so that no byte is lost or made up.
class LineDecoder {
 public:
  // The value of Content-Transfer-Encoding; unknown ones, 7bit, 8bit and binary change nothing.
  explicit LineDecoder(std::string_view encoding);

  bool IsEncoded() const { return kind_ != Kind::kPlain; }
  // Appends the decoded line, its line break included where the encoding keeps it.
  void Decode(std::string_view line, std::string& bytes);
  // What a part that ends in the middle of a group still holds.
  void Finish(std::string& bytes);

 private:
  enum class Kind { kPlain, kBase64, kQuotedPrintable };
  Kind kind_ = Kind::kPlain;
  std::string rest_;
};

// True when the line could be a line of uuencoded data.
bool IsUuencodedLine(std::string_view line);
// Appends the line's bytes. REQUIRES: IsUuencodedLine.
void DecodeUuencodedLine(std::string_view line, std::string& bytes);

}  // namespace tarnwick::intake
