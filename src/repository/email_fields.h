// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The columns of a message, each told once. The tables Email and EmailOne, their indexes and what
// the database keeps in memory of them, storing and merging (intake/message_fields.h), the list
// with its headers and widths, and the columns that tarnwick-cli prints all follow from this table:
// a new column is a row here and, where a message brings it, a member of MailMessage with a row
// there. The version of the tables (schema.h) goes up with it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "database/table_definition.h"

namespace tarnwick::repository {

// How wide a column of the list is until its width is stored.
enum class ListWidth : uint8_t {
  kHidden,
  kCaption,        // as its caption needs
  kSortedCaption,  // with room for the mark of the order
  kDate,           // as a date and a time need
  kCharacters,     // amount: so many
  kPixels,         // amount: so many
};

// A column of the message list. Numbers are places: from 1, each once, 0 for none.
struct ListColumn {
  // The grid's column; column 0 is the mark of important messages. Stored: do not renumber, new
  // columns go behind the last.
  int place = 0;
  const char* caption = nullptr;  // its name if nullptr
  ListWidth width = ListWidth::kHidden;
  int amount = 0;
  // In the list query; the column of Email if empty.
  std::string_view expression = {};
  // In the query for the row that stands for an empty list; as expression if empty.
  std::string_view placeholder = {};
  bool isInPlaceholder = true;
  // What choosing it as the order sorts by: the stored number of ListSort (board/list_filter.h),
  // and the SQL, the column of Email if empty.
  int sort = 0;
  std::string_view sortedBy = {};
  // Among the columns of "tarnwick-cli list". Scripts rely on it: do not renumber. Its JSON has
  // all columns of the list.
  int printed = 0;
  // In the list query; a width is stored under it. Set by the table for columns of Email.
  std::string_view name = {};
  jet::ColumnType type = jet::ColumnType::kText;
};

// What the list narrows by without a look at the message (database/table_definition.h).
enum class CacheUse : uint8_t { kNone, kDate, kKind, kReference };

struct EmailField {
  std::string_view name;
  jet::ColumnType type;  // a memo is packed when it is stored
  // A message brings it: it is stored from MailMessage and carried over by a merge. The program or
  // the person writes the others.
  bool isOfMessage = false;
  // Its place in the index by which the list is filtered; 0 for none.
  int filtered = 0;
  CacheUse cache = CacheUse::kNone;
  // Its place among the columns that the text index covers; 0 for none.
  int searched = 0;
  ListColumn list = {};
};

// In the order of the table's columns.
inline constexpr EmailField kEmailFields[] = {
    {.name = "ID", .type = jet::ColumnType::kAutoNumber, .list = {.place = 6, .printed = 1}},
    {.name = "EntryID", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "Application",
     .type = jet::ColumnType::kText,
     .isOfMessage = true,
     .list = {.place = 8}},
    {.name = "Identity", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "Folder", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "Parent", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "Direction",
     .type = jet::ColumnType::kText,
     .isOfMessage = true,
     .filtered = 2,
     .cache = CacheUse::kKind,
     .list = {.place = 4,
              .caption = "Direction",
              .width = ListWidth::kSortedCaption,
              .sort = 4,
              .printed = 3}},
    {.name = "CreationTime", .type = jet::ColumnType::kDateTime, .isOfMessage = true},
    {.name = "ReceivedTime",
     .type = jet::ColumnType::kDateTime,
     .isOfMessage = true,
     .filtered = 1,
     .cache = CacheUse::kDate,
     .list = {.place = 9, .isInPlaceholder = false, .printed = 2}},
    {.name = "gwTimeShift", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "Subject",
     .type = jet::ColumnType::kText,
     .isOfMessage = true,
     .filtered = 6,
     .searched = 2,
     .list = {.place = 2,
              .caption = "Subject",
              .width = ListWidth::kPixels,
              .amount = 420,
              .sort = 2,
              .printed = 6}},
    {.name = "Charset", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "Encoding", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "EmailImportance",
     .type = jet::ColumnType::kText,
     .isOfMessage = true,
     .list = {.place = 7}},
    {.name = "NameFrom", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "AddressFrom", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "FromToName", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "FromToAddress", .type = jet::ColumnType::kText, .isOfMessage = true},
    {.name = "FromTo",
     .type = jet::ColumnType::kLong,
     .filtered = 5,
     .cache = CacheUse::kReference,
     .list = {.place = 3,
              .caption = "From/To",
              .width = ListWidth::kCharacters,
              .amount = 28,
              .expression = "MeContact.Name AS FromTo",
              .placeholder = "' ' AS FromTo",
              .sort = 3,
              .sortedBy = "MeContact.Name",
              .printed = 5,
              .type = jet::ColumnType::kText}},
    {.name = "CountMailTo", .type = jet::ColumnType::kLong, .isOfMessage = true},
    {.name = "CountCC", .type = jet::ColumnType::kLong, .isOfMessage = true},
    {.name = "FilesNum",
     .type = jet::ColumnType::kLong,
     .isOfMessage = true,
     .filtered = 4,
     .cache = CacheUse::kKind},
    {.name = "UserName", .type = jet::ColumnType::kText},
    {.name = "ProjectID", .type = jet::ColumnType::kLong},
    {.name = "Active",
     .type = jet::ColumnType::kText,
     .filtered = 3,
     .cache = CacheUse::kKind,
     .list = {.place = 5, .caption = "Hot", .width = ListWidth::kCaption, .printed = 4}},
    // What the mail program knew of it, in the letters of intake/message_state.h; Null: nothing.
    {.name = "State", .type = jet::ColumnType::kText, .isOfMessage = true},
    // The hashes of intake/thread_ids.h; Null: nobody looked.
    {.name = "Thread", .type = jet::ColumnType::kBinary},
    {.name = "Notes", .type = jet::ColumnType::kMemo, .isOfMessage = true},
    // The long ones last, so that reading a row for the list stops before them.
    {.name = "Body", .type = jet::ColumnType::kMemo, .isOfMessage = true, .searched = 1},
    {.name = "HTMLBody", .type = jet::ColumnType::kMemo, .isOfMessage = true},
};

// Columns of the list that are made of others.
inline constexpr ListColumn kComputedColumns[] = {
    {.place = 1,
     .caption = "Date",
     .width = ListWidth::kDate,
     .expression = "Format$(Email.ReceivedTime, 'Short Date') & ' ' & "
                   "Format$(Email.ReceivedTime, 'hh:mm') As Received",
     .placeholder = "Format(Date(), 'ddddd hh:mm') As Sent",
     .sort = 1,
     .sortedBy = "Email.ReceivedTime",
     .name = "Received"},
};

inline constexpr size_t kListColumnCount =
    std::size(kComputedColumns) +
    static_cast<size_t>(std::ranges::count_if(
        kEmailFields, [](const EmailField& field) { return field.list.place != 0; }));

// The columns of the list query in their order, names and captions filled in.
consteval std::array<ListColumn, kListColumnCount> MakeListColumns() {
  std::array<ListColumn, kListColumnCount> columns;
  size_t count = 0;
  for (const ListColumn& computed : kComputedColumns) columns[count++] = computed;
  for (const EmailField& field : kEmailFields) {
    if (field.list.place == 0) continue;
    ListColumn& column = columns[count++] = field.list;
    column.name = field.name;
    if (column.expression.empty()) column.type = field.type;
  }
  for (ListColumn& column : columns) {
    if (column.caption == nullptr) column.caption = column.name.data();
  }
  std::ranges::sort(columns, {}, &ListColumn::place);
  return columns;
}
inline constexpr std::array<ListColumn, kListColumnCount> kListColumns = MakeListColumns();

// The place of a column in the list query, from 0; in the grid it is one more. Does not compile for
// a column that the list has not.
consteval int ListIndex(std::string_view name) {
  const auto* column = std::ranges::find(kListColumns, name, &ListColumn::name);
  if (column == kListColumns.end()) throw "not a column of the list";
  return static_cast<int>(column - kListColumns.begin());
}

// The rows of a table that have a place, in the order of their places.
template <const auto& kRows, auto kPlace>
consteval auto ByPlace() {
  constexpr auto kHasPlace = [](const auto& row) { return row.*kPlace != 0; };
  constexpr auto kCount = static_cast<size_t>(std::ranges::count_if(kRows, kHasPlace));
  std::array<std::ranges::range_value_t<decltype(kRows)>, kCount> rows;
  std::ranges::copy_if(kRows, rows.begin(), kHasPlace);
  std::ranges::sort(rows, {}, kPlace);
  return rows;
}
inline constexpr auto kFilteredFields = ByPlace<kEmailFields, &EmailField::filtered>();
inline constexpr auto kSearchedFields = ByPlace<kEmailFields, &EmailField::searched>();
inline constexpr auto kSortColumns = ByPlace<kListColumns, &ListColumn::sort>();
inline constexpr auto kPrintedColumns = ByPlace<kListColumns, &ListColumn::printed>();

// What holds of the table; a row that breaks it does not compile.
template <auto kPlace>
consteval bool GoesOnFromOne(const auto& rows) {
  int next = 1;
  return std::ranges::all_of(rows, [&](const auto& row) { return row.*kPlace == next++; });
}
static_assert(GoesOnFromOne<&ListColumn::place>(kListColumns));
static_assert(GoesOnFromOne<&EmailField::filtered>(kFilteredFields));
static_assert(GoesOnFromOne<&EmailField::searched>(kSearchedFields));
static_assert(GoesOnFromOne<&ListColumn::sort>(kSortColumns));
static_assert(GoesOnFromOne<&ListColumn::printed>(kPrintedColumns));
static_assert([] {
  for (const EmailField& field : kEmailFields) {
    bool isLong = field.type == jet::ColumnType::kMemo;
    // The list reads neither long texts nor bytes; what is not listed can be neither shown nor
    // printed; the column cache is of what the index has.
    if (field.name.empty() || std::ranges::count(kEmailFields, field.name, &EmailField::name) != 1)
      return false;
    if (field.list.place != 0 && isLong) return false;
    if (field.list.place == 0 && (field.list.caption || field.list.sort || field.list.printed))
      return false;
    if (field.cache != CacheUse::kNone && field.filtered == 0) return false;
  }
  return std::ranges::count(kEmailFields, CacheUse::kDate, &EmailField::cache) == 1 &&
         std::ranges::count(kEmailFields, CacheUse::kReference, &EmailField::cache) == 1;
}());
static_assert(std::ranges::all_of(kListColumns, [](const ListColumn& column) {
  return !column.name.empty() &&
         std::ranges::count(kListColumns, column.name, &ListColumn::name) == 1;
}));

}  // namespace tarnwick::repository
