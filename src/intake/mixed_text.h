// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A text in the making: stretches that are text already (UTF-8, from an encoded word or a declared
// charset) beside stretches of bytes whose charset is not known yet. Each byte is converted exactly
// once, when its charset is known or at the end.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::intake {

class MixedText {
 public:
  void AppendBytes(std::string_view bytes) { data_ += bytes; }
  void AppendText(std::string_view utf8);
  void Append(const MixedText& other);

  bool Empty() const { return data_.empty(); }

  // Claims the bytes for a charset. An empty or unknown name leaves them for later; false then.
  bool Convert(std::string_view charset);

  // The finished text: what is still bytes is read in the charset if it is known, else in the
  // system code page.
  std::string Finish(std::string_view charset) const;

 private:
  struct Stretch {
    size_t begin;
    size_t end;
  };
  template <typename ToText>
  std::string Rebuild(ToText toText) const;

  std::string data_;
  std::vector<Stretch> texts_;  // in order, apart from each other; what lies between is bytes
};

}  // namespace tarnwick::intake
