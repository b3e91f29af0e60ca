// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What surrounds this process: its environment, its memory, the person's folders, its console. All
// texts are UTF-8, whatever the system keeps them in.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarnwick::platform {

// A variable of the environment; nullopt for one that is not there.
std::optional<std::string> EnvironmentText(const char* name);
// Sets it for this process and those it starts; nullopt takes it out.
void SetEnvironmentText(const char* name, const std::optional<std::string>& value);

// The folder of the user who runs the program: HOME where that is an absolute path, else what the
// password database says; USERPROFILE on Windows; "" where none is named.
std::string HomeFolder();
// Where programs keep a user's data, with its separator: XDG_DATA_HOME where that is an absolute
// path, else .local/share in the home folder; LOCALAPPDATA on Windows. Throws Error 75 where there
// is none.
std::string DataFolder();

// Log-on name of the current user; "user" when the machine knows none.
std::string LogonName();

// Has this process keep a few megabytes of memory that it frees for the next time it asks, rather
// than give them back to the system and get them cleared again for every large letter. Called once,
// at the start of a program. Does nothing on Windows.
void KeepFreedMemory();

// Has a program's console take and give bytes as they are, in UTF-8. The program's arguments as
// UTF-8, without its own name.
std::vector<std::string> PrepareConsole(int argc, char** argv);
// Whether that standard stream (0, 1, 2) is a console and no file or pipe.
bool IsConsole(int stream);
// From now on Ctrl-C, and where the system tells of it the closing of the console, ends nothing:
// WasInterrupted is true once for each.
void CatchInterrupts();
bool WasInterrupted();

}  // namespace tarnwick::platform
