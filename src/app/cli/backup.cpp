// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/backup.h"

#include "cli/command_line.h"
#include "cli/commands.h"

namespace tarnwick::app {

int RunBackup(const std::vector<std::string>& words) {
  Arguments arguments(words, {}, {});
  maintenance::Result result = maintenance::MakeBackup(arguments.OnlyOperand("FILE"));
  return result == maintenance::Result::kDone ? kDone : kFailed;
}

}  // namespace tarnwick::app
