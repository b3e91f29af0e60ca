// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/parameter_store.h"

#include "core/guard.h"
#include "core/run_state.h"
#include "core/text.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "platform/registry.h"
#include "repository/repository.h"
#include "repository/schema.h"

namespace tarnwick::repository {

namespace {

using core::State;

struct OptionFlag {
  std::string_view option;
  bool core::RunState::*flag;
  bool unset;
};
constexpr OptionFlag kOptionFlags[] = {
    {"OutlookExpress", &core::RunState::UseOutlookExpress, false},
    {"MSOutlook", &core::RunState::UseMSOutlook, false},
    {"ShowEmailText", &core::RunState::ShowEmailText, false},
    {"LogMailTexts", &core::RunState::LogMailTexts, true},
};

std::string RowQuery(std::string_view group, std::string_view key) {
  return "SELECT * FROM Parameter WHERE ParameterGroup = '" + core::QuoteSql(group) + "' AND " +
         "ParameterID = '" + core::QuoteSql(key) + "'";
}

jet::Value ReadRow(std::string_view group, std::string_view key, std::string_view column) {
  jet::Recordset row;
  row.Open(RowQuery(group, key), ParameterDb());
  return row.Eof() ? jet::Value() : row.Field(column);
}

void WriteRow(std::string_view group, std::string_view key, std::string_view column,
              const jet::Value& value) {
  jet::Recordset row;
  row.Open(RowQuery(group, key), ParameterDb(), jet::CursorType::kKeyset,
           jet::LockType::kOptimistic);
  if (row.Eof()) {
    row.AddNew();
    row.SetField("ParameterGroup", std::string(group));
    row.SetField("ParameterID", std::string(key));
  }
  row.SetField(column, value);
  row.Update();
}

}  // namespace

jet::Value GetParameter(std::string_view group, std::string_view key, std::string_view column) {
  return core::Guarded("GetParameter", jet::Value(), [&] { return ReadRow(group, key, column); });
}

void SetParameter(std::string_view group, std::string_view key, std::string_view column,
                  const jet::Value& value) {
  core::GuardedRun("SetParameter", [&] { WriteRow(group, key, column, value); });
}

std::string GetRepositoryFolder() {
  return core::Guarded("GetRepositoryFolder", State().AppFolder, [] {
    std::string folder = ReadRow("Repository", State().UserName, kTextColumn).AsText();
    bool exists = !folder.empty() && platform::FileExists(folder + kRepositoryFile);
    return exists ? folder : State().AppFolder;
  });
}

void SetRepositoryFolder(const std::string& folder) {
  core::GuardedRun("SetRepositoryFolder",
                   [&] { WriteRow("Repository", State().UserName, kTextColumn, folder); });
}

void SetLastLoaded(DateTime when) {
  core::GuardedRun("SetLastLoaded",
                   [&] { WriteRow("LastLoaded", State().AppFolder, kDateColumn, when); });
}

std::string GetLastLoaded() {
  return core::Guarded("GetLastLoaded", std::string(), [] {
    auto when = ReadRow("LastLoaded", State().AppFolder, kDateColumn).AsDate();
    return when ? platform::FormatDate(*when, "ddddd hh:mm") : std::string();
  });
}

bool GetOption(std::string_view name, bool unset) {
  jet::Value stored = GetParameter(name, "1", kAmountColumn);
  return stored.IsNull() ? unset : stored.AsDouble() == 1;
}

void SetOption(std::string_view name, bool on) {
  SetParameter(name, "1", kAmountColumn, on ? 1 : 0);
  for (const OptionFlag& known : kOptionFlags) {
    if (known.option == name) State().*known.flag = on;
  }
}

void ReadOptionFlags() {
  for (const OptionFlag& known : kOptionFlags) {
    State().*known.flag = GetOption(known.option, known.unset);
  }
}

std::string GetProfileFolder() {
  if (!State().ProfileOfLoad.empty()) return State().ProfileOfLoad;
  std::string folder = platform::EnvironmentText("TARNWICK_PROFILE").value_or("");
  if (!folder.empty()) {
    return platform::WithSeparator(platform::AbsolutePath(folder));
  }
  folder = GetParameter("Profile", State().UserName, kTextColumn).AsText();
  return folder.empty() ? platform::OwnProfileFolder() : folder;
}

void SetProfileFolder(const std::string& folder) {
  SetParameter("Profile", State().UserName, kTextColumn, platform::WithSeparator(folder));
}

void SaveFormPosition(std::string_view form, const FormPosition& position) {
  std::string group = "XY" + std::string(form);
  SetParameter(group, "1", kAmountColumn, position.top);
  SetParameter(group, "2", kAmountColumn, position.left);
  SetParameter(group, "3", kAmountColumn, position.height);
  SetParameter(group, "4", kAmountColumn, position.width);
}

std::optional<FormPosition> RestoreFormPosition(std::string_view form, bool withSize,
                                                int screenHeight, int screenWidth) {
  std::string group = "XY" + std::string(form);
  FormPosition position;
  int* places[] = {&position.top, &position.left, &position.height, &position.width};
  for (size_t i = 0; i < (withSize ? 4U : 2U); ++i) {
    jet::Value stored = GetParameter(group, std::to_string(i + 1), kAmountColumn);
    if (stored.IsNull()) return std::nullopt;
    *places[i] = static_cast<int>(stored.AsInt());
  }
  // A corner must be on the screen, with a hand's breadth of the title bar left to take hold of.
  constexpr int kGrip = 600;
  if (position.top < 0 || position.left < 0 || position.top > screenHeight - kGrip ||
      position.left > screenWidth - kGrip) {
    return std::nullopt;
  }
  if (withSize && (position.height <= 0 || position.width <= 0)) return std::nullopt;
  return position;
}

}  // namespace tarnwick::repository
