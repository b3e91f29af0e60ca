// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/list_query.h"

#include <cassert>
#include <utility>

#include "core/guard.h"
#include "core/text.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

using jet::CursorType;
using jet::LockType;
using repository::ListColumn;

static_assert(repository::kSortColumns.size() == static_cast<size_t>(ListSort::kDirection));

// False when the person stopped the search for it; the list's own query is stopped next.
bool HasRow(const std::string& query) {
  try {
    jet::Recordset rows;
    rows.Open(query, repository::RepositoryDb());
    return !rows.Eof();
  } catch (const Error& error) {
    if (!repository::IsStop(error)) throw;
    return false;
  }
}

bool IsListed(const std::string& name, const std::string& query) {
  return SoughtWord(name) != name && HasRow(query + core::QuoteSql(name) + "'");
}

// Whether a WHERE clause asks for files, whose join multiplies a message.
bool AsksForFiles(const std::string& where) {
  return where.find("Attachment.") != std::string::npos;
}

// SQL of a list column, or that of the column of Email which it is.
std::string OrOfEmail(std::string_view sql, const ListColumn& column) {
  return sql.empty() ? "Email." + std::string(column.name) : std::string(sql);
}

void Append(std::string& list, const std::string& item) {
  if (!list.empty()) list += ", ";
  list += item;
}

}  // namespace

void OpenListOn(jet::Recordset& list, const std::string& query) {
  list.Open(query, repository::RepositoryDb(), CursorType::kKeyset, LockType::kOptimistic,
            jet::CommandType::kText);
}

std::string SoughtWord(const std::string& typed) {
  return std::string(core::Trim(core::SanitizeFilterText(typed)));
}

BoardState& Board() {
  static BoardState state;
  return state;
}

void ResetBoard() {
  Board() = BoardState();
}

void MarkListed(ListFilter& filter) {
  core::GuardedRun("MarkListed", [&] {
    filter.FromToIsListed =
        IsListed(filter.FromTo, "SELECT TOP 1 ID FROM MeContact WHERE Name = '");
    filter.FileNameIsListed =
        IsListed(filter.FileName, "SELECT TOP 1 EmailID FROM Attachment WHERE FileName = '");
  });
}

std::string BuildListWhere(const ListFilter& filter) {
  return "WHERE ReceivedTime BETWEEN " + FormatFilterDate(filter.DateFrom, true) + " AND " +
         FormatFilterDate(filter.DateTo, false) + ListConditions(filter);
}

std::string ListConditions(const ListFilter& filter) {
  std::string where;
  if (!filter.UserName.empty()) {
    where += " AND Email.UserName='" + core::QuoteSql(filter.UserName) + "'";
  }
  if (filter.Direction == ListDirection::kIn) where += " AND Direction = 'In'";
  if (filter.Direction == ListDirection::kOut) where += " AND Direction = 'Out'";
  if (filter.Active) where += " AND Active = '+'";
  if (!filter.FromTo.empty()) where += " AND " + ContactCondition(filter);
  if (!filter.FileName.empty()) where += " AND " + AttachmentCondition(filter);
  if (!filter.Subject.empty()) where += " AND " + SubjectCondition(filter);
  if (!filter.MailText.empty()) where += " AND " + MailTextCondition(filter);
  if (filter.AttachedFile) where += " AND FilesNum <> 0";
  return where;
}

std::string ContactCondition(const ListFilter& filter) {
  assert(!filter.FromTo.empty());
  std::string name =
      filter.FromToIsListed ? core::QuoteSql(filter.FromTo) : SoughtWord(filter.FromTo);
  return "INSTR(MeContact.Name, '" + name + "') <> 0 ";
}

std::string AttachmentCondition(const ListFilter& filter) {
  assert(!filter.FileName.empty());
  if (filter.FileNameIsListed) {
    return "INSTR(Attachment.FileName, '" + core::QuoteSql(filter.FileName) + "') <> 0";
  }
  return "Attachment.FileName Like '%" + SoughtWord(filter.FileName) + "%'";
}

std::string SubjectCondition(const ListFilter& filter) {
  return "INSTR(Email.Subject, '" + SoughtWord(filter.Subject) + "') <> 0";
}

std::string MailTextCondition(const ListFilter& filter) {
  return "Email.Body Like '%" + SoughtWord(filter.MailText) + "%'";
}

std::string ListSortClause(const ListFilter& filter) {
  std::string sort;
  for (const ListColumn& column : repository::kSortColumns) {
    if (static_cast<ListSort>(column.sort) != filter.SortBy) continue;
    sort = "ORDER BY " + OrOfEmail(column.sortedBy, column);
  }
  if (filter.SortOrder == ListOrder::kDescending) sort += " DESC";
  return sort;
}

std::string ListQueryText(const std::string& where, const std::string& sort) {
  std::string columns;
  for (const ListColumn& column : repository::kListColumns) {
    Append(columns, OrOfEmail(column.expression, column));
  }
  return "SELECT DISTINCT " + columns +
         " \r\n"
         "FROM (Email "
         "LEFT JOIN MeContact ON Email.FromTo = MeContact.ID)"
         "\r\n"
         "LEFT JOIN Attachment ON Email.ID = Attachment.EmailID"
         "\r\n" +
         where + "\r\n" + sort;
}

std::string PlaceholderQueryText() {
  std::string columns;
  for (const ListColumn& column : repository::kListColumns) {
    if (!column.isInPlaceholder) continue;
    bool isOther = !column.placeholder.empty();
    Append(columns, OrOfEmail(isOther ? column.placeholder : column.expression, column));
  }
  return "SELECT " + columns +
         " \r\n"
         "FROM EmailOne AS Email ";
}

std::string CountQueryText(const std::string& where) {
  return "SELECT Count(Email.ID) AS CountOfIN "
         "\r\n"
         "FROM (Email LEFT JOIN MeContact ON Email.FromTo = MeContact.ID)"
         "\r\n"
         "LEFT JOIN Attachment ON Email.ID = Attachment.EmailID"
         "\r\n" +
         (where.empty() ? "WHERE Direction='In'" : where + " AND Direction='In'");
}

bool OpenEmailList(const std::string& where) {
  return core::Guarded("OpenEmailList", false, [&] {
    BoardState& board = Board();
    board.Found.run.reset();
    // Opened aside, so that a query that fails leaves the grid what it shows.
    jet::Recordset list;
    bool placeholder = false;
    try {
      OpenListOn(list, ListQueryText(where, ListSortClause(board.Filter)));
      if (IsSearching()) BeginSearch(list);
      placeholder = list.Eof();
    } catch (const Error& error) {
      if (!repository::IsStop(error)) throw;
      return false;
    }
    if (placeholder) {
      list.Close();
      OpenListOn(list, PlaceholderQueryText());
    }
    board.ListRecordset = std::move(list);
    board.ListIsPlaceholder = placeholder;
    board.LastWhere = where;
    return true;
  });
}

bool RequeryEmailList() {
  return core::Guarded("RequeryEmailList", false, [] {
    BoardState& board = Board();
    board.Found.ForgetCounts();
    board.ListRecordset.Requery();
    // The last row has gone: the query is built afresh and brings the placeholder.
    if (board.ListRecordset.RecordCount() < 1) return OpenEmailList(BuildListWhere(board.Filter));
    return true;
  });
}

int64_t CountListed() {
  return core::Guarded("CountListed", int64_t{0}, [] {
    BoardState& board = Board();
    return board.ListIsPlaceholder ? 0 : board.ListRecordset.RecordCount();
  });
}

int64_t CountIncoming() {
  return core::Guarded("CountIncoming", int64_t{0}, [] {
    if (IsSearching()) return CountFoundIncoming();
    jet::Recordset rows;
    try {
      rows.Open(CountQueryText(Board().LastWhere), repository::RepositoryDb());
      return rows.Eof() ? 0 : rows.Field("CountOfIN").AsInt();
    } catch (const Error& error) {
      if (!repository::IsStop(error)) throw;
      return int64_t{-1};
    }
  });
}

int64_t CountReceived() {
  return core::Guarded("CountReceived", int64_t{0}, [] {
    if (IsSearching()) return CountFoundIncoming();
    std::string where = Board().LastWhere;
    where += where.empty() ? "WHERE Direction='In'" : " AND Direction='In'";
    jet::Recordset rows;
    try {
      if (AsksForFiles(where)) {
        OpenListOn(rows, ListQueryText(where, ""));
        return rows.RecordCount();
      }
      rows.Open(
          "SELECT Count(Email.ID) AS CountOfIN FROM Email LEFT JOIN MeContact ON "
          "Email.FromTo = MeContact.ID " +
              where,
          repository::RepositoryDb());
      return rows.Eof() ? 0 : rows.Field("CountOfIN").AsInt();
    } catch (const Error& error) {
      if (!repository::IsStop(error)) throw;
      return int64_t{-1};
    }
  });
}

std::string CountsText(int64_t total, int64_t incoming) {
  int64_t in = total >= incoming ? incoming : total;
  return std::to_string(total) + "; " + std::to_string(in) + " In; " + std::to_string(total - in) +
         " Out";
}

}  // namespace tarnwick::board
