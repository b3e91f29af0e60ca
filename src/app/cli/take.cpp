// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "board/load_command.h"
#include "cli/command_line.h"
#include "cli/commands.h"

namespace tarnwick::app {

int RunTake(const std::vector<std::string>& words) {
  Arguments arguments(words, {}, {});
  if (arguments.Operands().empty()) throw UsageError("take wants at least one file");
  board::TakeResult result = board::TakeTextFiles(arguments.Operands());
  for (const std::string& file : result.notTaken) std::cerr << "Not taken: " << file << std::endl;
  std::cout << "stored " << result.stored << ", already stored " << result.alreadyStored
            << ", unreadable " << result.unreadable;
  if (result.notReached > 0) std::cout << ", not reached " << result.notReached;
  std::cout << std::endl;
  return result.notTaken.empty() && result.unreadable == 0 ? kDone : kFailed;
}

}  // namespace tarnwick::app
