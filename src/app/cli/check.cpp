// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/check.h"

#include <iostream>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/row_output.h"

namespace tarnwick::app {

namespace {

using maintenance::CheckReport;
using maintenance::Finding;
using maintenance::Result;

constexpr const char* kAdvice =
    "What to do: restore a backup that was made before the damage (tarnwick-cli restore FILE).\n"
    "Without one, save the messages that are sound first (tarnwick-cli check --export FILE) and\n"
    "merge them into a new repository (tarnwick-cli --home NEW merge FILE). A message that is "
    "still\n"
    "in its old store is taken whole by a new load once it has been deleted here.\n";

void Print(const CheckReport& report) {
  for (const Finding& finding : report.damage) {
    if (finding.id != 0) std::cout << "message " << finding.id << ": ";
    std::cout << OneLine(finding.what) << "\n";
  }
  for (const std::string& copy : report.formerCopies) {
    std::cout << maintenance::CopyNote(copy) << "\n";
  }
  std::cout << "messages " << report.messages << ", sound " << report.sound.size() << ", damaged "
            << report.DamagedMessages() << ", rows of deleted messages " << report.leftovers
            << std::endl;
}

}  // namespace

int RunCheck(const std::vector<std::string>& words) {
  Arguments arguments(words, {"--export"}, {});
  if (!arguments.Operands().empty()) throw UsageError("check takes no operand");
  CheckReport report;
  Result result = maintenance::CheckRepository(report);
  Print(report);
  if (result == Result::kStopped) std::cerr << "The check is stopped." << std::endl;
  if (!report.IsSound()) std::cerr << kAdvice;
  if (result != Result::kDone) return kFailed;
  std::optional<std::string> file = arguments.Value("--export");
  if (file && maintenance::ExportSound(report, *file) != Result::kDone) return kFailed;
  return report.IsSound() ? kDone : kFailed;
}

}  // namespace tarnwick::app
