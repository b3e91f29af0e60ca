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

// Whether the desktop says of files with this extension (".msg") that it has a program for them.
// One that can't be asked without opening a file says no.
bool HasProgramFor(const std::string& extension);

// For tests: stands in for the desktop; {} takes it out. The file's existence is still checked.
// HasProgramFor says yes to the one kind alone.
using ShellHook = std::function<ShellResult(const std::string& path)>;
void SetShellHook(ShellHook hook, std::string kind = {});

}  // namespace tarnwick::platform
