// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/row_output.h"
#include "contacts/contact_book.h"

namespace tarnwick::app {

namespace {

std::vector<std::string> AddressesOf(int64_t contactId) {
  std::vector<std::string> addresses;
  for (contacts::ContactAddress& row : contacts::ReadAddresses(contactId)) {
    addresses.push_back(std::move(row.Address));
  }
  return addresses;
}

void PrintLine(int64_t id, const std::string& name, const std::vector<std::string>& addresses) {
  std::cout << id << '\t' << OneLine(name) << '\t';
  for (size_t i = 0; i < addresses.size(); ++i) {
    std::cout << (i == 0 ? "" : ", ") << OneLine(addresses[i]);
  }
  std::cout << '\n';
}

}  // namespace

int RunContacts(const std::vector<std::string>& words) {
  Arguments arguments(words, {"--name"}, {"--json"});
  if (!arguments.Operands().empty()) throw UsageError("contacts takes no operand");
  jet::Recordset list;
  if (!contacts::OpenContactList(list, arguments.Value("--name").value_or(""))) return kFailed;
  for (; !list.Eof() && std::cout.good(); list.MoveNext()) {
    int64_t id = list.Field(contacts::kContactId).AsInt();
    std::vector<std::string> addresses = AddressesOf(id);
    if (arguments.Has("--json")) {
      PrintJson(list, {{"Addresses", JsonArray(addresses)}});
    } else {
      PrintLine(id, list.Field(contacts::kName).AsText(), addresses);
    }
  }
  std::cout.flush();
  return std::cout.good() ? kDone : kFailed;
}

}  // namespace tarnwick::app
