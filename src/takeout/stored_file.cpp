// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/stored_file.h"

#include "database/recordset.h"
#include "repository/repository.h"

namespace tarnwick::takeout {

std::optional<std::string> ReadStoredFile(int64_t id) {
  jet::Recordset rows;
  rows.Open(
      "SELECT FileBody FROM FileRepository WHERE FileID=" + std::to_string(id) + "\r\nORDER BY ID",
      repository::RepositoryDb());
  if (rows.Eof()) return std::nullopt;
  std::string bytes;
  for (; !rows.Eof(); rows.MoveNext()) bytes += rows.Field("FileBody").AsText();
  return bytes;
}

}  // namespace tarnwick::takeout
