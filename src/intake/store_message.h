// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Turns a finished MailMessage into the rows of the repository. Each routine traps its errors, logs
// them under its own name and returns; rows already written stay. A message that an error left by
// half is known as such (unfinished.h), counts as not stored, and is made whole when it is stored
// again.
#pragma once

#include <cstdint>
#include <string>

#include "database/recordset.h"
#include "intake/mail_message.h"
#include "intake/outcome.h"

namespace tarnwick::intake {

// A stored file's row holds at most this many bytes; embedded in every repository, do not change.
inline constexpr size_t kFileRecordLength = 32767;

// Subjects, names, addresses and the like are stored up to so many characters; the stored file has
// all of them.
inline constexpr size_t kMostShortText = 32767;

// messageFile: path of the raw text. application: the source label stored. skipAcceptance != 0
// bypasses the sender rules. identity: the Outlook Express identity or Outlook profile. Both labels
// stand in the message from then on. ending, where it is given, tells what became of the message:
// kStored when all of it is there, kUnreadable when an error, core::State().LastReportedError, left
// none of it or a part.
void dbSaveMesage(const std::string& messageFile, MailMessage& message,
                  const std::string& application, int16_t skipAcceptance,
                  const std::string& identity = {}, Ending* ending = nullptr);

// The key as it is stored in Email.EntryID, cut to so many characters: what tells two messages
// apart has to stand before.
inline constexpr size_t kMostKeyText = 255;
std::string StoredKey(const std::string& messageKey);

// MeContact.ID of a name, added with its address when new; 0 for an empty name.
int64_t GetContactId(const std::string& name, const std::string& address);
// Makes sure that ContactEmail holds the pair.
void AddEmailID(const std::string& address, int64_t contactId);
void dbSaveRecipient(int64_t emailId, const std::string& name, const std::string& address,
                     jet::Recordset& recordset);
// tblProject.ID of a name, added when new.
int64_t dbSaveProject(const std::string& projectName);
// The raw file as FileRepository rows of at most 32767 bytes. head, where it is given, gets the
// bytes of the first.
void FileToDB(const std::string& messageFile, int64_t emailId, const std::string& application,
              std::string* head = nullptr);

// The user's own addresses.
void dbSaveMeAddress(const std::string& address, const std::string& name,
                     const std::string& application);
bool IsFromMe(const std::string& address);

}  // namespace tarnwick::intake
