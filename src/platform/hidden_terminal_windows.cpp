// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <windows.h>

#include <deque>

#include "platform/hidden_terminal.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

namespace {

HANDLE OpenConsole(const wchar_t* name) {
  return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                     nullptr, OPEN_EXISTING, 0, nullptr);
}

}  // namespace

// The console itself, wherever standard input and output lead.
struct HiddenTerminal::State {
  HANDLE input = OpenConsole(L"CONIN$");
  HANDLE output = OpenConsole(L"CONOUT$");
  DWORD former = 0;
  bool isHidden = false;
  std::deque<unsigned char> waiting;  // bytes of the character that was typed last
};

HiddenTerminal::HiddenTerminal() : state_(std::make_unique<State>()) {
  if (GetConsoleMode(state_->input, &state_->former) == 0) return;
  constexpr DWORD kShown = ENABLE_ECHO_INPUT | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT;
  state_->isHidden = SetConsoleMode(state_->input, state_->former & ~kShown) != 0;
}

HiddenTerminal::~HiddenTerminal() {
  if (state_->isHidden) SetConsoleMode(state_->input, state_->former);
  for (HANDLE handle : {state_->input, state_->output}) {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
}

bool HiddenTerminal::IsThere() const {
  return state_->isHidden;
}

void HiddenTerminal::Show(const std::string& text) {
  std::wstring wide = Wide(text);
  DWORD written = 0;
  WriteConsoleW(state_->output, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
}

int HiddenTerminal::Next() {
  if (state_->waiting.empty()) {
    wchar_t units[2] = {};
    DWORD read = 0;
    if (ReadConsoleW(state_->input, units, 1, &read, nullptr) == 0 || read == 0) return kEnd;
    // Two make a character beyond the first 65,536.
    bool isHalf = (units[0] & 0xFC00) == 0xD800;
    DWORD second = 0;
    if (isHalf) ReadConsoleW(state_->input, units + 1, 1, &second, nullptr);
    std::string bytes = Utf8({units, 1 + second});
    state_->waiting.assign(bytes.begin(), bytes.end());
    SecureZeroMemory(bytes.data(), bytes.size());
    SecureZeroMemory(units, sizeof units);
  }
  int byte = state_->waiting.front();
  state_->waiting.pop_front();
  return byte;
}

}  // namespace tarnwick::platform
