// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/documents.h"

#include "core/messages.h"
#include "core/run_state.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/shell.h"

namespace tarnwick::core {

std::string NewDocumentPath(std::string_view extension) {
  DateTime now = platform::Now();
  int64_t seconds = now.Seconds() - now.DatePart().Seconds();
  std::string path =
      State().EmailFileFolder + "Temp" + std::to_string(seconds) + std::string(extension);
  platform::RemoveFile(path);
  return path;
}

bool OpenDocument(const std::string& path, bool* hasNoProgram) {
  if (platform::OpenWithShell(path, YieldEvents) == platform::ShellResult::kOpened) return true;
  if (hasNoProgram != nullptr) {
    *hasNoProgram = true;
    platform::RemoveFile(path);
    return false;
  }
  ShowMessage("The desktop has no program that opens this file:\r\n" + path +
              "\r\n\r\nIt stays there until the repository is opened again.");
  return false;
}

}  // namespace tarnwick::core
