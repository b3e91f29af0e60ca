// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/raise_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <optional>

#include "platform/files.h"

namespace tarnwick::platform {

namespace {

// nullopt for a folder whose name is too long for a socket's.
std::optional<sockaddr_un> AddressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return std::nullopt;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

std::string SocketIn(const std::string& folder) {
  return WithSeparator(folder) + "Window.socket";
}

const sockaddr* Generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

}  // namespace

RaiseSocket::RaiseSocket(const std::string& folder) : path_(SocketIn(folder)) {
  auto address = AddressOf(path_);
  struct stat there {};
  bool isThere = lstat(path_.c_str(), &there) == 0;
  if (!address || (isThere && !S_ISSOCK(there.st_mode))) return;
  if (isThere) unlink(path_.c_str());
  constexpr int kMostWaiting = 4;
  int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (made < 0) return;
  if (bind(made, Generic(*address), sizeof *address) != 0 || chmod(path_.c_str(), 0600) != 0 ||
      listen(made, kMostWaiting) != 0) {
    close(made);
    return;
  }
  handle_ = made;
}

RaiseSocket::~RaiseSocket() {
  if (handle_ < 0) return;
  close(static_cast<int>(handle_));
  unlink(path_.c_str());
}

bool RaiseSocket::TakeCalls() const {
  bool wasCalled = false;
  int listening = static_cast<int>(handle_);
  for (int caller = 0; (caller = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    wasCalled = true;
    close(caller);
  }
  return wasCalled;
}

bool AskToRaise(const std::string& folder) {
  auto address = AddressOf(SocketIn(folder));
  if (!address) return false;
  int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (made < 0) return false;
  bool isHeard = connect(made, Generic(*address), sizeof *address) == 0;
  close(made);
  return isHeard;
}

}  // namespace tarnwick::platform
