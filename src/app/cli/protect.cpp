// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/protect.h"

#include <iostream>
#include <optional>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "core/messages.h"
#include "platform/terminal.h"

namespace tarnwick::app {

namespace {

using maintenance::Result;
using platform::Secret;

// nullopt: there is none; the person has been told why.
std::optional<Secret> AskNewPassword() {
  std::cerr << maintenance::kForgottenPassword << std::endl;
  std::optional<Secret> password = platform::ReadHidden("New password: ");
  if (!password) {
    std::cerr << "There is no terminal to ask at: name a file that holds the new password with "
                 "--new-password-file FILE."
              << std::endl;
    return std::nullopt;
  }
  std::optional<Secret> again = platform::ReadHidden("The same once more: ");
  if (!again || !again->IsSame(password->Bytes())) {
    std::cerr << "These were two different passwords. Nothing was changed." << std::endl;
    return std::nullopt;
  }
  return password;
}

}  // namespace

int RunProtect(const std::vector<std::string>& words) {
  Arguments arguments(words, {"--new-password-file"}, {});
  if (!arguments.Operands().empty()) {
    throw UsageError("protect takes no operand; a password never stands on the command line");
  }
  std::optional<std::string> file = arguments.Value("--new-password-file");
  std::optional<Secret> password = file ? platform::ReadSecretLine(*file) : AskNewPassword();
  if (!password) return kFailed;
  return maintenance::ProtectRepository(*password) == Result::kDone ? kDone : kFailed;
}

int RunUnprotect(const std::vector<std::string>& words) {
  Arguments arguments(words, {}, {});
  if (!arguments.Operands().empty()) throw UsageError("unprotect takes no operand");
  return maintenance::UnprotectRepository() == Result::kDone ? kDone : kFailed;
}

}  // namespace tarnwick::app
