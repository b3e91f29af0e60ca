// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/attachment_file.h"

#include "core/guard.h"
#include "core/run_state.h"
#include "core/tellings.h"
#include "platform/files.h"

namespace tarnwick::intake {

std::string MakeAttachFile(const std::string& declaredName, std::string_view bytes) {
  return core::Guarded(
      "MakeAttachFile", std::string(),
      [&] {
        using core::Telling;
        bool isKept =
            core::TellingsKept::Keep({Telling::Kind::kFile, declaredName, std::string(bytes)});
        if (isKept) return std::string();
        const std::string& folder = core::State().EmailFileFolder;
        if (folder.empty()) return std::string();
        std::string name = platform::SafeFileName(declaredName);
        if (name.empty()) name = "attachment";
        // The next message to be read is written there.
        if (folder + name == core::State().TempMessageFile) name.insert(0, "_");
        std::string path = platform::UniquePath(folder, name);
        platform::WriteFile(path, bytes);
        return path;
      },
      core::Report::kLog);
}

}  // namespace tarnwick::intake
