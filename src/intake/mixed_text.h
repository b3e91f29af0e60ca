// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A text some of whose bytes have no charset yet. Header fields and bodies are read before it is
// known in which charset the message's plain bytes are, and beside them stands what encoded words
// and declared parts gave, whose charset is known. The spans are kept apart and each is converted
// exactly once, when the text is finished.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::intake {

class MixedText {
 public:
  // Bytes that nobody has claimed yet.
  void AppendRaw(std::string_view bytes);
  // Bytes of a charset; where it can't read them (unknown, or us-ascii that has eight bits) as
  // AppendRaw. Neighbours of one charset are converted together, so that a character may be cut in
  // two between them.
  void AppendIn(std::string_view bytes, std::string_view charset);
  void Append(const MixedText& other);

  bool Empty() const { return bytes_.empty(); }
  bool EndsLine() const { return !bytes_.empty() && bytes_.back() == '\n'; }

  // The whole as UTF-8: unclaimed bytes are read in the charset when that is known, else as UTF-8
  // when they are that, else in the system code page. No byte is dropped.
  std::string Finish(std::string_view charset) const;

 private:
  struct Span {
    size_t end;           // in bytes_
    std::string charset;  // "" for unclaimed bytes
  };

  void Extend(std::string_view bytes, std::string_view charset);

  std::string bytes_;
  std::vector<Span> spans_;
};

// True for a charset that says more of a byte than that it may be ASCII.
bool ClaimsBytes(std::string_view charset);

}  // namespace tarnwick::intake
