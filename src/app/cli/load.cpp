// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>
#include <sstream>

#include "board/load_command.h"
#include "cli/command_line.h"
#include "cli/commands.h"

namespace tarnwick::app {

namespace {

// "drafts,outbox"
void TakeFolders(const std::string& list, intake::ReadingRules& rules) {
  rules.drafts = rules.deletedItems = rules.outbox = false;
  std::istringstream names(list);
  for (std::string name; std::getline(names, name, ',');) {
    if (name == "drafts") {
      rules.drafts = true;
    } else if (name == "deleted") {
      rules.deletedItems = true;
    } else if (name == "outbox") {
      rules.outbox = true;
    } else {
      throw UsageError("option --folders wants drafts, deleted or outbox, with commas between");
    }
  }
}

// As the options say, unless the command does.
intake::ReadingRules RulesOf(const Arguments& arguments) {
  bool isComplete = intake::IsCompleteStored();
  if (arguments.Value("--reading")) {
    isComplete = arguments.OneOf("--reading", {"designed", "complete"}) == "complete";
  }
  intake::ReadingRules rules = intake::StoredRules(isComplete);
  if (auto folders = arguments.Value("--folders")) {
    if (!isComplete) throw UsageError("option --folders belongs to complete reading");
    TakeFolders(*folders, rules);
  }
  rules.lostMail = arguments.Has("--rescue");
  return rules;
}

}  // namespace

board::SenderPolicy SendersOf(const Arguments& arguments) {
  std::string accept = arguments.OneOf("--accept", {"ask", "all", "known"});
  if (accept == "all") return board::SenderPolicy::kAcceptAll;
  return accept == "known" ? board::SenderPolicy::kKnownOnly : board::SenderPolicy::kAsk;
}

int RunLoad(const std::vector<std::string>& words) {
  Arguments arguments(words, {"--accept", "--reading", "--folders"}, {"--full", "--rescue"});
  if (!arguments.Operands().empty()) throw UsageError("load takes no operand");
  board::LoadOptions options;
  options.everyMailer = true;
  options.full = arguments.Has("--full");
  options.rules = RulesOf(arguments);
  options.senders = SendersOf(arguments);
  board::LoadResult result = board::LoadFromMailer(options);
  std::cout << board::CountsSummary(result.counts) << std::endl;
  return result.failed || !result.ran ? kFailed : kDone;
}

}  // namespace tarnwick::app
