// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The two gates into the repository: is the message there already, and is its sender wanted. A
// database error is logged and answers no, so that the person is asked.
#pragma once

#include <string>

#include "intake/mail_message.h"
#include "intake/outcome.h"

namespace tarnwick::intake {

// True when a message with this key is stored or was ignored; an empty key gives false, and so does
// the key of a message of which an error left only a part.
bool IsEmailExist(const std::string& key);

// How a message ended for which IsEmailExist is true: kAlreadyStored or kIgnored.
Outcome OutcomeOfKnown(const std::string& key);

// True when the message may be stored; ending is untouched then and else tells why not. May ask the
// person, and then obeys the answer: a rule for the sender, the message ignored for good,
// everything accepted for the rest of the run, or the run stopped.
bool IsMessageAccepted(const MailMessage& message, Ending& ending);

bool IsSenderReject(const std::string& address, const std::string& name);
bool IsSenderAccepted(const std::string& address, const std::string& name);
void SetAddresseeReject(const std::string& name, const std::string& address);

void AddIgnoredMessage(const std::string& key);
bool IsMessageIgnored(const std::string& key);
bool HoldsIgnoredMessages();  // any at all

}  // namespace tarnwick::intake
