// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The open repository: its two connections and ten long-lived recordsets. Exactly one is open at a
// time. Routines report their own errors and return false.
#pragma once

#include <cstdint>
#include <string>

#include "database/connection.h"
#include "database/recordset.h"

namespace tarnwick::repository {

struct OpenedRepository {
  jet::Connection ParameterConnection;   // emlParameter.twr
  jet::Connection RepositoryConnection;  // Tarnwick.twr
  std::string RepositoryFolder;          // with its separator
  std::string Mark;           // of a protected one (file_key.h); "": the program's password
  bool WasNotClosed = false;  // by who had it open last: a crash, a kill, a power cut
  // Some message of it may be left by half (table Unfinished): spares the look where none is.
  bool MayHoldUnfinished = false;

  jet::Recordset EmailRecordset;
  jet::Recordset AttachmentRecordset;
  jet::Recordset FileRecordset;
  jet::Recordset ContactRecordset;
  jet::Recordset OwnAddressRecordset;
  jet::Recordset RejectRecordset;
  jet::Recordset CcRecordset;
  jet::Recordset ToRecordset;
  jet::Recordset ProjectRecordset;
  jet::Recordset ContactAddressRecordset;
};

// The one instance; its connections are closed while no repository is open.
OpenedRepository& Repository();

// Short forms for the statements of other rooms.
jet::Connection& RepositoryDb();
jet::Connection& ParameterDb();

// The password of every database file of the program, put together anew at each call.
std::string DatabasePassword();

// Opens dataSource with the program's password, whatever password is given; a file that its owner
// protects with the key that is known for it (keys.h).
bool twSetConnection(jet::Connection& connection, const std::string& dataSource,
                     const std::string& password);

// Asks for the password of a protected repository unless its key is known.
bool OpenRepository(bool clearAll);
void DisconnectRepository();
// Closes the repository and forgets the key of a protected one: OpenRepository asks for its
// password again.
void LockRepository();
bool ClearRepository();
// After rows were copied in from another file: no message or contact gets a key that rows left of a
// deleted one still name. Opening does it as well. Throws Error.
void ReserveKeys();

// Spends some milliseconds on what searches for texts need to be quick; true when nothing is left
// to do. For a program that has nothing else to do just now.
bool PrepareSearch(int64_t milliseconds);

// True when the error is nothing but the stop command ending a statement.
bool IsStop(const Error& error);

// True when the repository holds no message.
bool HasNoEmail();
// Sets RepositoryIsEmpty anew after messages have come or gone; a full load that the options asked
// for stays asked for.
void NoteWhetherEmpty();
// Reads the mailer options and RepositoryIsEmpty of the repository just opened.
void ReadOptions();

// Closes the open repository and opens the one in folder, which becomes the user's. The list is the
// caller's to load anew. A folder that can't be opened leaves the former repository open.
bool SwitchRepository(const std::string& folder);

// The commands "&Create Repository" and "&Open Repository" for a chosen folder: the checks, the
// messages, the copy of the template and the switch. True when the repository was switched.
bool CreateRepositoryIn(std::string folder);
bool OpenRepositoryIn(std::string folder);

}  // namespace tarnwick::repository
