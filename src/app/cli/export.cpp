// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/export.h"

#include <iostream>

#include "board/list_query.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/list_filter_arguments.h"

namespace tarnwick::app {

int RunExport(const std::vector<std::string>& words) {
  Arguments arguments(words, ListOptionsWithValue(), ListFlags());
  const std::string& file = arguments.OnlyOperand("FILE");
  if (!OpenFilteredList(ReadListFilter(arguments))) return kFailed;
  bool isEmpty = board::Board().ListIsPlaceholder;
  maintenance::Result result = maintenance::ExportEmails(file, board::Board().ListRecordset);
  board::ResetBoard();
  // The window shows that its list is empty; here somebody has to say it.
  if (isEmpty) std::cerr << "No email matches." << std::endl;
  return result == maintenance::Result::kDone ? kDone : kFailed;
}

}  // namespace tarnwick::app
