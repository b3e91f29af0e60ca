// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#pragma once

#include <string>

namespace tarnwick::jet {

// How the engine is told which file to open, whatever characters its path holds. forReading: so
// that the file and the folder that it lies in stay as they are. Throws Error 75 where the log of a
// file that is to be read lies beside it.
std::string FileUri(const std::string& path, bool forReading);

}  // namespace tarnwick::jet
