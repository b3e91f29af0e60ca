// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/restore.h"

#include "cli/command_line.h"
#include "cli/commands.h"

namespace tarnwick::app {

int RunRestore(const std::vector<std::string>& words) {
  Arguments arguments(words, {}, {});
  maintenance::Result result = maintenance::RestoreBackup(arguments.OnlyOperand("FILE"));
  return result == maintenance::Result::kDone ? kDone : kFailed;
}

}  // namespace tarnwick::app
