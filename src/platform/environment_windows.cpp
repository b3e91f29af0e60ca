// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/environment.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <shlobj.h>

#include <atomic>
#include <cstdlib>

#include "platform/clock_override.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

namespace {

std::atomic<bool> interrupted = false;
UINT formerOutputPage = 0;

BOOL WINAPI OnInterrupt(DWORD event) {
  interrupted = true;
  // Behind these the system ends the process when this returns, or a few seconds later.
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

void PutOutputPageBack() {
  SetConsoleOutputCP(formerOutputPage);
}

}  // namespace

std::optional<std::string> EnvironmentText(const char* name) {
  std::wstring wideName = Wide(name);
  SetLastError(ERROR_SUCCESS);
  DWORD size = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
  if (size == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
  std::wstring value(size, L'\0');
  value.resize(GetEnvironmentVariableW(wideName.c_str(), value.data(), size));
  return Utf8(value);
}

void SetEnvironmentText(const char* name, const std::optional<std::string>& value) {
  // By way of the C library, which keeps a copy of its own for other people's code.
  _wputenv_s(Wide(name).c_str(), Wide(value.value_or("")).c_str());
}

std::string HomeFolder() {
  if (CurrentClockOverride().passwordHome) return *CurrentClockOverride().passwordHome;
  return EnvironmentText("USERPROFILE").value_or("");
}

std::string DataFolder() {
  std::string folder = EnvironmentText("LOCALAPPDATA").value_or("");
  wchar_t* known = nullptr;
  if (folder.empty() && SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, &known) == S_OK) {
    folder = Utf8(known);
  }
  CoTaskMemFree(known);
  if (folder.empty()) {
    throw Error(
        ErrorNumber::kPathAccess,
        "There is no folder to keep the mail in: LOCALAPPDATA is not set. Set it, or name a "
        "folder in TARNWICK_HOME.");
  }
  return WithSeparator(folder);
}

std::string LogonName() {
  if (CurrentClockOverride().logonName) return *CurrentClockOverride().logonName;
  constexpr DWORD kLongestName = 257;
  wchar_t name[kLongestName] = {};
  DWORD size = kLongestName;
  return GetUserNameW(name, &size) != 0 && name[0] != L'\0' ? Utf8(name) : "user";
}

void KeepFreedMemory() {}

std::vector<std::string> PrepareConsole(int, char**) {
  for (int stream : {0, 1, 2}) _setmode(stream, _O_BINARY);
  formerOutputPage = GetConsoleOutputCP();
  if (formerOutputPage != 0 && SetConsoleOutputCP(CP_UTF8) != 0) std::atexit(PutOutputPageBack);
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(Utf8(words[i]));
  LocalFree(words);
  return arguments;
}

bool IsConsole(int stream) {
  DWORD mode = 0;
  return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(stream)), &mode) != 0;
}

void CatchInterrupts() {
  SetConsoleCtrlHandler(OnInterrupt, TRUE);
}

bool WasInterrupted() {
  return interrupted.exchange(false);
}

}  // namespace tarnwick::platform
