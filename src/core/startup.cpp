// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/startup.h"

#include <cassert>

#include "core/messages.h"
#include "core/run_state.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/locale.h"

namespace tarnwick::core {

int ZoneHours(int biasMinutes) {
  int minutes = biasMinutes < 0 ? -biasMinutes : biasMinutes;
  int hours = minutes / 60;
  int rest = minutes % 60;
  if (rest > 30 || (rest == 30 && hours % 2 == 1)) ++hours;
  return hours;
}

void PrepareRun(const std::string& appFolder, bool keepsLog) {
  assert(State().Ui != nullptr);
  ResetState();
  RunState& state = State();
  state.LogEvents = true;
  state.AppFolder = platform::WithSeparator(appFolder);
  state.EmailFileFolder = state.AppFolder + "EmailFile" + platform::kSeparator;
  state.LogFolder = state.AppFolder + "LogEvent" + platform::kSeparator;
  state.LogFile = state.LogFolder + "Tarnwick.log";
  for (const std::string& folder : {state.LogFolder, state.EmailFileFolder}) {
    try {
      platform::MakeFolder(folder);
    } catch (const Error&) {
      // It shows up later as a file error of whoever writes there.
    }
  }
  state.TempMessageFile = state.EmailFileFolder + "oeTempMessage.msg";
  state.LocalZoneHours = ZoneHours(platform::ZoneBiasMinutes().value_or(0));
  try {
    if (!keepsLog) platform::RemoveFile(state.LogFile);
  } catch (const Error&) {
    // The log goes on behind the old one.
  }
  state.LocalMonthNames = platform::LongDateMonthNames();
  LogProgress("************ Startup *************");
  state.UserName = platform::LogonName();
}

}  // namespace tarnwick::core
