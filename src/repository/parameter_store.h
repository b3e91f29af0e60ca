// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Settings: rows of the table Parameter, each a group, a key and a value in one of three columns.
// Errors are reported and give an empty value.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "database/value.h"
#include "platform/date_time.h"

namespace tarnwick::repository {

inline constexpr std::string_view kTextColumn = "ParameterText";
inline constexpr std::string_view kDateColumn = "ParameterDate";
inline constexpr std::string_view kAmountColumn = "ParameterAmount";

// The option of complete reading; a new home begins with it.
inline constexpr const char* kCompleteReadingOption = "CompleteReading";

// Null when there is no such row.
jet::Value GetParameter(std::string_view group, std::string_view key, std::string_view column);
void SetParameter(std::string_view group, std::string_view key, std::string_view column,
                  const jet::Value& value);

// The stored folder of the user when its repository file exists, else AppFolder.
std::string GetRepositoryFolder();
void SetRepositoryFolder(const std::string& folder);

void SetLastLoaded(DateTime when);
// In the locale's short date, a blank, hours and minutes; "" when nothing was loaded yet.
std::string GetLastLoaded();

// Options, 1 on and 0 off: "OutlookExpress", "MSOutlook", "ShowEmailText", "LogMailTexts",
// "CompleteReading" and those of its folders (intake/reading_rules.h). One that
// was never set is off, or as unset says. The run state's flag of an option follows it.
bool GetOption(std::string_view name, bool unset = false);
void SetOption(std::string_view name, bool on);
// Reads the flags of the run state.
void ReadOptionFlags();

// The folder of the mail owner's Windows profile: the one that a load reads (core::RunState), else
// TARNWICK_PROFILE, else the stored one, else that of the user who runs the program where the
// system keeps a registry, else "".
std::string GetProfileFolder();
void SetProfileFolder(const std::string& folder);

// A window's place in twips (a twentieth of a point, 1/1440 inch; 15 to a pixel at 96 dpi).
struct FormPosition {
  int top = 0;
  int left = 0;
  int height = 0;
  int width = 0;
};
void SaveFormPosition(std::string_view form, const FormPosition& position);
// nullopt when a needed number is missing or the place would put the window off a screen of these
// twips. Without withSize height and width are 0.
std::optional<FormPosition> RestoreFormPosition(std::string_view form, bool withSize,
                                                int screenHeight, int screenWidth);

}  // namespace tarnwick::repository
