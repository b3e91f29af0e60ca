// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/merge.h"

#include <iostream>

#include "cli/command_line.h"
#include "cli/commands.h"

namespace tarnwick::app {

int RunMerge(const std::vector<std::string>& words) {
  using maintenance::Duplicates;
  using maintenance::UnknownSenders;
  Arguments arguments(words, {"--duplicates", "--accept"}, {});
  const std::string& file = arguments.OnlyOperand("FILE");
  std::string duplicates = arguments.OneOf("--duplicates", {"ask", "keep", "skip"});
  std::string accept = arguments.OneOf("--accept", {"ask", "all", "known"});

  maintenance::MergeOptions options;
  options.duplicates = duplicates == "keep"   ? Duplicates::kKeep
                       : duplicates == "skip" ? Duplicates::kSkip
                                              : Duplicates::kAsk;
  options.senders = accept == "all"     ? UnknownSenders::kAccept
                    : accept == "known" ? UnknownSenders::kRefuse
                                        : UnknownSenders::kAsk;
  maintenance::MergeResult merged = maintenance::twMakeMarge(file, options);
  if (merged.result == maintenance::Result::kDeclined) return kFailed;
  std::cout << "imported " << merged.imported << ", ignored " << merged.ignored << ", not reached "
            << merged.notReached << std::endl;
  return merged.result == maintenance::Result::kDone ? kDone : kFailed;
}

}  // namespace tarnwick::app
