// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/help_topics.h"

#include "core/guard.h"
#include "core/messages.h"
#include "platform/files.h"
#include "platform/shell.h"

namespace tarnwick::board {

std::vector<std::string> FindHelp(const std::string& programFolder) {
  std::vector<std::string> files;
  for (const char* place : {"help/", "share/tarnwick/help/", "../share/tarnwick/help/"}) {
    for (const char* name : {"twHelp.chm", "index.html"}) {
      std::string path = platform::AbsolutePath(programFolder + place + name);
      if (platform::FileExists(path)) files.push_back(path);
    }
  }
  return files;
}

bool ShowHelp(const std::string& programFolder) {
  return core::Guarded("mnReadMe", false, [&] {
    std::vector<std::string> files = FindHelp(programFolder);
    for (const std::string& file : files) {
      if (platform::OpenWithShell(file, core::YieldEvents) == platform::ShellResult::kOpened) {
        return true;
      }
    }
    core::ShowMessage(
        files.empty() ? "The help is not installed."
                      : "The desktop has no program that shows the help. Its first page is\r\n" +
                            files.back());
    return false;
  });
}

}  // namespace tarnwick::board
