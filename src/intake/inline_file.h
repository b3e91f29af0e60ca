// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Uuencoded files in the text of a message: a line with "begin", a mode and a name, encoded lines,
// "end".
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "intake/line_cursor.h"
#include "intake/message_draft.h"

namespace tarnwick::intake {

// One such file while its lines come in.
class InlineFile {
 public:
  // True when "begin", in any case, stands in the line: a file may follow.
  static bool MayBegin(std::string_view line);
  // REQUIRES: MayBegin(line).
  explicit InlineFile(std::string_view beginLine);

  enum class Step { kTaken, kEnded, kRefused };
  // The next line: one of the file, the one that ends it, or none, so that there is no file.
  Step Line(std::string_view line);

  const std::string& Name() const { return name_; }  // as it stands there; may be ""
  const std::string& Bytes() const { return bytes_; }

 private:
  std::string name_;
  std::string bytes_;
  bool hasEncoded_ = false;
};

// If the current line holds "begin" (in any case) and encoded lines up to an "end" line follow it,
// writes the file out as an attachment, passes all its lines and gives true. Otherwise nothing is
// an inline file: false, the current line as it was, or, where lines were read ahead in vain, true
// with those lines given to ordinary, in order, and passed. So no text is read twice, however many
// lines say "begin". REQUIRES: a current line.
bool TakeInlineFile(LineCursor& cursor, MessageDraft& draft,
                    const std::function<void(std::string_view)>& ordinary);

}  // namespace tarnwick::intake
