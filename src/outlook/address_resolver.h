// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Internet addresses for the correspondents of one item. Within an organisation Outlook names
// people by directory entries ("/O=FIRM/OU=SITE/CN=RECIPIENTS/CN=ANN"); the Internet address often
// stands elsewhere in the same item: beside another mention of the same entry, or in the headers
// that the letter came with.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "intake/mail_message.h"
#include "outlook/mapi.h"

namespace tarnwick::outlook {

class AddressResolver {
 public:
  // Learns from a mention: an entry and the Internet address beside it.
  void Learn(const std::string& entry, const std::string& smtpAddress);
  // Learns names and addresses from From, To, Cc, Sender and Reply-To headers.
  void LearnHeaders(std::string_view headers);

  // The pair as it is stored: an Internet address where one can be had, else what there is; a
  // missing name is the address; "no name" and "no address" where there is neither.
  intake::AddressPair Resolve(const std::string& name, const std::string& address,
                              const std::string& smtpAddress) const;

 private:
  std::map<std::string, std::string> byEntry_;  // folded
  std::map<std::string, std::string> byName_;   // folded
};

// An Internet address, as opposed to a directory entry or a name.
bool IsInternetAddress(std::string_view address);

}  // namespace tarnwick::outlook
