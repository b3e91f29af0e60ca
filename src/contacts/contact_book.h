// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The contact book: the rows of MeContact and their addresses in ContactEmail, as the contact
// windows find, change and delete them. Texts are UTF-8. Routines report their own errors; those
// that ask the person say so.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/recordset.h"

namespace tarnwick::contacts {

struct Contact {
  int64_t ID = 0;
  std::string Name;
  std::string PostAddress;
  std::string PhoneHome;
  std::string PhoneBuisness;
  std::string PhoneMobiler;
  std::string Remark;
  friend bool operator==(const Contact&, const Contact&) = default;
};

struct ContactAddress {
  int64_t ID = 0;
  std::string Address;
  friend bool operator==(const ContactAddress&, const ContactAddress&) = default;
};

// Columns of the list query, in its order; the last one is the contact's key.
enum ContactColumn {
  kName,
  kAddress,
  kHome,
  kBuisness,
  kMobilers,
  kNotes,
  kContactId,
  kContactColumns
};

// The contacts whose name holds nameFilter, by name; all of them for an empty filter.
std::string ContactListQuery(std::string_view nameFilter);
// Runs the list query; list is closed before when it is open. False when it could not be run, the
// list then being closed.
bool OpenContactList(jet::Recordset& list, std::string_view nameFilter);

// How many contacts of the list stand before the place where name would be; a lookup, never a walk.
int64_t CountBefore(std::string_view nameFilter, std::string_view name);
// The row of a contact in the list opened with nameFilter, from 1; 0 when it is not in it.
int64_t FindInList(jet::Recordset& list, std::string_view nameFilter, const Contact& contact);

// nullopt when there is no such contact (any more).
std::optional<Contact> ReadContact(int64_t id);
// Writes the fields back to the row of contact.ID. False when that is gone, which is shown, or when
// it can't be written.
bool WriteContact(const Contact& contact);
// Empty for a contact that has none or is gone.
std::vector<ContactAddress> ReadAddresses(int64_t contactId);

// Deletes the contact, its addresses and the messages whose correspondent it is, after a question.
// Their recipient, attachment and file rows stay. False when nothing was deleted. An id of 0 is no
// contact: messages without a correspondent refer to it.
bool DeleteContact(int64_t id);

// An address as the person typed it: refused with a message unless it holds both "." and "@"; an
// empty one does nothing. True when the contact has the address now.
bool AddAddress(int64_t contactId, const std::string& address);
// After a question; false when it stays.
bool DeleteAddress(const ContactAddress& address);

enum class Leave { kUnchanged, kSaved, kDiscarded, kNotSaved };
// Leaving the editor: when the fields differ the person is asked whether to save them.
Leave SaveIfChanged(const Contact& before, const Contact& after);

// "There isn't selected row."
void ShowNothingSelected();

}  // namespace tarnwick::contacts
