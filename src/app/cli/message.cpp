// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "board/message_commands.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "takeout/stored_message.h"

namespace tarnwick::app {

namespace {

using MessageCommand = bool (*)(const std::vector<board::SelectedMessage>&);

// Runs what the window does with a selected message on the one that the operand names.
int OnMessage(const std::vector<std::string>& words, MessageCommand command) {
  Arguments arguments(words, {}, {});
  int64_t id = ParseNumber(arguments.OnlyOperand("ID"), "ID");
  std::optional<takeout::StoredMessage> message = takeout::ReadStoredMessage(id);
  if (!message) {
    std::cerr << "There is no email with ID " << id << "." << std::endl;
    return kFailed;
  }
  return command({{id, message->subject}}) ? kDone : kFailed;
}

}  // namespace

int RunDelete(const std::vector<std::string>& words) {
  return OnMessage(words, [](const auto& messages) { return board::DeleteMessages(messages); });
}

int RunMark(const std::vector<std::string>& words) {
  return OnMessage(words, board::ToggleActive);
}

}  // namespace tarnwick::app
