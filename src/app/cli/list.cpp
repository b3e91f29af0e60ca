// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <iostream>

#include "board/list_query.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/list_filter_arguments.h"
#include "cli/row_output.h"
#include "core/messages.h"
#include "intake/message_state.h"
#include "repository/repository.h"

namespace tarnwick::app {

namespace {

constexpr int64_t kStepMilliseconds = 1000;

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

// conversation: in a column more, if it is not 0.
void PrintLine(jet::Recordset& list, int64_t conversation) {
  const char* separator = "";
  for (const repository::ListColumn& column : repository::kPrintedColumns) {
    std::cout << separator << Printed(list.Field(column.place - 1), column.type);
    separator = "\t";
  }
  if (conversation != 0) std::cout << separator << conversation;
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

bool GroupByConversations() {
  board::ConversationState& state = board::Board().Conversations;
  state.isOn = true;
  while (!board::PrepareConversations(kStepMilliseconds)) {
  }
  board::GroupList();
  if (!state.listed.empty() || board::Board().ListIsPlaceholder) return true;
  core::ShowMessage("The conversations of this repository can't be found.");
  return false;
}

}  // namespace

int RunList(const std::vector<std::string>& words) {
  std::set<std::string> withValue = ListOptionsWithValue();
  withValue.insert("--limit");
  std::set<std::string> flags = ListFlags();
  flags.insert({"--json", "--conversations"});
  Arguments arguments(words, withValue, flags);
  if (!arguments.Operands().empty()) throw UsageError("list takes no operand");
  int64_t limit = arguments.Number("--limit").value_or(INT64_MAX);
  if (!OpenFilteredList(ReadListFilter(arguments))) return kFailed;
  bool isGrouped = arguments.Has("--conversations");
  if (isGrouped && !GroupByConversations()) return kFailed;

  jet::Recordset& list = board::Board().ListRecordset;
  auto next = board::Board().Conversations.listed.begin();
  int64_t conversation = 0;
  // The row that stands for an empty list is for the window only.
  for (int64_t i = 0; !board::Board().ListIsPlaceholder && i < limit && !list.Eof(); ++i) {
    if (isGrouped && next != board::Board().Conversations.listed.end() && next->start == i) {
      conversation = list.Field(board::kId).AsInt();
      ++next;
    }
    if (arguments.Has("--json")) {
      std::vector<std::pair<std::string, std::string>> members = {
          {"State", JsonArray(StateOf(list))}};
      if (isGrouped) members.emplace_back("Conversation", std::to_string(conversation));
      PrintJson(list, members);
    } else {
      PrintLine(list, conversation);
    }
    list.MoveNext();
  }
  std::cout.flush();
  bool good = std::cout.good();
  board::ResetBoard();
  return good ? kDone : kFailed;
}

}  // namespace tarnwick::app
