// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "board/load_command.h"
#include "cli/command_line.h"
#include "cli/commands.h"

namespace tarnwick::app {

int RunLoad(const std::vector<std::string>& words) {
  Arguments arguments(words, {"--accept"}, {"--full"});
  if (!arguments.Operands().empty()) throw UsageError("load takes no operand");
  std::string accept = arguments.OneOf("--accept", {"ask", "all", "known"});

  board::LoadOptions options;
  options.everyMailer = true;
  options.full = arguments.Has("--full");
  options.senders = accept == "all"     ? board::SenderPolicy::kAcceptAll
                    : accept == "known" ? board::SenderPolicy::kKnownOnly
                                        : board::SenderPolicy::kAsk;
  board::LoadResult result = board::LoadFromMailer(options);
  std::cout << board::CountsSummary(result.counts) << std::endl;
  return result.failed || !result.ran ? kFailed : kDone;
}

}  // namespace tarnwick::app
