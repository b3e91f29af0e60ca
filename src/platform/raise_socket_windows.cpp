// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/raise_socket.h"

#include <windows.h>

#include "platform/owner_only_windows.h"
#include "platform/system_files.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

namespace {

// Of the folder itself, whatever way leads to it; "" where it isn't there. Names are those of one
// log-on, so that another user's window is not meant.
std::wstring EventOf(const std::string& folder) {
  auto identity = system::IdentityOf(folder);
  if (!identity) return {};
  return L"Local\\tarnwick-" + std::to_wstring(identity->first) + L"-" +
         std::to_wstring(identity->second);
}

HANDLE HandleOf(intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

}  // namespace

// It stays set until TakeCalls has seen it, and goes with the program that made it.
RaiseSocket::RaiseSocket(const std::string& folder) {
  std::wstring name = EventOf(folder);
  if (name.empty()) return;
  HANDLE made = CreateEventW(OwnerOnly(), TRUE, FALSE, name.c_str());
  if (made != nullptr) handle_ = reinterpret_cast<intptr_t>(made);
}

RaiseSocket::~RaiseSocket() {
  if (handle_ != -1) CloseHandle(HandleOf(handle_));
}

bool RaiseSocket::TakeCalls() const {
  if (WaitForSingleObject(HandleOf(handle_), 0) != WAIT_OBJECT_0) return false;
  ResetEvent(HandleOf(handle_));
  return true;
}

bool AskToRaise(const std::string& folder) {
  std::wstring name = EventOf(folder);
  HANDLE event = name.empty() ? nullptr : OpenEventW(EVENT_MODIFY_STATE, FALSE, name.c_str());
  if (event == nullptr) return false;
  // Who was started last may come to the front, and hands that on.
  AllowSetForegroundWindow(ASFW_ANY);
  bool isHeard = SetEvent(event) != 0;
  CloseHandle(event);
  return isHeard;
}

}  // namespace tarnwick::platform
