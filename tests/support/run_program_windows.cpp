// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <windows.h>

#include "platform/files.h"
#include "platform/windows_text.h"
#include "support/run_program.h"
#include "support/temp_folder.h"

namespace tarnwick::testing {

namespace {

HANDLE OpenInherited(const std::string& path, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return CreateFileW(platform::WidePath(path).c_str(), access, FILE_SHARE_READ, &inherited,
                     disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// In quotation marks as the C library and the shell read them.
std::wstring Quoted(const std::string& word) {
  std::wstring quoted = L"\"";
  size_t backslashes = 0;
  for (wchar_t c : platform::Wide(word)) {
    if (c == L'"') quoted.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, L'\\') + L'"';
}

}  // namespace

ProgramRun RunProgram(const std::vector<std::string>& arguments, const std::string& input) {
  ProgramRun run;
  run.status = 127;  // as a shell tells it
  // Wine would start one of the machine that it runs on, which reads no path of Windows.
  if (!arguments.at(0).ends_with(".exe")) return run;
  TempFolder folder;
  platform::WriteFile(folder.File("in"), input);
  std::wstring command;
  for (const std::string& word : arguments) command += Quoted(word) + L' ';
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = OpenInherited(folder.File("in"), GENERIC_READ, OPEN_EXISTING);
  startup.hStdOutput = OpenInherited(folder.File("out"), GENERIC_WRITE, CREATE_ALWAYS);
  startup.hStdError = OpenInherited(folder.File("err"), GENERIC_WRITE, CREATE_ALWAYS);
  PROCESS_INFORMATION process{};
  // Without a console, on which it would wait for somebody's password.
  BOOL isStarted = CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, DETACHED_PROCESS,
                                  nullptr, nullptr, &startup, &process);
  for (HANDLE end : {startup.hStdInput, startup.hStdOutput, startup.hStdError}) CloseHandle(end);
  if (!isStarted) return run;
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD status = 0;
  GetExitCodeProcess(process.hProcess, &status);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  run.status = static_cast<int>(status);
  run.output = platform::ReadFile(folder.File("out"));
  run.errors = platform::ReadFile(folder.File("err"));
  return run;
}

}  // namespace tarnwick::testing
