// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/stored_file.h"

#include "core/text.h"
#include "database/recordset.h"
#include "intake/store_message.h"
#include "platform/locale.h"
#include "repository/repository.h"

namespace tarnwick::intake {

namespace {

void OpenPieces(jet::Recordset& pieces, const std::string& key) {
  jet::Recordset email;
  email.Open("SELECT ID FROM Email WHERE EntryID='" + core::QuoteSql(StoredKey(key)) + "'",
             repository::RepositoryDb());
  std::string id = email.Eof() ? "0" : email.Field("ID").AsText();
  pieces.Open("SELECT FileBody FROM FileRepository WHERE FileID=" + id + " ORDER BY ID",
              repository::RepositoryDb(), jet::CursorType::kKeyset);
}

std::string TimeLiteral(DateTime time) {
  return "#" + platform::FormatDate(time, "mm\\/dd\\/yyyy hh\\:nn\\:ss") + "#";
}

}  // namespace

int64_t StoredFileLength(const std::string& key) {
  jet::Recordset pieces;
  OpenPieces(pieces, key);
  if (pieces.Eof()) return -1;
  // All but the last are full.
  int64_t full = pieces.RecordCount() - 1;
  pieces.MoveLast();
  auto last = static_cast<int64_t>(pieces.Field("FileBody").AsText().size());
  return full * static_cast<int64_t>(kFileRecordLength) + last;
}

bool IsStoredFile(const std::string& key, const RawMessage& raw) {
  jet::Recordset pieces;
  OpenPieces(pieces, key);
  RawReader file(raw);
  uint64_t offset = 0;
  for (; !pieces.Eof(); pieces.MoveNext()) {
    std::string stored = pieces.Field("FileBody").AsText();
    if (file.Read(offset, stored.size()) != stored) return false;
    offset += stored.size();
  }
  return offset == file.Size() && offset > 0;
}

bool IsStoredFile(DateTime received, const RawMessage& raw) {
  jet::Recordset rows;
  rows.Open("SELECT EntryID FROM Email WHERE ReceivedTime = " + TimeLiteral(received),
            repository::RepositoryDb(), jet::CursorType::kKeyset);
  for (; !rows.Eof(); rows.MoveNext()) {
    if (IsStoredFile(rows.Field("EntryID").AsText(), raw)) return true;
  }
  return false;
}

bool IsLetterStored(const MailMessage& message) {
  jet::Recordset rows;
  rows.Open("SELECT ID, Subject, AddressFrom FROM Email WHERE CreationTime = " +
                TimeLiteral(message.SentTime),
            repository::RepositoryDb(), jet::CursorType::kKeyset);
  for (; !rows.Eof(); rows.MoveNext()) {
    if (rows.Field("Subject").AsText() == message.Subject &&
        rows.Field("AddressFrom").AsText() == message.FromAddress) {
      return true;
    }
  }
  return false;
}

}  // namespace tarnwick::intake
