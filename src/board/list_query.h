// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The message list: the statements behind it and the recordset that holds it. The texts are fixed
// to the byte; people's words enter them only through SanitizeFilterText.
#pragma once

#include <cstdint>
#include <string>

#include "board/conversation_list.h"
#include "board/found_list.h"
#include "board/list_filter.h"
#include "database/recordset.h"
#include "repository/email_fields.h"

namespace tarnwick::board {

using repository::FormatFilterDate;

// Columns of the list query that the program itself looks at, from 0. All of them, and what the
// placeholder row lacks of them, are told in repository/email_fields.h.
inline constexpr int kSubject = repository::ListIndex("Subject");
inline constexpr int kActive = repository::ListIndex("Active");
inline constexpr int kId = repository::ListIndex("ID");
inline constexpr int kImportance = repository::ListIndex("EmailImportance");
inline constexpr int kApplication = repository::ListIndex("Application");

struct BoardState {
  ListFilter Filter;
  // Kept for the life of the program and opened anew for every query.
  jet::Recordset ListRecordset;
  // The list holds the row of EmailOne because nothing matched.
  bool ListIsPlaceholder = false;
  std::string LastWhere;
  FoundState Found;
  ConversationState Conversations;
};

BoardState& Board();
void ResetBoard();  // closes the list

// Finds out whether the texts for names are whole ones of the boxes' lists. To be done before a
// WHERE clause is built of what a person chose or typed.
void MarkListed(ListFilter& filter);
std::string BuildListWhere(const ListFilter& filter);
// The same without its dates: conditions that each begin with " AND ".
std::string ListConditions(const ListFilter& filter);
// Its conditions on the tables joined to Email. REQUIRES: the filter has a FromTo, a FileName.
std::string ContactCondition(const ListFilter& filter);
std::string AttachmentCondition(const ListFilter& filter);
// Those on the texts of a message. REQUIRES: the filter has a Subject, a MailText.
std::string SubjectCondition(const ListFilter& filter);
std::string MailTextCondition(const ListFilter& filter);
// What a text of the filter is looked for as.
std::string SoughtWord(const std::string& typed);
std::string ListSortClause(const ListFilter& filter);

std::string ListQueryText(const std::string& where, const std::string& sort);
std::string PlaceholderQueryText();
std::string CountQueryText(const std::string& where);

// Opens a recordset of the list on one of its queries.
void OpenListOn(jet::Recordset& list, const std::string& query);
// Runs the list query with this WHERE clause, in the order of Board().Filter. Where something is
// searched for (found_list.h), the list begins with what was found at once. When nothing matches
// the list holds the placeholder row. On an error the list stays as it was; false, and reported
// unless the person stopped it (search_watch.h).
bool OpenEmailList(const std::string& where);
// Runs the same query again, after rows were changed or deleted.
bool RequeryEmailList();

// Listed messages; 0 while the list holds the placeholder.
int64_t CountListed();
// Incoming messages of the last WHERE clause. One with several attachments counts once for each.
int64_t CountIncoming();
// Incoming messages of the list, each once; -1 when the person stopped it.
int64_t CountReceived();
// "120; 75 In; 45 Out". More incoming than listed ones are taken as all that are listed.
std::string CountsText(int64_t total, int64_t incoming);

}  // namespace tarnwick::board
