// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "board/list_query.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/list_filter_arguments.h"
#include "cli/row_output.h"
#include "intake/message_state.h"
#include "repository/repository.h"

namespace tarnwick::app {

namespace {

std::string Printed(const jet::Value& value, jet::ColumnType type) {
  switch (type) {
    case jet::ColumnType::kAutoNumber:
    case jet::ColumnType::kLong:
      return std::to_string(value.AsInt());
    case jet::ColumnType::kDateTime: {
      auto date = value.AsDate();
      return date ? date->ToIso() : "";
    }
    default:
      return OneLine(value.AsText());
  }
}

void PrintLine(jet::Recordset& list) {
  const char* separator = "";
  for (const repository::ListColumn& column : repository::kPrintedColumns) {
    std::cout << separator << Printed(list.Field(column.place - 1), column.type);
    separator = "\t";
  }
  std::cout << '\n';
}

// In words, behind the columns of the list, to which it does not belong.
std::optional<std::vector<std::string>> StateOf(jet::Recordset& list) {
  jet::Recordset row;
  row.Open("SELECT State FROM Email WHERE ID=" + std::to_string(list.Field(board::kId).AsInt()),
           repository::RepositoryDb());
  intake::MessageState state;
  if (!row.Eof()) state = intake::StateOfStored(row.Field(0).AsText());
  if (!state.isKnown) return std::nullopt;
  return intake::StateWords(state);
}

}  // namespace

int RunList(const std::vector<std::string>& words) {
  std::set<std::string> withValue = ListOptionsWithValue();
  withValue.insert("--limit");
  std::set<std::string> flags = ListFlags();
  flags.insert("--json");
  Arguments arguments(words, withValue, flags);
  if (!arguments.Operands().empty()) throw UsageError("list takes no operand");
  int64_t limit = arguments.Number("--limit").value_or(INT64_MAX);
  if (!OpenFilteredList(ReadListFilter(arguments))) return kFailed;

  jet::Recordset& list = board::Board().ListRecordset;
  bool json = arguments.Has("--json");
  // The row that stands for an empty list is for the window only.
  for (int64_t i = 0; !board::Board().ListIsPlaceholder && i < limit && !list.Eof(); ++i) {
    if (json) {
      PrintJson(list, "State", StateOf(list));
    } else {
      PrintLine(list);
    }
    list.MoveNext();
  }
  std::cout.flush();
  bool good = std::cout.good();
  board::ResetBoard();
  return good ? kDone : kFailed;
}

}  // namespace tarnwick::app
