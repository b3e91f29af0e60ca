// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The database under the program's own statements: storing messages of 5 KB, and listing and
// searching a repository of 100,000 of them.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "database/connection.h"
#include "database/recordset.h"
#include "repository/schema.h"
#include "support/temp_folder.h"

namespace tarnwick {
namespace {

constexpr int kListedMessages = 100000;
constexpr int kScreenRows = 40;

class Mailbox {
 public:
  Mailbox() {
    std::string path = folder_.File("mail.twr");
    jet::CreateDatabaseFile(path, "benchmark", repository::RepositoryTables(), 1);
    connection.SetProperty(jet::kDataSourceProperty, path);
    connection.SetProperty(jet::kPasswordProperty, "benchmark");
    connection.Open();
    for (int i = 0; i < 3000; i++) words_.push_back(Word());
    contacts_.Open("SELECT * FROM MeContact ", connection, jet::CursorType::kKeyset,
                   jet::LockType::kPessimistic);
    for (auto [recordset, table] :
         {std::pair{&email_, "Email"}, {&to_, "ToRecipient"}, {&files_, "FileRepository"}}) {
      recordset->Open(table, connection, jet::CursorType::kKeyset, jet::LockType::kPessimistic,
                      jet::CommandType::kTable);
    }
    connection.BeginGroup();
  }

  // What storing a message does to the database.
  void Store() {
    std::string number = std::to_string(++stored_);
    std::string key = "<" + std::to_string(stored_ * 7919) + "@example.org>_20050307123456";
    for (const char* test : {"SELECT ID FROM IgnoredEmail WHERE MessageID='",
                             "SELECT ID FROM Email WHERE EntryID='"}) {
      jet::Recordset known;
      known.Open(test + key + "'", connection);
      if (!known.Eof()) std::abort();
    }
    std::string name = "Person " + std::to_string(random_() % 2000);
    std::string body = Text(5000);
    int64_t id = AddEmail(key, name, body);
    for (unsigned i = 0; i < (stored_ % 10 == 0 ? 2u : 0u); i++) {
      connection.Execute("INSERT INTO Attachment (EmailID, FileName) VALUES (" +
                         std::to_string(id) + ", 'file" + std::to_string(random_() % 500) +
                         ".doc')");
    }
    email_.SetField("FromTo", Contact(name));
    to_.AddNew();
    to_.SetField("EmailID", id);
    to_.SetField("Address", "ann@example.org");
    to_.SetField("Name", "Ann");
    to_.Update();
    email_.Update();
    files_.AddNew();
    files_.SetField("FileID", id);
    files_.SetField("FileBody", jet::Bytes{std::move(body)});
    files_.Update();
    connection.EndUnit();
  }

  jet::Connection connection;

 private:
  std::string Word() {
    constexpr std::string_view kLetters = "etaoinshrdlucmfwypvbgkjqxz";
    std::string word(2 + random_() % 9, ' ');
    for (char& c : word) c = kLetters[(random_() % 26) * (random_() % 26) / 26];
    return word;
  }

  std::string Text(size_t length) {
    std::string text;
    while (text.size() < length) text += words_[random_() % words_.size()] + " ";
    return text;
  }

  int64_t AddEmail(const std::string& key, const std::string& name, const std::string& body) {
    email_.AddNew();
    email_.SetField("Application", "Outlook Express");
    email_.SetField("Folder", "Inbox");
    email_.SetField("Body", body);
    email_.SetField("Direction", random_() % 4 != 0 ? "In" : "Out");
    int64_t time = 1100000000 + stored_ * 300;
    email_.SetField("CreationTime", DateTime::FromSeconds(time));
    email_.SetField("ReceivedTime", DateTime::FromSeconds(time + random_() % 100000));
    email_.SetField("EntryID", key);
    email_.SetField("NameFrom", name);
    email_.SetField("AddressFrom", "someone@example.org");
    email_.SetField("Subject", "Re: " + Text(20));
    email_.SetField("FilesNum", stored_ % 10 == 0 ? 2 : 0);
    email_.SetField("Charset", "utf-8");
    email_.Update();
    return email_.Field("ID").AsInt();
  }

  int64_t Contact(const std::string& name) {
    contacts_.Requery();
    contacts_.Find("Name = '" + name + "'");
    if (contacts_.Eof()) {
      contacts_.AddNew();
      contacts_.SetField("Name", name);
      contacts_.Update();
    }
    return contacts_.Field("ID").AsInt();
  }

  testing::TempFolder folder_;
  std::mt19937 random_{7};
  std::vector<std::string> words_;
  int64_t stored_ = 0;
  jet::Recordset email_;
  jet::Recordset to_;
  jet::Recordset files_;
  jet::Recordset contacts_;
};

void StoreMessage(benchmark::State& state) {
  Mailbox mailbox;
  for (auto _ : state) mailbox.Store();
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(StoreMessage)->Iterations(20000)->Unit(benchmark::kMicrosecond)->UseRealTime();

Mailbox& FullMailbox() {
  static std::unique_ptr<Mailbox> mailbox = [] {
    auto made = std::make_unique<Mailbox>();
    for (int i = 0; i < kListedMessages; i++) made->Store();
    made->connection.EndGroup();
    return made;
  }();
  return *mailbox;
}

// A filter change as the person waits for it: the list, its counts and the first rows.
void ListFirstScreen(benchmark::State& state, const std::string& condition,
                     const std::string& order) {
  Mailbox& mailbox = FullMailbox();
  const std::string tables =
      "FROM (Email LEFT JOIN MeContact ON Email.FromTo = MeContact.ID)\r\n"
      "LEFT JOIN Attachment ON Email.ID = Attachment.EmailID\r\n"
      "WHERE ReceivedTime BETWEEN #01/01/1990 00:00:00# AND #12/31/2030 23:59:59#" +
      condition;
  for (auto _ : state) {
    jet::Recordset list;
    list.Open(
        "SELECT DISTINCT Format$(Email.ReceivedTime, 'Short Date') & ' ' & "
        "Format$(Email.ReceivedTime, 'hh:mm') As Received, Email.Subject, MeContact.Name AS "
        "FromTo, Email.Direction, Email.Active, Email.ID, Email.EmailImportance, "
        "Email.Application, Email.ReceivedTime " +
            tables + "\r\nORDER BY " + order,
        mailbox.connection, jet::CursorType::kKeyset, jet::LockType::kOptimistic);
    benchmark::DoNotOptimize(list.RecordCount());
    jet::Recordset incoming;
    incoming.Open("SELECT Count(Email.ID) AS CountOfIN " + tables + " AND Direction='In'",
                  mailbox.connection);
    benchmark::DoNotOptimize(incoming.Field("CountOfIN").AsInt());
    for (int row = 0; row < kScreenRows && !list.Eof(); row++, list.MoveNext()) {
      for (int field = 0; field < list.FieldCount(); field++) {
        benchmark::DoNotOptimize(list.Field(field));
      }
    }
  }
}
#define LIST(name, condition, order) \
  BENCHMARK_CAPTURE(ListFirstScreen, name, condition, order)->Unit(benchmark::kMillisecond)
LIST(ByDate, "", "Email.ReceivedTime DESC");
LIST(BySubject, "", "Email.Subject");
LIST(ByName, "", "MeContact.Name");
LIST(ByDirection, "", "Email.Direction DESC");
LIST(WithName, " AND INSTR(MeContact.Name, 'son 12') <> 0 ", "Email.ReceivedTime DESC");
LIST(WithSubject, " AND INSTR(Email.Subject, 'sto') <> 0", "Email.ReceivedTime DESC");
LIST(WithAttachment, " AND Attachment.FileName Like '%le12%'", "Email.ReceivedTime DESC");
LIST(WithText, " AND Email.Body Like '%quarter%'", "Email.ReceivedTime DESC");

}  // namespace
}  // namespace tarnwick

BENCHMARK_MAIN();
