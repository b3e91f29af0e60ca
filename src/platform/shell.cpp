// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/shell.h"

#include "platform/error.h"
#include "platform/files.h"
#include "platform/shell_desktop.h"

namespace tarnwick::platform {

namespace {

ShellHook& Hook() {
  static ShellHook hook;
  return hook;
}

}  // namespace

void SetShellHook(ShellHook hook) {
  Hook() = std::move(hook);
}

ShellResult OpenWithShell(const std::string& path, const std::function<void()>& whileWaiting) {
  if (!FileExists(path)) throw Error(ErrorNumber::kFileNotFound, "File not found: " + path);
  if (Hook()) return Hook()(path);
  return OpenOnDesktop(path, whileWaiting);
}

}  // namespace tarnwick::platform
