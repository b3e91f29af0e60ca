// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/attachment_file.h"

#include <cstdint>

#include "core/guard.h"
#include "core/run_state.h"
#include "platform/files.h"

namespace tarnwick::intake {

namespace {

bool IsTaken(const std::string& path) {
  return path == core::State().TempMessageFile || platform::FileExists(path) ||
         platform::FolderExists(path);
}

// A free path for the name. Where it is taken a number is added, which is searched by halves: the
// ten thousandth file of a name costs a dozen looks, not ten thousand.
std::string FreePath(const std::string& folder, const std::string& name) {
  if (!IsTaken(folder + name)) return folder + name;
  size_t dot = name.rfind('.');
  if (dot == 0 || dot == std::string::npos) dot = name.size();
  auto numbered = [&](uint64_t number) {
    return folder + name.substr(0, dot) + " (" + std::to_string(number) + ")" + name.substr(dot);
  };
  uint64_t taken = 1;
  uint64_t free = 2;
  while (IsTaken(numbered(free))) {
    taken = free;
    free *= 2;
  }
  while (free - taken > 1) {
    uint64_t middle = taken + (free - taken) / 2;
    (IsTaken(numbered(middle)) ? taken : free) = middle;
  }
  return numbered(free);
}

}  // namespace

std::string MakeAttachFile(const std::string& declaredName, std::string_view bytes) {
  return core::Guarded(
      "MakeAttachFile", std::string(),
      [&] {
        const std::string& folder = core::State().EmailFileFolder;
        if (folder.empty()) return std::string();
        std::string name = platform::SafeFileName(declaredName);
        if (name.empty()) name = "attachment";
        std::string path = FreePath(folder, name);
        platform::WriteFile(path, bytes);
        return path;
      },
      core::Report::kLog);
}

}  // namespace tarnwick::intake
