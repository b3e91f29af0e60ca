// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "board/load_found.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/row_output.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "look/look.h"
#include "platform/charset.h"

namespace tarnwick::app {

namespace {

using look::FoundMail;

std::string StateWord(const FoundMail& mail) {
  switch (mail.state) {
    case look::State::kDamaged:
      return "damaged";
    case look::State::kPassword:
      return "password";
    case look::State::kWhole:
      break;
  }
  return "whole";
}

std::string StoredWord(const FoundMail& mail) {
  if (mail.stored == look::Stored::kNo) return "new";
  return mail.stored == look::Stored::kPartly ? "partly" : "stored";
}

std::string Text(const std::string& text) {
  return platform::EnsureUtf8(text);
}

void PrintRow(const FoundMail& mail) {
  std::string years = mail.firstYear == 0 ? "" : std::to_string(mail.firstYear);
  if (mail.lastYear != mail.firstYear) years += "-" + std::to_string(mail.lastYear);
  std::cout << mail.program << '\t' << OneLine(Text(mail.user)) << '\t'
            << OneLine(Text(mail.identity)) << '\t' << mail.folders << '\t'
            << (mail.isEstimate ? "~" : "") << mail.messages << '\t' << years << '\t' << mail.bytes
            << '\t' << StateWord(mail) << '\t' << StoredWord(mail) << '\t'
            << OneLine(Text(mail.place)) << "\n";
}

void PrintJsonRow(const FoundMail& mail) {
  std::cout << "{\"program\":" << JsonText(mail.program)
            << ",\"user\":" << JsonText(Text(mail.user))
            << ",\"identity\":" << JsonText(Text(mail.identity)) << ",\"folders\":" << mail.folders
            << ",\"messages\":" << mail.messages
            << ",\"estimate\":" << (mail.isEstimate ? "true" : "false")
            << ",\"firstYear\":" << mail.firstYear << ",\"lastYear\":" << mail.lastYear
            << ",\"bytes\":" << mail.bytes << ",\"state\":" << JsonText(StateWord(mail))
            << ",\"fault\":" << JsonText(Text(mail.fault))
            << ",\"stored\":" << JsonText(StoredWord(mail))
            << ",\"place\":" << JsonText(Text(mail.place)) << "}\n";
}

// What the repository does not hold yet; of a damaged store nothing may be known before it is
// searched.
int LoadNew(const Arguments& arguments, const look::Found& found) {
  bool lostToo = arguments.Has("--rescue");
  std::vector<FoundMail> wanted;
  for (const FoundMail& mail : found.mail) {
    bool isNew = mail.stored != look::Stored::kYes && mail.messages > 0;
    if (isNew || lostToo) wanted.push_back(mail);
  }
  board::LoadResult result;
  if (!wanted.empty()) result = board::LoadFound(wanted, SendersOf(arguments), lostToo);
  std::cout << board::CountsSummary(result.counts) << std::endl;
  return result.failed || (!wanted.empty() && !result.ran) ? kFailed : kDone;
}

}  // namespace

int RunFind(const std::vector<std::string>& words) {
  Arguments arguments(words, {"--accept"}, {"--json", "--load", "--rescue"});
  bool isLoad = arguments.Has("--load");
  if (!isLoad && (arguments.Has("--rescue") || arguments.Value("--accept"))) {
    throw UsageError("options --rescue and --accept belong to --load");
  }
  look::Found found = look::Look(arguments.OnlyOperand("place"), true,
                                 [](const look::Found& soFar, const std::string&) {
                                   core::YieldEvents();
                                   core::State().Ui->ShowProgress(soFar.filesSeen, 0);
                                   return !core::IsLoadStopped();
                                 });
  for (const FoundMail& mail : found.mail) {
    arguments.Has("--json") ? PrintJsonRow(mail) : PrintRow(mail);
  }
  std::cout.flush();
  for (const std::string& folder : found.forbidden) {
    std::cerr << "May not be read: " << OneLine(Text(folder)) << "\n";
  }
  if (found.isStopped) return kFailed;
  return isLoad ? LoadNew(arguments, found) : kDone;
}

}  // namespace tarnwick::app
