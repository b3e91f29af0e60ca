// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/contact_book.h"

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/store_message.h"
#include "platform/charset.h"
#include "repository/repository.h"

namespace tarnwick::contacts {

namespace {

using repository::RepositoryDb;

std::string NameCondition(std::string_view nameFilter) {
  return "[Name] LIKE '%" + core::SanitizeFilterText(platform::EnsureUtf8(nameFilter)) + "%'";
}

std::string ContactQuery(int64_t id) {
  return "SELECT Name, PostAddress, PhoneHome, PhoneBuisness, PhoneMobiler, Remark, ID\r\n"
         "From MeContact WHERE ID=" +
         std::to_string(id);
}

}  // namespace

std::string ContactListQuery(std::string_view nameFilter) {
  std::string query =
      "SELECT Name, PostAddress as Address, "
      "PhoneHome As Home, PhoneBuisness AS Buisness, PhoneMobiler As Mobilers, "
      "Remark As Notes, ID\r\n"
      "FROM MeContact ";
  if (!nameFilter.empty()) query += " WHERE " + NameCondition(nameFilter);
  return query + "\r\nORDER BY Name";
}

bool OpenContactList(jet::Recordset& list, std::string_view nameFilter) {
  return core::GuardedRun("mctName_Change", [&] {
    if (list.IsOpen()) list.Close();
    list.Open(ContactListQuery(nameFilter), RepositoryDb(), jet::CursorType::kKeyset,
              jet::LockType::kOptimistic);
  });
}

int64_t CountBefore(std::string_view nameFilter, std::string_view name) {
  return core::Guarded("CountBefore", int64_t{0}, [&] {
    std::string query = "SELECT Count(*) AS Before FROM MeContact WHERE [Name] < '" +
                        core::QuoteSql(platform::EnsureUtf8(name)) + "'";
    if (!nameFilter.empty()) query += " AND " + NameCondition(nameFilter);
    jet::Recordset count;
    count.Open(query, RepositoryDb());
    return count.Field(0).AsInt();
  });
}

int64_t FindInList(jet::Recordset& list, std::string_view nameFilter, const Contact& contact) {
  return core::Guarded("FindInList", int64_t{0}, [&] {
    int64_t row = CountBefore(nameFilter, contact.Name) + 1;
    // Contacts of one name stand side by side; there are few of them.
    for (; row <= list.RecordCount(); ++row) {
      list.SetAbsolutePosition(row);
      if (list.Field(kContactId).AsInt() == contact.ID) return row;
      if (!platform::EqualIgnoringCase(list.Field(kName).AsText(), contact.Name)) break;
    }
    return int64_t{0};
  });
}

std::optional<Contact> ReadContact(int64_t id) {
  return core::Guarded("frmContact_Load", std::optional<Contact>(), [&] {
    jet::Recordset row;
    row.Open(ContactQuery(id), RepositoryDb());
    std::optional<Contact> contact;
    if (row.Eof()) return contact;
    contact = Contact{id,
                      row.Field("Name").AsText(),
                      row.Field("PostAddress").AsText(),
                      row.Field("PhoneHome").AsText(),
                      row.Field("PhoneBuisness").AsText(),
                      row.Field("PhoneMobiler").AsText(),
                      row.Field("Remark").AsText()};
    return contact;
  });
}

bool WriteContact(const Contact& contact) {
  return core::Guarded("frmContact_Unload", false, [&] {
    jet::Recordset row;
    row.Open(ContactQuery(contact.ID), RepositoryDb(), jet::CursorType::kKeyset,
             jet::LockType::kOptimistic);
    if (row.Eof()) {
      core::ShowMessage("The contact has been deleted. The changes can't be saved.");
      return false;
    }
    row.SetField("PostAddress", contact.PostAddress);
    row.SetField("Name", contact.Name);
    row.SetField("PhoneBuisness", contact.PhoneBuisness);
    row.SetField("PhoneHome", contact.PhoneHome);
    row.SetField("PhoneMobiler", contact.PhoneMobiler);
    row.SetField("Remark", contact.Remark);
    row.Update();
    return true;
  });
}

std::vector<ContactAddress> ReadAddresses(int64_t contactId) {
  return core::Guarded("ReadAddresses", std::vector<ContactAddress>(), [&] {
    std::vector<ContactAddress> addresses;
    jet::Recordset rows;
    rows.Open("SELECT Address, ID From ContactEmail WHERE ContactID=" + std::to_string(contactId),
              RepositoryDb());
    for (; !rows.Eof(); rows.MoveNext()) {
      addresses.push_back({rows.Field("ID").AsInt(), rows.Field("Address").AsText()});
    }
    return addresses;
  });
}

namespace {

std::string WhatGoesWith(int64_t id) {
  return core::Guarded("ctDelete_Click", std::string(), [&] {
    const std::string key = std::to_string(id);
    jet::Recordset name;
    name.Open("SELECT Name FROM MeContact WHERE ID=" + key, RepositoryDb());
    jet::Recordset emails;
    emails.Open("SELECT Count(*) AS Messages FROM Email WHERE FromTo=" + key, RepositoryDb());
    std::string messages = emails.Field(0).AsText();
    return (name.Eof() ? std::string() : name.Field(0).AsText()) + " goes, and with the contact " +
           (messages == "1" ? "1 message" : messages + " messages") + ".";
  });
}

}  // namespace

bool DeleteContact(int64_t id) {
  if (id == 0) {
    ShowNothingSelected();
    return false;
  }
  if (core::State().LoadIsRunning) {
    core::ShowMessage("Mail is being loaded. A contact can be deleted when that has ended.");
    return false;
  }
  if (!core::AskBeforeLoss("Are you realy want to delete the  contact and contact's email.",
                           WhatGoesWith(id))) {
    return false;
  }
  return core::GuardedRun("ctDelete_Click", [&] {
    const std::string key = std::to_string(id);
    jet::CommitGroup group(RepositoryDb());
    RepositoryDb().Execute("DELETE * FROM MeContact WHERE ID=" + key);
    RepositoryDb().Execute("DELETE * FROM Email WHERE FromTo=" + key);
    RepositoryDb().Execute("DELETE * FROM ContactEmail WHERE ContactID=" + key);
    RepositoryDb().EndUnit();
    group.End();
  });
}

bool AddAddress(int64_t contactId, const std::string& address) {
  if (address.empty()) return false;
  if (address.find('.') == std::string::npos || address.find('@') == std::string::npos) {
    core::ShowMessage("Invalid email address");
    return false;
  }
  intake::AddEmailID(address, contactId);
  return true;
}

bool DeleteAddress(const ContactAddress& address) {
  // The wording is that of the question about a message.
  if (!core::AskBeforeLoss("Are you realy want to delete the email with subject " + address.Address,
                           "The address leaves the contact; its messages stay.")) {
    return false;
  }
  return core::GuardedRun("mctDeleteAddress_Click", [&] {
    RepositoryDb().Execute("DELETE * FROM ContactEmail WHERE ID=" + std::to_string(address.ID));
  });
}

Leave SaveIfChanged(const Contact& before, const Contact& after) {
  if (after == before) return Leave::kUnchanged;
  if (!core::AskYesNo("Information was changed. Would you like to save it?")) {
    return Leave::kDiscarded;
  }
  return WriteContact(after) ? Leave::kSaved : Leave::kNotSaved;
}

void ShowNothingSelected() {
  core::ShowMessage("There isn't selected row.");
}

}  // namespace tarnwick::contacts
