// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "cli/list_filter_arguments.h"

#include "board/list_query.h"

namespace tarnwick::app {

namespace {

using board::ListDirection;
using board::ListOrder;
using board::ListSort;

DateTime ReadDate(const Arguments& arguments, const std::string& option, DateTime otherwise) {
  auto text = arguments.Value(option);
  if (!text) return otherwise;
  auto date = DateTime::FromIso(*text);
  if (!date || text->size() > 10) throw UsageError(option + " is no date (yyyy-mm-dd): " + *text);
  return *date;
}

}  // namespace

std::set<std::string> ListOptionsWithValue() {
  return {"--from", "--to",        "--from-to", "--subject", "--text",
          "--file", "--direction", "--sort",    "--order",   "--search"};
}

std::set<std::string> ListFlags() {
  return {"--hot", "--attached"};
}

board::ListFilter ReadListFilter(const Arguments& arguments) {
  board::ListFilter filter;
  filter.DateFrom = ReadDate(arguments, "--from", DateTime::FromDate(100, 1, 1));
  filter.DateTo = ReadDate(arguments, "--to", DateTime::FromDate(9999, 12, 31));
  filter.FromTo = arguments.Value("--from-to").value_or("");
  filter.Subject = arguments.Value("--subject").value_or("");
  filter.MailText = arguments.Value("--text").value_or("");
  filter.FileName = arguments.Value("--file").value_or("");
  board::Board().Found.text = arguments.Value("--search").value_or("");
  filter.Active = arguments.Has("--hot");
  filter.AttachedFile = arguments.Has("--attached");
  std::string direction = arguments.OneOf("--direction", {"both", "in", "out"});
  filter.Direction = direction == "in"    ? ListDirection::kIn
                     : direction == "out" ? ListDirection::kOut
                                          : ListDirection::kBoth;
  std::string sort = arguments.OneOf("--sort", {"date", "subject", "from-to", "direction"});
  filter.SortBy = sort == "subject"     ? ListSort::kSubject
                  : sort == "from-to"   ? ListSort::kFromTo
                  : sort == "direction" ? ListSort::kDirection
                                        : ListSort::kDate;
  // Newest first, and names from A on, unless asked otherwise.
  bool isDescending =
      arguments.OneOf("--order", {sort == "date" ? "desc" : "asc", "asc", "desc"}) == "desc";
  filter.SortOrder = isDescending ? ListOrder::kDescending : ListOrder::kAscending;
  return filter;
}

bool OpenFilteredList(const board::ListFilter& filter) {
  board::Board().Filter = filter;
  board::MarkListed(board::Board().Filter);
  return board::OpenEmailList(board::BuildListWhere(board::Board().Filter)) &&
         board::CompleteList();
}

}  // namespace tarnwick::app
