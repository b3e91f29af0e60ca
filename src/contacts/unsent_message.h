// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A new message to a contact: a file with nothing but headers, which the mail program of the
// desktop shows as one that is still to be written and sent (X-Unsent).
//
// Names and addresses come from other people's mail. Whatever they hold, each stays one mailbox of
// one header line (RFC 5322):
//   - control characters of a name become a blank; " and \ are escaped; a name that is not ASCII,
//     or too long for a line, is written as encoded words (RFC 2047) without quotation marks;
//   - what can't stand in an address outside quotation marks becomes "_": an address that tried to
//     be two is then none, and the mail program says so.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "contacts/contact_book.h"

namespace tarnwick::contacts {

// "Name" <address>, or <address> alone where the message that brought it had no name.
std::string MailboxText(std::string_view name, std::string_view address);

// Every address of the contact, as mailboxes on folded lines of one header; those that stand for a
// missing one are left out.
std::string GetAllEmailAddress(std::string_view name, const std::vector<ContactAddress>& addresses);

// The mailbox of the latest message that the user sent; "" when there is none.
std::string LatestSender();

// The lines of the file, each ended by CR LF.
std::string UnsentMessage(const std::string& sender, const std::string& recipients,
                          const std::string& date);

// The commands "Send To Selected" and "Send To All": write the file into the scratch folder and
// hand it to the desktop. selected may be nullptr. Errors are reported; false when nothing was
// opened.
bool SendToOne(std::string_view name, const ContactAddress* selected);
bool SendToAll(std::string_view name, const std::vector<ContactAddress>& addresses);

}  // namespace tarnwick::contacts
