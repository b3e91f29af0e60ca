// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <conio.h>

#include <cstdio>

#include "platform/hidden_terminal.h"

namespace tarnwick::platform {

struct HiddenTerminal::State {};

HiddenTerminal::HiddenTerminal() = default;
HiddenTerminal::~HiddenTerminal() = default;

bool HiddenTerminal::IsThere() const {
  return true;
}

void HiddenTerminal::Show(const std::string& text) {
  std::fputs(text.c_str(), stderr);
}

int HiddenTerminal::Next() {
  return _getch();
}

}  // namespace tarnwick::platform
