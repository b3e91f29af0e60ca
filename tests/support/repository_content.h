// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Fills the open repository with varied rows, and writes repositories down so that two can be
// compared row by row.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "database/connection.h"
#include "intake/mail_message.h"

namespace tarnwick::testing {

// Message number n of a varied lot: both directions and neither, recipients, attachments, notes,
// HTML, other scripts, quotation marks.
intake::MailMessage VariedMessage(int number);
// Its raw file: some are empty, some take several rows, all hold bytes of every kind.
std::string VariedFile(int number);
// Stores messages first .. first + count - 1, everyone's mail accepted.
void StoreVariedMessages(int count, int first = 0);
// Rows in the tables that no message fills: rules, own addresses, users, ignored messages, and hot
// marks and contact details.
void StoreRulesAndMarks();

// Exports every message of the open repository into a file.
void ExportAll(const std::string& file);

// A table's rows in order, each "column=value" by column, Null told from "". Columns in without are
// left out.
std::vector<std::string> DumpTable(jet::Connection& connection, const std::string& table,
                                   const std::vector<std::string>& without = {});
// Every table but ObjectList.
std::map<std::string, std::vector<std::string>> DumpRepository(jet::Connection& connection);
// The same of a file.
std::map<std::string, std::vector<std::string>> DumpFile(const std::string& file);

// The rows of the open repository in a file as former versions made them: without these columns of
// Email and the tables that came later.
void MakeFormerFile(const std::string& file, const std::vector<std::string>& without,
                    int version = 1);

// Every message of a repository by its entry identifier, with everything that hangs on it. What
// belongs to the repository is left out, identifiers and marks; withMarks adds the latter.
std::map<std::string, std::string> AllMessages(jet::Connection& connection, bool withMarks = false);

}  // namespace tarnwick::testing
