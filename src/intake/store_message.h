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
#include "intake/prepared_message.h"
#include "intake/raw_message.h"
#include "intake/written_text.h"

namespace tarnwick::intake {

// A stored file's row holds at most this many bytes; embedded in every repository, do not change.
inline constexpr size_t kFileRecordLength = 32767;

// raw: the raw text, as a rule just its file's path. application: the source label stored.
// skipAcceptance != 0 bypasses the sender rules. identity: the Outlook Express identity or Outlook
// profile. Both labels stand in the message from then on. ending, where it is given, tells what
// became of the message: kStored when all of it is there, kUnreadable when an error,
// core::State().LastReportedError, left none of it or a part. rows: of this very message, where
// they were packed ahead.
void dbSaveMesage(const RawMessage& raw, MailMessage& message, const std::string& application,
                  int16_t skipAcceptance, const std::string& identity = {},
                  Ending* ending = nullptr, const PackedRows* rows = nullptr);

// MeContact.ID of a name, added with its address when new; 0 for an empty name.
int64_t GetContactId(const std::string& name, const std::string& address);
// Makes sure that ContactEmail holds the pair.
void AddEmailID(const std::string& address, int64_t contactId);
void dbSaveRecipient(int64_t emailId, const std::string& name, const std::string& address,
                     jet::Recordset& recordset);
// tblProject.ID of a name, added when new.
int64_t dbSaveProject(const std::string& projectName);
// The raw file as FileRepository rows of at most 32767 bytes.
void FileToDB(const RawMessage& raw, int64_t emailId, const std::string& application,
              const PackedRows* rows = nullptr);

// The user's own addresses.
void dbSaveMeAddress(const std::string& address, const std::string& name,
                     const std::string& application);
bool IsFromMe(const std::string& address);

}  // namespace tarnwick::intake
