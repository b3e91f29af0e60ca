// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The terminal, byte by byte, with nothing shown of what is typed, while one of these lives.
// Private to the platform room.
#pragma once

#include <memory>
#include <string>

namespace tarnwick::platform {

class HiddenTerminal {
 public:
  static constexpr int kEnd = -1;

  HiddenTerminal();
  ~HiddenTerminal();
  HiddenTerminal(const HiddenTerminal&) = delete;
  HiddenTerminal& operator=(const HiddenTerminal&) = delete;

  bool IsThere() const;  // nothing else is to be called where it is not
  void Show(const std::string& text);
  int Next();  // kEnd behind the last

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tarnwick::platform
