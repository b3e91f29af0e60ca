// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/repository.h"

#include <array>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "database/new_file.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/keys.h"
#include "repository/parameter_store.h"
#include "repository/schema.h"

namespace tarnwick::repository {

namespace {

using core::State;
using jet::CommandType;
using jet::CursorType;
using jet::LockType;

struct RecordsetSource {
  jet::Recordset OpenedRepository::*recordset;
  std::string_view source;
  CursorType cursor;
  CommandType command;
};

// In the order in which they are opened.
constexpr std::array<RecordsetSource, 10> kRecordsets = {{
    {&OpenedRepository::EmailRecordset, "Email", CursorType::kKeyset, CommandType::kTable},
    {&OpenedRepository::AttachmentRecordset, "Attachment", CursorType::kKeyset,
     CommandType::kTable},
    {&OpenedRepository::FileRecordset, "FileRepository", CursorType::kKeyset, CommandType::kTable},
    {&OpenedRepository::ContactRecordset, "SELECT * FROM MeContact ", CursorType::kKeyset,
     CommandType::kText},
    {&OpenedRepository::OwnAddressRecordset, "SELECT * FROM MeAddress ", CursorType::kDynamic,
     CommandType::kText},
    {&OpenedRepository::RejectRecordset, "SELECT * FROM RejectSender ", CursorType::kDynamic,
     CommandType::kText},
    {&OpenedRepository::CcRecordset, "ccRecipient", CursorType::kDynamic, CommandType::kTable},
    {&OpenedRepository::ToRecordset, "ToRecipient", CursorType::kDynamic, CommandType::kTable},
    {&OpenedRepository::ProjectRecordset, "tblProject", CursorType::kDynamic, CommandType::kTable},
    {&OpenedRepository::ContactAddressRecordset, "SELECT * FROM ContactEmail", CursorType::kKeyset,
     CommandType::kText},
}};

void EmptyScratchFolder() {
  const std::string& folder = State().EmailFileFolder;
  for (const std::string& name : platform::ListFiles(folder)) {
    try {
      platform::RemoveFile(folder + name);
    } catch (const Error&) {
      // A file in use stays until the next opening.
    }
  }
}

void CommitBeforeQuestion() {
  try {
    if (RepositoryDb().IsOpen()) RepositoryDb().FlushGroup();
  } catch (const Error&) {
    core::ReportCurrentException("CommitBeforeQuestion", core::Report::kLog);
  }
}

void OpenRecordsets() {
  OpenedRepository& repository = Repository();
  for (const RecordsetSource& entry : kRecordsets) {
    (repository.*entry.recordset)
        .Open(entry.source, repository.RepositoryConnection, entry.cursor, LockType::kPessimistic,
              entry.command);
  }
}

bool HasRows(std::string_view table) {
  jet::Recordset rows;
  rows.Open(table, RepositoryDb(), CursorType::kKeyset, LockType::kReadOnly, CommandType::kTable);
  return !rows.Eof();
}

constexpr int kLocked = 5;  // the engine's numbers
constexpr int kNotADatabase = 26;

// What the engine's few words leave open, ": ..."; "" where nothing more is known.
std::string WhyNotOpened(int number, const std::string& file) {
  if (number == kLocked) return ": another program has " + file + " open";
  if (!platform::MayRead(file)) return ": " + file + " may not be read";
  if (!platform::FileExists(file)) return ": " + file + " is missing";
  if (platform::FileExists(file) && !platform::IsFolderWritable(platform::FolderOf(file))) {
    return ": the folder of " + file + " can't be written to";
  }
  if (number == kNotADatabase && !MarkOf(file).empty()) {
    return ": the password is right, but " + file + " is damaged";
  }
  return {};
}

// Throws Error.
void Connect(jet::Connection& connection, const std::string& dataSource) {
  connection.SetProvider(jet::kProvider);
  connection.SetProperty(jet::kDataSourceProperty, dataSource);
  connection.SetProperty(jet::kPasswordProperty, DatabasePassword());
  connection.SetPasswords(PasswordOf);
  try {
    connection.Open();
  } catch (const Error& error) {
    throw Error(error.Number(), error.Description() + WhyNotOpened(error.Number(), dataSource));
  }
}

// What a killed run left in the scratch folder lies there in clear: it goes first, whether or not
// anything can be opened. Only a program that is running keeps its own. Throws Error.
void OpenParameters(jet::Connection& connection) {
  connection.SetProperty(jet::kJournalProperty, jet::kJournalRollback);
  try {
    Connect(connection, State().AppFolder + kParameterFile);
  } catch (const Error& error) {
    if (error.Number() != kLocked) EmptyScratchFolder();
    throw;
  }
  EmptyScratchFolder();
}

// Where there is no room to bring the log into the file nothing is lost: the log stays beside it,
// and the next opening goes on from there. Whoever filled the disk has been told.
void CloseConnection(jet::Connection& connection) {
  try {
    connection.Close();
  } catch (const Error& error) {
    core::ReportCurrentException(
        "DisconnectRepository", core::IsDiskFull(error) ? core::Report::kLog : core::Report::kShow);
  }
}

// The folder checks that both commands begin with; false when the command ends there.
bool IsOtherFolder(std::string& folder) {
  if (folder.empty()) return false;
  folder = platform::WithSeparator(folder);
  if (folder == State().AppFolder) {
    core::ShowMessage("You have selected an application folder. You select other folder.");
    return false;
  }
  return true;
}

}  // namespace

OpenedRepository& Repository() {
  static OpenedRepository repository;
  return repository;
}

jet::Connection& RepositoryDb() {
  return Repository().RepositoryConnection;
}

jet::Connection& ParameterDb() {
  return Repository().ParameterConnection;
}

std::string DatabasePassword() {
  // One character at a time, so that the whole never lies in the program. It keeps a casual look
  // out; it is no secret from someone who has the program.
  constexpr std::array<int, 9> kCodes = {84, 119, 45, 107, 57, 113, 36, 82, 118};
  std::string password;
  for (int code : kCodes) password += static_cast<char>(code);
  return password;
}

bool twSetConnection(jet::Connection& connection, const std::string& dataSource,
                     const std::string& /*password*/) {
  return core::Guarded("twSetConnection", false, [&] {
    Connect(connection, dataSource);
    return true;
  });
}

bool OpenRepository(bool clearAll) {
  try {
    OpenedRepository& repository = Repository();
    DisconnectRepository();
    core::SetBeforeQuestion(CommitBeforeQuestion);
    OpenParameters(repository.ParameterConnection);
    jet::UpdateTables(repository.ParameterConnection, ParameterTables(), kSchemaVersion);
    repository.RepositoryFolder = GetRepositoryFolder();
    std::string file = repository.RepositoryFolder + kRepositoryFile;
    if (!Unlock(file)) {
      DisconnectRepository();
      return false;
    }
    repository.Mark = MarkOf(file);
    repository.WasNotClosed = jet::HasLog(file);
    Connect(repository.RepositoryConnection, file);
    jet::UpdateTables(repository.RepositoryConnection, RepositoryTables(), kSchemaVersion);
    repository.RepositoryConnection.KeepColumnCache(ListColumnCache());
    repository.RepositoryConnection.KeepTextIndex("Email", SearchedColumns());
    ReserveKeys();
    if (clearAll) ClearRepository();
    // Emptied only where it holds something: no opening has to be brought to the disk.
    if (HasRows("ObjectList")) {
      repository.RepositoryConnection.Execute("DELETE FROM ObjectList");
    }
    OpenRecordsets();
    repository.MayHoldUnfinished = HasRows("Unfinished");
    return true;
  } catch (...) {
    Error error = core::CurrentError();
    std::string text = std::to_string(error.Number()) + " " + error.Description();
    bool isForPassword = error.Number() == ErrorNumber::kWrongPassword;
    core::ShowError(isForPassword ? text : core::kAccessAdvice + ("\r\n" + text));
    DisconnectRepository();
    return false;
  }
}

void DisconnectRepository() {
  core::GuardedRun("DisconnectRepository", [] {
    OpenedRepository& repository = Repository();
    // What was shown or taken in from here does not outlast it.
    if (repository.RepositoryConnection.IsOpen()) EmptyScratchFolder();
    for (const RecordsetSource& entry : kRecordsets) {
      jet::Recordset& recordset = repository.*entry.recordset;
      if (recordset.IsOpen()) recordset.Close();
    }
  });
  CloseConnection(Repository().RepositoryConnection);
  CloseConnection(Repository().ParameterConnection);
}

void LockRepository() {
  DisconnectRepository();
  ForgetKeys();
}

bool PrepareSearch(int64_t milliseconds) {
  bool isReady = true;
  core::GuardedRun(
      "PrepareSearch",
      [&] {
        if (!RepositoryDb().IsOpen()) return;
        int64_t end = platform::TickMilliseconds() + milliseconds;
        isReady = RepositoryDb().CatchUpTextIndex(
            [&](int64_t, int64_t) { return platform::TickMilliseconds() < end; });
      },
      core::Report::kLog);
  return isReady;
}

bool ClearRepository() {
  return core::GuardedRun("ClearRepository", [] {
    for (const char* statement :
         {"DELETE * FROM Email", "DELETE * FROM Attachment", "DELETE * FROM FileRepository",
          "DELETE * FROM MeContact", "DELETE * FROM MeAddress", "DELETE * FROM RejectSender",
          "DELETE * FROM ccRecipient", "DELETE * FROM ToRecipient", "DELETE * FROM tblProject",
          "DELETE * FROM Email", "DELETE * FROM UserList", "DELETE * FROM ContactEmail",
          "DELETE * FROM IgnoredEmail", "DELETE * FROM Unfinished"}) {
      RepositoryDb().Execute(statement);
    }
  });
}

void ReserveKeys() {
  // Rows of a message that was deleted stay.
  static constexpr std::array<jet::Reference, 5> kOfMessages = {{{"Attachment", "EmailID"},
                                                                 {"FileRepository", "FileID"},
                                                                 {"ToRecipient", "EmailID"},
                                                                 {"ccRecipient", "EmailID"},
                                                                 {"Unfinished", "EmailID"}}};
  static constexpr std::array<jet::Reference, 1> kOfContacts = {{{"Email", "FromTo"}}};
  jet::ReserveKeys(RepositoryDb(), "Email", kOfMessages);
  jet::ReserveKeys(RepositoryDb(), "MeContact", kOfContacts);
}

bool IsStop(const Error& error) {
  return error.Number() == jet::kInterrupted && State().ImportCancelFlag;
}

bool HasNoEmail() {
  return core::Guarded("HasNoEmail", true, [] {
    jet::Recordset recordset;
    recordset.Open("SELECT Email.UserName From Email", RepositoryDb());
    return recordset.Eof();
  });
}

void NoteWhetherEmpty() {
  State().RepositoryIsEmpty = State().FullLoadAsked || HasNoEmail();
}

void ReadOptions() {
  NoteWhetherEmpty();
  ReadOptionFlags();
}

bool SwitchRepository(const std::string& folder) {
  std::string former = Repository().RepositoryFolder;
  // Stored first: opening reads the folder from the store.
  SetRepositoryFolder(folder);
  DisconnectRepository();
  if (OpenRepository(false)) {
    ForgetKeys(Repository().Mark);
    State().FullLoadAsked = false;
    ReadOptions();
    return true;
  }
  // The person still has the repository that was open.
  if (twSetConnection(ParameterDb(), State().AppFolder + kParameterFile, "")) {
    SetRepositoryFolder(former);
    if (OpenRepository(false)) ReadOptions();
  }
  return false;
}

bool CreateRepositoryIn(std::string folder) {
  return core::Guarded("mnCreateRepository", false, [&] {
    if (!IsOtherFolder(folder)) return false;
    std::string file = folder + kRepositoryFile;
    if (platform::FileExists(file)) {
      core::ShowMessage("Selected folder contain repository file " + file);
      return false;
    }
    jet::CopyIntoPlace(State().AppFolder + kTemplateFile, file);
    return SwitchRepository(folder);
  });
}

bool OpenRepositoryIn(std::string folder) {
  return core::Guarded("mnOpenRepository", false, [&] {
    if (!IsOtherFolder(folder)) return false;
    std::string file = folder + kRepositoryFile;
    if (!platform::FileExists(file)) {
      core::ShowMessage("Selected folder does not contain repository file " + file);
      return false;
    }
    return SwitchRepository(folder);
  });
}

}  // namespace tarnwick::repository
