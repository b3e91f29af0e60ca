// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "board/load_command.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "database/connection.h"
#include "maintenance/unfinished_restore.h"
#include "repository/repository.h"

namespace tarnwick::app {

int RunTake(const std::vector<std::string>& words) {
  Arguments arguments(words, {}, {});
  if (arguments.Operands().empty()) throw UsageError("take wants at least one file");
  if (maintenance::RefuseUnfinished()) return kFailed;
  int64_t stored = 0;
  int64_t alreadyStored = 0;
  int64_t failed = 0;
  jet::CommitGroup group(repository::RepositoryDb());
  for (const std::string& file : arguments.Operands()) {
    intake::Outcome outcome = board::TakeTextFile(file);
    repository::RepositoryDb().EndUnit();
    if (outcome == intake::Outcome::kStored) {
      ++stored;
    } else if (outcome == intake::Outcome::kAlreadyStored) {
      ++alreadyStored;
    } else {
      ++failed;
      std::cerr << "Not taken: " << file << std::endl;
    }
  }
  group.End();
  std::cout << "stored " << stored << ", already stored " << alreadyStored << ", unreadable "
            << failed << std::endl;
  return failed == 0 ? kDone : kFailed;
}

}  // namespace tarnwick::app
