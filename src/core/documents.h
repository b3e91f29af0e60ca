// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Scratch files that are handed to the desktop's own programs: a stored raw message, a new message
// to a contact. They lie in EmailFileFolder, which is emptied whenever a repository is opened.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::core {

// EmailFileFolder + "Temp" + the whole seconds since midnight + extension (".eml"; may be empty). A
// file that has the name already is removed. Throws Error.
std::string NewDocumentPath(std::string_view extension);

// Opens a file with the desktop's program for its kind. Where there is none the person is told so,
// and where the file lies. False when nothing was opened. Throws Error.
//
// hasNoProgram: set, instead of telling the person; the file is removed then.
bool OpenDocument(const std::string& path, bool* hasNoProgram = nullptr);

}  // namespace tarnwick::core
