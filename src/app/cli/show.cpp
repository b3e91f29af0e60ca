// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/row_output.h"
#include "takeout/stored_file.h"
#include "takeout/stored_message.h"

namespace tarnwick::app {

namespace {

void PrintRecipients(const char* label, const std::vector<intake::AddressPair>& recipients) {
  for (const intake::AddressPair& recipient : recipients) {
    std::cout << label << OneLine(recipient.Name) << " <" << OneLine(recipient.Address) << ">\n";
  }
}

void PrintWhole(const takeout::StoredMessage& message) {
  std::cout << "Subject: " << OneLine(message.subject) << "\nFrom: " << OneLine(message.fromName)
            << " <" << OneLine(message.fromAddress) << ">\n";
  PrintRecipients("To: ", message.to);
  PrintRecipients("Cc: ", message.cc);
  if (message.sent) std::cout << "Sent: " << message.sent->ToIso() << "\n";
  if (message.received) std::cout << "Received: " << message.received->ToIso() << "\n";
  std::cout << "Folder: " << OneLine(message.folder) << "\n";
  for (const std::string& name : message.attachments)
    std::cout << "Attachment: " << OneLine(name) << "\n";
  std::cout << "\n" << Harmless(message.Text());
}

}  // namespace

int RunShow(const std::vector<std::string>& words) {
  Arguments arguments(words, {}, {"--raw", "--text"});
  if (arguments.Has("--raw") && arguments.Has("--text")) {
    throw UsageError("--raw and --text exclude each other");
  }
  int64_t id = ParseNumber(arguments.OnlyOperand("ID"), "ID");
  std::optional<takeout::StoredMessage> message = takeout::ReadStoredMessage(id);
  if (!message) {
    std::cerr << "There is no email with ID " << id << "." << std::endl;
    return kFailed;
  }
  if (arguments.Has("--raw")) {
    std::optional<std::string> file = takeout::ReadStoredFile(id);
    if (!file) {
      std::cerr << "There isn't nature email copy." << std::endl;
      return kFailed;
    }
    std::cout << *file;
  } else if (arguments.Has("--text")) {
    std::cout << Harmless(message->Text());
  } else {
    PrintWhole(*message);
  }
  std::cout.flush();
  return std::cout.good() ? kDone : kFailed;
}

}  // namespace tarnwick::app
