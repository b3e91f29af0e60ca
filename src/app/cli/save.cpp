// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "board/list_query.h"
#include "board/message_commands.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/list_filter_arguments.h"
#include "takeout/save_messages.h"

namespace tarnwick::app {

int RunSave(const std::vector<std::string>& words) {
  using takeout::SaveFormat;
  std::set<std::string> withValue = ListOptionsWithValue();
  withValue.insert("--format");
  std::set<std::string> flags = ListFlags();
  flags.insert("--folders");
  Arguments arguments(words, withValue, flags);
  if (!arguments.Value("--format")) {
    throw UsageError("save wants --format eml, msg, mbox or maildir");
  }
  std::string format = arguments.OneOf("--format", {"eml", "msg", "mbox", "maildir"});
  takeout::SaveOrder order;
  order.format = format == "mbox"      ? SaveFormat::kMbox
                 : format == "maildir" ? SaveFormat::kMaildir
                 : format == "msg"     ? SaveFormat::kMsg
                                       : SaveFormat::kEml;
  order.folders = arguments.Has("--folders");
  order.folder = arguments.OnlyOperand("DIR");
  if (!OpenFilteredList(ReadListFilter(arguments))) return kFailed;
  std::optional<std::vector<int64_t>> ids = board::ListedIds();
  board::ResetBoard();
  if (!ids) return kFailed;
  if (ids->empty()) {
    std::cerr << "No email matches." << std::endl;
    return kFailed;
  }
  order.ids = std::move(*ids);
  std::optional<takeout::SaveCounts> counts = takeout::SaveMessages(order);
  if (!counts) return kFailed;
  std::cout << counts->Line() << std::endl;
  return counts->failed == 0 && counts->notReached == 0 ? kDone : kFailed;
}

}  // namespace tarnwick::app
