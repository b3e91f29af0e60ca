// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/list_filter.h"

#include <string_view>

#include "repository/parameter_store.h"

namespace tarnwick::board {

namespace {

using jet::Value;
using repository::kAmountColumn;
using repository::kDateColumn;
using repository::kTextColumn;

constexpr std::string_view kGroup = "Filter";

void ReadDate(std::string_view key, DateTime& field, bool& grows) {
  if (auto stored = repository::GetParameter(kGroup, key, kDateColumn).AsDate()) {
    field = stored->DatePart();
    grows = false;
  }
}

void ReadText(std::string_view key, std::string& field) {
  Value stored = repository::GetParameter(kGroup, key, kTextColumn);
  if (!stored.IsNull()) field = stored.AsText();
}

void ReadFlag(std::string_view key, bool& field) {
  Value stored = repository::GetParameter(kGroup, key, kAmountColumn);
  if (!stored.IsNull()) field = stored.AsInt() != 0;
}

// A number that names no choice of the window leaves the field as it is.
template <typename Choice>
void ReadChoice(std::string_view key, Choice last, Choice& field) {
  int64_t stored = repository::GetParameter(kGroup, key, kAmountColumn).AsInt();
  if (stored >= 1 && stored <= static_cast<int64_t>(last)) field = static_cast<Choice>(stored);
}

template <typename Choice>
void WriteChoice(std::string_view key, Choice choice) {
  repository::SetParameter(kGroup, key, kAmountColumn, static_cast<int>(choice));
}

}  // namespace

ListFilter EveryMessage() {
  ListFilter filter;
  TakeEveryDate(filter);
  return filter;
}

void TakeEveryDate(ListFilter& filter) {
  DateRange whole = WholeDateRange();
  filter.DateFrom = whole.from, filter.DateTo = whole.to;
  filter.DateFromGrows = filter.DateToGrows = true;
  filter.DateFromIsOwn = false;
}

ListFilter ReadSavedFilter() {
  ListFilter filter = EveryMessage();
  ReadDate("DateFrom", filter.DateFrom, filter.DateFromGrows);
  ReadDate("DateTo", filter.DateTo, filter.DateToGrows);
  ReadFlag("DateFromIsOwn", filter.DateFromIsOwn);
  ReadFlag("Active", filter.Active);
  ReadFlag("AttachedFile", filter.AttachedFile);
  ReadText("FromTo", filter.FromTo);
  ReadText("Subject", filter.Subject);
  ReadText("MailText", filter.MailText);
  ReadText("FileName", filter.FileName);
  ReadText("Project", filter.Project);
  ReadChoice("Direction", ListDirection::kOut, filter.Direction);
  ReadChoice("SortBy", ListSort::kDirection, filter.SortBy);
  ReadChoice("SortOrder", ListOrder::kAscending, filter.SortOrder);
  return filter;
}

void SaveFilter(const ListFilter& filter, int64_t listed) {
  using repository::SetParameter;
  SetParameter(kGroup, "DateFrom", kDateColumn,
               filter.DateFromGrows ? Value() : Value(filter.DateFrom));
  SetParameter(kGroup, "DateTo", kDateColumn, filter.DateToGrows ? Value() : Value(filter.DateTo));
  SetParameter(kGroup, "DateFromIsOwn", kAmountColumn, filter.DateFromIsOwn ? 1 : 0);
  SetParameter(kGroup, "Active", kAmountColumn, filter.Active ? 1 : 0);
  SetParameter(kGroup, "AttachedFile", kAmountColumn, filter.AttachedFile ? 1 : 0);
  SetParameter(kGroup, "FromTo", kTextColumn, filter.FromTo);
  SetParameter(kGroup, "Subject", kTextColumn, filter.Subject);
  SetParameter(kGroup, "Project", kTextColumn, filter.Project);
  SetParameter(kGroup, "MailText", kTextColumn, filter.MailText);
  SetParameter(kGroup, "FileName", kTextColumn, filter.FileName);
  WriteChoice("Direction", filter.Direction);
  WriteChoice("SortBy", filter.SortBy);
  WriteChoice("SortOrder", filter.SortOrder);
  SetParameter(kGroup, "Count", kAmountColumn, listed);
}

}  // namespace tarnwick::board
