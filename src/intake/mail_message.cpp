// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/mail_message.h"

namespace tarnwick::intake {

void SetCorrespondent(MailMessage& message) {
  if (message.Direction == "In") {
    message.FromToAddress = message.FromAddress;
    message.FromToName = message.FromName;
  } else if (message.ToCount > 0) {
    message.FromToAddress = message.To[0].Address;
    message.FromToName = message.To[0].Name;
  }
}

}  // namespace tarnwick::intake
