// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A message file, line by line, with a current line that is looked at until it is passed, and room
// to give lines back that were read too far.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "intake/raw_message.h"
#include "platform/files.h"

namespace tarnwick::intake {

class LineCursor {
 public:
  // Throws Error for a file that can't be read. The first line is current. The message outlives the
  // cursor.
  explicit LineCursor(const RawMessage& message) : reader_(LinesOf(message)) { Next(); }

  // False behind the last line.
  bool HasLine() const { return hasLine_; }
  // The current line, without its end; may be changed.
  std::string& Line() { return line_; }

  void Next() {
    if (!given_.empty()) {
      line_ = std::move(given_.front());
      given_.pop_front();
      return;
    }
    hasLine_ = reader_.Next(line_);
  }

  // Puts lines before the current one; the first of them becomes current.
  void GiveBack(std::vector<std::string> lines) {
    if (lines.empty()) return;
    if (hasLine_) given_.push_front(std::move(line_));
    for (size_t i = lines.size(); i-- > 1;) given_.push_front(std::move(lines[i]));
    line_ = std::move(lines[0]);
    hasLine_ = true;
  }

 private:
  platform::LineReader reader_;
  std::string line_;
  bool hasLine_ = false;
  std::deque<std::string> given_;
};

// True for a line that continues the header before it.
inline bool IsFolded(std::string_view line) {
  return !line.empty() && (line[0] == ' ' || line[0] == '\t');
}
// True for what may stand in a header block: a name and a colon, or more of the line before.
bool LooksLikeHeader(std::string_view line);

// The current line with the lines that continue it, each behind one blank; the line behind them
// becomes current.
std::string TakeFolded(LineCursor& cursor);

}  // namespace tarnwick::intake
