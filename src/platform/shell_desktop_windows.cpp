// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/shell_desktop.h"

#include <windows.h>

#include <shellapi.h>
#include <shlwapi.h>

#include "platform/error.h"
#include "platform/files.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

ShellResult OpenOnDesktop(const std::string& path, const std::function<void()>&) {
  auto code = reinterpret_cast<INT_PTR>(ShellExecuteW(
      nullptr, L"open", Wide(AbsolutePath(path)).c_str(), nullptr, nullptr, SW_SHOWNORMAL));
  if (code > 32) return ShellResult::kOpened;
  if (code == SE_ERR_NOASSOC || code == SE_ERR_ASSOCINCOMPLETE) return ShellResult::kNoHandler;
  throw Error(ErrorNumber::kPathAccess, "The file can't be opened: " + path);
}

bool HasDesktopProgramFor(const std::string& extension) {
  DWORD size = 0;
  HRESULT result = AssocQueryStringW(ASSOCF_INIT_IGNOREUNKNOWN, ASSOCSTR_EXECUTABLE,
                                     Wide(extension).c_str(), L"open", nullptr, &size);
  return SUCCEEDED(result) && size > 1;
}

}  // namespace tarnwick::platform
