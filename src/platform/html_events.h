// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// An HTML document as its elements and characters come, whatever is wrong with it. Nothing is
// rendered, run or fetched; time and memory grow with the document's size, whatever it nests.
#pragma once

#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick::platform {

class HtmlEvents {
 public:
  // Names in lower case, values with their entities undone.
  using Attributes = std::vector<std::pair<std::string_view, std::string_view>>;

  virtual ~HtmlEvents() = default;
  virtual void Open(std::string_view name, const Attributes& attributes) = 0;
  // The innermost open element ends. Those still open when the document ends bring none, nor do the
  // outer ones of very many.
  virtual void Close() = 0;
  // UTF-8, entities undone. Scripts and style sheets bring none.
  virtual void Characters(std::string_view text) = 0;
  // True when nothing that follows is of interest any more; the reading ends at the next element.
  virtual bool IsDone() const { return false; }
};

// REQUIRES: html is valid UTF-8; a charset that the document declares is ignored.
void ReadHtml(std::string_view html, HtmlEvents& events);

}  // namespace tarnwick::platform
