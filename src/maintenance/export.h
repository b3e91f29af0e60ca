// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// An export: the listed messages with their stored files, attachment names, recipients and projects
// in a new database file, with the identifiers they have. No contacts, own addresses or rules:
// their absence is what marks the file as an export. See backup.h for what is required while it
// runs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "database/recordset.h"
#include "maintenance/result.h"

namespace tarnwick::maintenance {

// Exports the messages of the list, which is queried anew first. Asks before an existing file is
// replaced, and replaces it only with a complete one. An empty list (or its placeholder row) is
// kDeclined, without a message. exported: how many messages, 0 unless kDone.
Result ExportEmails(const std::string& file, jet::Recordset& list, int64_t* exported = nullptr);

// Copies the rows whose keyColumn is in the list, "(1, 2, 3)", into the same table of a database
// file. rows: how many.
Result CopyRowsTo(std::string_view table, const std::string& file, std::string_view idList,
                  std::string_view keyColumn, int64_t* rows = nullptr);

}  // namespace tarnwick::maintenance
