// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "platform/hidden_terminal.h"

namespace tarnwick::platform {

struct HiddenTerminal::State {
  int handle = -1;
  termios former = {};
  bool isHidden = false;
};

HiddenTerminal::HiddenTerminal() : state_(std::make_unique<State>()) {
  state_->handle = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
  if (state_->handle < 0 || ::tcgetattr(state_->handle, &state_->former) != 0) return;
  termios hidden = state_->former;
  hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | ISIG);
  state_->isHidden = ::tcsetattr(state_->handle, TCSAFLUSH, &hidden) == 0;
}

HiddenTerminal::~HiddenTerminal() {
  if (state_->isHidden) ::tcsetattr(state_->handle, TCSAFLUSH, &state_->former);
  if (state_->handle >= 0) ::close(state_->handle);
}

bool HiddenTerminal::IsThere() const {
  return state_->isHidden;
}

void HiddenTerminal::Show(const std::string& text) {
  [[maybe_unused]] ssize_t written = ::write(state_->handle, text.data(), text.size());
}

int HiddenTerminal::Next() {
  unsigned char byte = 0;
  return ::read(state_->handle, &byte, 1) == 1 ? byte : kEnd;
}

}  // namespace tarnwick::platform
