// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// No window listens here yet: a second start is told that the repository is in use.
#include "platform/raise_socket.h"

namespace tarnwick::platform {

RaiseSocket::RaiseSocket(const std::string&) {}

RaiseSocket::~RaiseSocket() = default;

bool RaiseSocket::TakeCalls() const {
  return false;
}

bool AskToRaise(const std::string&) {
  return false;
}

}  // namespace tarnwick::platform
