// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/attachment_file.h"

#include "core/run_state.h"
#include "intake/intake_state.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::intake {

std::string MakeAttachFile(std::string_view name, std::string_view bytes) {
  std::string safe = platform::SafeFileName(name);
  if (safe.empty()) safe = "attachment";
  std::string path = platform::UniquePath(core::State().EmailFileFolder, safe);
  State().AttachFiles.push_back(path);
  platform::WriteFile(path, bytes);
  return path;
}

void RemoveAttachFiles() {
  for (const std::string& path : State().AttachFiles) {
    try {
      platform::RemoveFile(path);
    } catch (const Error&) {
      // Open elsewhere; the folder is emptied when the repository is opened next.
    }
  }
  State().AttachFiles.clear();
}

}  // namespace tarnwick::intake
