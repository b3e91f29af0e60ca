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

std::string& KindOfHook() {
  static std::string kind;
  return kind;
}

}  // namespace

void SetShellHook(ShellHook hook, std::string kind) {
  Hook() = std::move(hook);
  KindOfHook() = std::move(kind);
}

bool HasProgramFor(const std::string& extension) {
  return Hook() ? extension == KindOfHook() : HasDesktopProgramFor(extension);
}

ShellResult OpenWithShell(const std::string& path, const std::function<void()>& whileWaiting) {
  if (!FileExists(path)) throw Error(ErrorNumber::kFileNotFound, "File not found: " + path);
  if (Hook()) return Hook()(path);
  return OpenOnDesktop(path, whileWaiting);
}

}  // namespace tarnwick::platform
