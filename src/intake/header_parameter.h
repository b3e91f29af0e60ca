// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Parameters of structured headers (RFC 2045) with their continuations and charsets (RFC 2231):
//
//   value ";" name "=" (token | quoted) ";" name*0*=charset'language'%XX... ";" ...
//
// Accepted on purpose: blanks around "=", a missing end quotation mark, encoded words in the value.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::intake {

class HeaderParameters {
 public:
  // text: an unfolded header's value, raw bytes.
  explicit HeaderParameters(std::string_view text);

  // What stands before the first ";", lower case, trimmed.
  const std::string& MainValue() const { return mainValue_; }

  // The parameter's bytes without their quotation marks; "" when it is missing.
  std::string Raw(std::string_view name) const;

  // The parameter as text: continuations joined, charsets and encoded words undone. Bytes that
  // declare no charset are read in the charset given, else in the system code page.
  std::string Text(std::string_view name, std::string_view charset) const;

 private:
  struct Parameter {
    std::string name;  // lower case, as written: "filename", "filename*0*"
    std::string value;
  };
  const Parameter* Find(const std::string& name) const;

  std::string mainValue_;
  std::vector<Parameter> parameters_;
};

}  // namespace tarnwick::intake
