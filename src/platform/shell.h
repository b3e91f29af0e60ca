// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Hands a file to the program that the desktop has for its kind, as a double click there would:
// xdg-open, started by argument list (no shell reads the path), ShellExecute on Windows. The
// program that opens belongs to the desktop; nothing waits for its end.
//
// Rooms call core::OpenDocument, which tells the person when nothing could be opened.
#pragma once

#include <functional>
#include <string>

namespace tarnwick::platform {

enum class ShellResult {
  kOpened,
  kNoHandler,  // the desktop has no program for this kind of file, or there is no desktop
};

// Opens an existing file. The desktop is given a few seconds to refuse; meanwhile whileWaiting is
// called every few milliseconds, so that windows go on living. Throws Error 53 when the file is not
// there, 75 when no process can be started.
ShellResult OpenWithShell(const std::string& path, const std::function<void()>& whileWaiting = {});

// For tests: stands in for the desktop; {} takes it out. The file's existence is still checked.
using ShellHook = std::function<ShellResult(const std::string& path)>;
void SetShellHook(ShellHook hook);

}  // namespace tarnwick::platform
