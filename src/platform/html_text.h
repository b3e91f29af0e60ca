// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The text of an HTML document, put together from its elements and characters as they come.
// Internal to html.cpp; knows nothing of the parser.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::platform {

class HtmlText {
 public:
  // What an element's attributes say about its text.
  struct Look {
    bool hidden = false;
    bool keepsBlanks = false;
  };

  // name: lower case. Every Open has its Close, innermost first; those still open when the document
  // ends need none.
  void Open(std::string_view name, Look look);
  void Close();
  // UTF-8, entities undone.
  void Characters(std::string_view text);
  // A no-break space: a blank that is never run together with others.
  void HardBlank();

  // Whether a BODY has been opened.
  bool HasBody() const { return hasBody_; }
  // The text so far, without blank lines at its ends; the collected text is given away.
  std::string Take();

 private:
  enum class Shape : uint8_t { kInline, kBlock, kParagraph, kRow, kCell };
  struct Element {
    Shape shape = Shape::kInline;
    bool skips = false;
    bool keepsBlanks = false;
    bool hasCell = false;  // a row that has begun a cell
    bool isHead = false;   // a HEAD that has not ended
  };

  static Shape ShapeOf(std::string_view name);
  static bool IsSkipped(std::string_view name);

  void EndHeadBefore(std::string_view name);
  void AskForBreak(int lines);
  void BreakLine();
  void TrimLine();
  void BeginText();
  void PutPlain(std::string_view text);

  std::string text_;
  std::vector<Element> open_;
  size_t skipping_ = 0;  // open elements whose text is left out
  size_t keeping_ = 0;   // open elements that keep their blanks
  int breaks_ = 0;       // line ends owed before the next text
  bool blank_ = false;   // a blank owed before the next text
  bool cell_ = false;    // a tab owed before the next text of this line
  bool hasBody_ = false;
  size_t lineStart_ = 0;
};

}  // namespace tarnwick::platform
